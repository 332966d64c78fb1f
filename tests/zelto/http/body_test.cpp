#include "http/body.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using zelto::Body;

std::string_view view(const Body& body) { return body; }

TEST(Body, HoldsWhatWasAppendedInAnyPieces) {
  std::string all;
  for (int i = 0; i < 200'000; ++i) all += static_cast<char>(i * 7 / 3);
  for (const std::size_t piece : {std::size_t{1}, std::size_t{1000}, std::size_t{65'536}, all.size()}) {
    Body body;
    for (std::size_t at = 0; at < all.size(); at += piece) body.append(std::string_view(all).substr(at, piece));
    EXPECT_EQ(all, view(body)) << piece;
  }
}

// A client may announce a gigabyte and send ten bytes.
TEST(Body, TakesNoMemoryForWhatIsOnlyAnnounced) {
  Body body;
  body.expect(std::uint64_t{1} << 40);
  EXPECT_EQ(0u, body.capacity());
  body.append("0123456789");
  EXPECT_LT(body.capacity(), 100'000u);
}

TEST(Body, DoesNotGrowBeyondWhatWasAnnounced) {
  constexpr std::size_t kSize = 1'000'000;
  Body body;
  body.expect(kSize);
  const std::string piece(1000, 'x');
  for (std::size_t i = 0; i < kSize / piece.size(); ++i) body.append(piece);
  EXPECT_EQ(kSize, body.size());
  EXPECT_EQ(kSize, body.capacity());
  body.append("!");
  EXPECT_EQ('!', view(body).back());
}

TEST(Body, GivesItsMemoryAway) {
  Body body("abc");
  const char* const at = view(body).data();
  const Body::Bytes bytes = body.release();
  EXPECT_EQ(at, bytes.get());
  EXPECT_EQ(0, std::memcmp(bytes.get(), "abc", 3));
  EXPECT_EQ(0u, body.size());
  body.append("d");
  EXPECT_EQ("d", view(body));
  EXPECT_EQ(nullptr, Body().release());
}

TEST(Body, MovesWithoutACopy) {
  Body body("abc");
  const char* const at = view(body).data();
  Body moved(std::move(body));
  EXPECT_EQ(at, view(moved).data());
  Body assigned("other");
  assigned = std::move(moved);
  EXPECT_EQ(at, view(assigned).data());
  EXPECT_EQ("abc", view(assigned));
}

}  // namespace
