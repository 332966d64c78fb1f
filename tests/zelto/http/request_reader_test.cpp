#include "http/request_reader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "http/status.h"

namespace {

namespace status = zelto::status;
using Progress = zelto::RequestReader::Progress;

const std::string kPost = "POST /a?b HTTP/1.1\r\nHost: h\r\nContent-Length: 4\r\n\r\nbody";

zelto::HttpLimits small_limits() {
  zelto::HttpLimits limits;
  limits.header_bytes = 200;
  limits.header_lines = 3;
  limits.body_bytes = 10;
  return limits;
}

class RequestReader : public testing::Test {
 protected:
  void receive(std::string_view bytes) {
    const auto room = reader.room(bytes.size() + 5);
    std::ranges::copy(bytes, room.begin());
    reader.received(bytes.size());
  }
  Progress read_body() {
    std::size_t used = 0;
    const Progress progress = reader.read_body(used);
    used_in_all += used;
    return progress;
  }

  const zelto::HttpLimits limits = small_limits();
  zelto::Spool spool{{}};
  zelto::RequestReader reader{limits, spool};
  std::size_t used_in_all = 0;
};

TEST_F(RequestReader, ReadsTheSameRequestHoweverItIsCut) {
  const std::size_t head = kPost.find("body");
  for (std::size_t cut = 1; cut < kPost.size(); ++cut) {
    SCOPED_TRACE(cut);
    used_in_all = 0;
    receive(kPost.substr(0, cut));
    EXPECT_EQ(cut < head ? Progress::more : Progress::done, reader.read_head());
    EXPECT_EQ(cut != head, reader.has_begun());
    if (cut < head) {
      receive(kPost.substr(cut));
      ASSERT_EQ(Progress::done, reader.read_head());
    } else {
      EXPECT_EQ(Progress::more, read_body());
      receive(kPost.substr(cut));
    }
    EXPECT_EQ("POST /a?b HTTP/1.1", reader.request_line());
    EXPECT_TRUE(reader.needs_body());
    ASSERT_EQ(Progress::done, read_body());
    EXPECT_EQ("body", std::string_view(reader.request().body));
    EXPECT_EQ("/a", reader.request().path);
    EXPECT_EQ(4u, used_in_all);
    reader.next();
    EXPECT_EQ("", reader.request_line());
  }
}

TEST_F(RequestReader, KeepsWhatCameOfTheNextRequest) {
  receive(kPost + "\r\nHEAD / HTTP/1.1\r\nHost: h\r\n\r\nGE");
  ASSERT_EQ(Progress::done, reader.read_head());
  ASSERT_EQ(Progress::done, read_body());
  EXPECT_FALSE(reader.asks_head_only());
  reader.next();
  EXPECT_FALSE(reader.asks_head_only());
  ASSERT_EQ(Progress::done, reader.read_head());
  EXPECT_FALSE(reader.needs_body());
  EXPECT_TRUE(reader.asks_head_only());
  reader.next();
  EXPECT_EQ(Progress::more, reader.read_head());
  EXPECT_EQ("GE", reader.request_line());
  EXPECT_EQ(2u, reader.drop());
  EXPECT_FALSE(reader.has_begun());
  EXPECT_EQ(0u, reader.drop());
}

TEST_F(RequestReader, TakesALineBreakForNoBeginning) {
  receive("\r\n\r\n");
  EXPECT_EQ(Progress::more, reader.read_head());
  EXPECT_FALSE(reader.has_begun());
  receive("\r");
  EXPECT_EQ(Progress::more, reader.read_head());
  receive("\n" + kPost);
  EXPECT_EQ(Progress::done, reader.read_head());
}

TEST_F(RequestReader, LooksAtEveryByteBehindALineBreakThatCameInPieces) {
  receive("\r");
  EXPECT_EQ(Progress::more, reader.read_head());
  receive("\n\n");
  EXPECT_EQ(Progress::refused, reader.read_head());
  EXPECT_EQ(status::kBadRequest, reader.status());
}

TEST_F(RequestReader, RefusesAHeadAndStillTellsItsRequestLine) {
  struct Row {
    std::string head;
    int status;
    std::string request_line;
  };
  const std::string line = "GET / HTTP/1.1";
  const Row rows[] = {
      {line + "\n", status::kBadRequest, line},
      {line + "\r\nA: b\r\n c\r\n", status::kBadRequest, line},
      {line + "\r\n\r\n", status::kBadRequest, line},
      {line + "\r\nA: b\r\nA: b\r\nA: b\r\nA: b\r\nA: b\r\n", status::kHeadTooLarge, line},
      {std::string(201, 'a'), status::kTargetTooLong, std::string(201, 'a')},
      {"GET /.. HTTP/1.1\r\nHost: h\r\n\r\n", status::kBadRequest, "GET /.. HTTP/1.1"},
      {"PLAY / HTTP/1.1\r\nHost: h\r\n\r\n", status::kNotImplemented, "PLAY / HTTP/1.1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.head);
    reader.drop();
    reader.next();
    receive(row.head);
    EXPECT_EQ(Progress::refused, reader.read_head());
    EXPECT_EQ(row.status, reader.status());
    EXPECT_EQ(row.request_line, reader.request_line());
  }
}

TEST_F(RequestReader, RefusesABodyThatCannotBeUnderstood) {
  receive("POST / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n");
  ASSERT_EQ(Progress::done, reader.read_head());
  EXPECT_EQ(Progress::refused, read_body());
  EXPECT_EQ(status::kBadRequest, reader.status());
}

TEST_F(RequestReader, RefusesAnEndlessChunkLine) {
  receive("POST / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n1;" + std::string(200, 'a'));
  ASSERT_EQ(Progress::done, reader.read_head());
  EXPECT_EQ(Progress::refused, read_body());
  EXPECT_EQ(status::kBadRequest, reader.status());
}

TEST_F(RequestReader, TellsOfABodyBeyondTheLimitBeforeItComes) {
  receive("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 11\r\nExpect: 100-continue\r\n\r\n");
  ASSERT_EQ(Progress::done, reader.read_head());
  EXPECT_TRUE(reader.awaits_continue());
  EXPECT_EQ(Progress::too_large, read_body());
  EXPECT_TRUE(reader.request().body_too_large);
  EXPECT_EQ(11u, reader.request().body_length);
}

TEST_F(RequestReader, DropsHeadersWhoseNamesPagesCannotTellApart) {
  const std::string head = "GET / HTTP/1.1\r\nHost: h\r\nX_User: root\r\nX-User: ann\r\n\r\n";
  receive(head);
  ASSERT_EQ(Progress::done, reader.read_head());
  EXPECT_EQ(nullptr, reader.request().header("X_User"));
  EXPECT_EQ("ann", *reader.request().header("X-User"));
  zelto::HttpLimits lenient = limits;
  lenient.takes_underscores = true;
  zelto::RequestReader other(lenient, spool);
  std::ranges::copy(head, other.room(head.size()).begin());
  other.received(head.size());
  ASSERT_EQ(Progress::done, other.read_head());
  EXPECT_EQ("root", *other.request().header("X_User"));
}

// Before the body has come: the part that is one too many ends it.
TEST_F(RequestReader, RefusesTooManyPartsAsTheyArrive) {
  zelto::HttpLimits two = limits;
  two.body_bytes = 1000;
  two.upload_parts = 2;
  const std::string parts = "--x\r\n\r\na\r\n--x\r\n\r\nb\r\n--x";
  struct Row {
    const char* framing;
    std::string body;
    Progress progress;
  };
  const Row rows[] = {{"Content-Length: 500", parts + "--\r\n", Progress::more},
                      {"Content-Length: 25", parts + "--", Progress::done},
                      {"Content-Length: 500", parts + "\r\n\r\nc\r\n--x", Progress::refused},
                      {"Transfer-Encoding: chunked", "19\r\n" + parts + "--\r\n0\r\n\r\n", Progress::done},
                      {"Transfer-Encoding: chunked", "18\r\n" + parts + "-\r\n5\r\n--x--\r\n", Progress::refused}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.body);
    zelto::RequestReader own(two, spool);
    const std::string sent =
        std::string("POST / HTTP/1.1\r\nHost: h\r\nContent-Type: multipart/form-data; boundary=x\r\n") + row.framing +
        "\r\n\r\n" + row.body;
    std::ranges::copy(sent, own.room(sent.size()).begin());
    own.received(sent.size());
    ASSERT_EQ(Progress::done, own.read_head());
    std::size_t used = 0;
    EXPECT_EQ(row.progress, own.read_body(used));
    EXPECT_EQ(row.progress == Progress::refused ? status::kContentTooLarge : 0, own.status());
  }
}

TEST_F(RequestReader, SeesThatAClientDoesNotWaitToBeToldToGoOn) {
  receive("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 4\r\nExpect: 100-continue\r\n\r\nb");
  ASSERT_EQ(Progress::done, reader.read_head());
  EXPECT_FALSE(reader.awaits_continue());
  receive("ody");
  EXPECT_EQ(Progress::done, read_body());
}

}  // namespace
