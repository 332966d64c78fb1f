#include "http/response_head.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zelto {
namespace {

std::string without_date(std::string head) {
  const auto at = head.find("Date: ");
  return at == std::string::npos ? head : head.erase(at, head.find("\r\n", at) + 2 - at);
}

TEST(ResponseHead, HoldsWhatThePageAndTheConnectionSay) {
  ResponseHead head{404,
                    "Not Here",
                    {{"Set-Cookie", "a=b"},
                     {"Set-Cookie", "c=d"},
                     {"Content-Length", "99"},
                     {"date", "x"},
                     {"Transfer-Encoding", "gzip"},
                     {"connection", "close"},
                     {"Keep-Alive", "timeout=1"},
                     {"trailer", "A"},
                     {"SERVER", "other"}}};
  EXPECT_EQ(
      "HTTP/1.1 404 Not Here\r\nServer: Zelto\r\nSet-Cookie: a=b\r\nSet-Cookie: c=d\r\n"
      "X-Content-Type-Options: nosniff\r\nContent-Length: 12\r\nConnection: keep-alive\r\n\r\n",
      without_date(write_response_head(head, Framing::length, 12, true)));
  head = {200, "OK", {{"x-content-type-options", "other"}}};
  EXPECT_EQ(
      "HTTP/1.1 200 OK\r\nServer: Zelto\r\nx-content-type-options: other\r\n"
      "Transfer-Encoding: chunked\r\nConnection: close\r\n\r\n",
      without_date(write_response_head(head, Framing::chunked, 0, false)));
}

TEST(ResponseHead, LeavesOutWhatWouldBeginAnotherLine) {
  const ResponseHead head{200,
                          "OK\r\nX: y",
                          {{"A", "b\r\nX: y"},
                           {"A", "b\nc"},
                           {"A", std::string("b\0c", 3)},
                           {"A\r\nB", "c"},
                           {"A:", "b"},
                           {"", "b"},
                           {"A B", "c"}}};
  EXPECT_EQ("HTTP/1.1 200 OK\r\nServer: Zelto\r\nX-Content-Type-Options: nosniff\r\nConnection: close\r\n\r\n",
            without_date(write_response_head(head, Framing::none, 0, false)));
}

}  // namespace
}  // namespace zelto
