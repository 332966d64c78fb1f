#include "http/body.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "support/temporary_folder.h"

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

TEST(Body, WaitsInAFileWhenThereIsNoMoreMemory) {
  const test::TemporaryFolder folder;
  zelto::Spool spool({.memory_bytes = 100'000, .file_bytes = 1'000'000, .folder = folder.path()});
  const std::string all(500'000, 'x');
  {
    Body body;
    body.use(spool);
    for (std::size_t at = 0; at < all.size(); at += 1000) body.append(std::string_view(all).substr(at, 1000));
    EXPECT_EQ(0u, body.capacity());
    EXPECT_EQ(0u, spool.memory.taken());
    EXPECT_EQ(all.size(), spool.files.taken());
    Body moved(std::move(body));
    moved.load();
    EXPECT_EQ(all, view(moved));
    EXPECT_EQ(0u, spool.files.taken());
    EXPECT_NE(nullptr, moved.release());
  }
  EXPECT_EQ(0u, spool.memory.taken());
}

TEST(Body, StaysInMemoryWhenItIsSmall) {
  zelto::Spool spool({.memory_bytes = 0, .file_bytes = 0, .folder = "/none/of/these"});
  Body body;
  body.use(spool);
  body.append(std::string(65'536, 'x'));
  EXPECT_EQ(65'536u, body.size());
}

TEST(Body, SaysThatThereIsNoRoomAndKeepsWhatItHas) {
  const test::TemporaryFolder folder;
  zelto::Spool spool({.memory_bytes = 0, .file_bytes = 70'000, .folder = folder.path()});
  Body body;
  body.use(spool);
  body.append(std::string(60'000, 'x'));
  try {
    body.append(std::string(20'000, 'y'));
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_EQ(std::errc(EDQUOT), error.code());
  }
  EXPECT_EQ(std::string(60'000, 'x'), view(body));
  EXPECT_EQ(0u, spool.files.taken());
}

}  // namespace
