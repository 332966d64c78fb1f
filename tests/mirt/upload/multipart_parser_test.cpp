#include "upload/multipart_parser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace test {
namespace {

struct Walk {
  HRESULT hr;
  std::size_t start;
  bool is_last;
  std::size_t position;

  friend bool operator==(const Walk&, const Walk&) = default;
};

// Where a search from the beginning comes to. What is not set stays 99 and false.
Walk search(const std::string& body, const char* boundary) {
  CMultipartParser parser(body.data(), body.size(), boundary);
  Walk walk{S_OK, 99, false, 0};
  walk.hr = parser.MoveNextBoundary(walk.start, walk.is_last);
  walk.position = parser.position();
  return walk;
}

TEST(MoveNextBoundary, FindsADelimiterAnywhere) {
  EXPECT_EQ((Walk{S_OK, 0, false, 5}), search("--B\r\nx", "--B"));
  EXPECT_EQ((Walk{S_OK, 1, false, 6}), search("x--B\r\n", "--B"));
  EXPECT_EQ((Walk{S_OK, 4, true, 9}), search("ab\r\n--B--tail", "--B"));
  EXPECT_EQ((Walk{S_OK, 1, true, 6}), search("---B--", "--B"));
  EXPECT_EQ((Walk{S_OK, 4, false, 9}), search(std::string("a\0b\n--B\r\n", 9), "--B"));
}

// Two bytes are looked at, and those of the delimiter alone: a good one further on mends nothing.
TEST(MoveNextBoundary, NeedsALineEndOrTheEndBehindIt) {
  for (const char* tail : {"", "\r", "-", "\n", "\n\n", "\n\r", "\r\r", "\rX", " \r\n", "-\r\n", "\r-", "-\n", "-X",
                           "X-", "B\r\n--B\r\n", "X--B--"}) {
    EXPECT_EQ((Walk{E_FAIL, 0, false, 3}), search(std::string("--B") + tail, "--B")) << tail;
  }
  for (const char* tail : {"\r\n", "\r\n\r\n", "\r\nx", "\r\n--B--"}) {
    EXPECT_EQ((Walk{S_OK, 0, false, 5}), search(std::string("--B") + tail, "--B")) << tail;
  }
  for (const char* tail : {"--", "---", "--\r\n", "--x", "--B\r\n"}) {
    EXPECT_EQ((Walk{S_OK, 0, true, 5}), search(std::string("--B") + tail, "--B")) << tail;
  }
}

TEST(MoveNextBoundary, FailsWhereThereIsNone) {
  for (const char* body : {"", "-", "--", "--b\r\n", "--A\r\n--C\r\n", "x--"}) {
    EXPECT_EQ(E_FAIL, search(body, "--B").hr) << body;
  }
}

TEST(MoveNextBoundary, FindsAnEmptyDelimiterWhereItIs) {
  EXPECT_EQ((Walk{S_OK, 0, false, 2}), search("\r\n", ""));
  EXPECT_EQ((Walk{S_OK, 0, true, 2}), search("--", ""));
  EXPECT_EQ((Walk{E_FAIL, 0, false, 0}), search("x", ""));
  EXPECT_EQ((Walk{E_FAIL, 99, false, 0}), search("", ""));
}

TEST(MoveNextBoundary, GoesOnFromWhereItIs) {
  const std::string body = "--B\r\nx\r\n--B\r\ny\r\n--B--\r\n--B\r\n";
  CMultipartParser parser(body.data(), body.size(), "--B");
  std::size_t start = 0;
  bool is_last = false;
  EXPECT_EQ(S_OK, parser.MoveNextBoundary(start, is_last));
  EXPECT_EQ(0u, start);
  EXPECT_EQ(S_OK, parser.MoveNextBoundary(start, is_last));
  EXPECT_EQ(8u, start);
  EXPECT_FALSE(is_last);
  EXPECT_EQ(S_OK, parser.MoveNextBoundary(start, is_last));
  EXPECT_EQ(16u, start);
  EXPECT_TRUE(is_last);
  EXPECT_EQ(21u, parser.position());
}

using Params = std::map<std::string, std::string>;

struct Line {
  const char* about;
  std::string text;
  std::string name;
  std::string value;
  Params params;
};

TEST(GetHeader, SplitsALine) {
  const Line lines[] = {
      {"a browser's line",
       "Content-Disposition: form-data; name=\"a\"; filename=\"b.txt\"",
       "Content-Disposition",
       "form-data",
       {{"name", "a"}, {"filename", "b.txt"}}},
      {"no parameters", "Content-Type: text/plain", "Content-Type", "text/plain", {}},
      {"no value", "X:", "X", "", {}},
      {"nothing but a colon", ":", "", "", {}},
      {"no blank after the colon", "X:y;a=b", "X", "y", {{"a", "b"}}},
      {"many blanks", "X:   y;   a=b;   c=d", "X", "y", {{"a", "b"}, {"c", "d"}}},
      {"a tab is not a blank", "X:\ty;\ta=b", "X", "\ty", {{"\ta", "b"}}},
      {"the name is kept as it is", " x Y : z", " x Y ", "z", {}},
      {"blanks at the end are kept", "X: y ; a=b ; c=d ", "X", "y ", {{"a", "b "}, {"c", "d "}}},
      {"a second colon is text", "X: y:z", "X", "y:z", {}},
      {"no value before the parameters", "X: ;a=b", "X", "", {{"a", "b"}}},
      {"blanks around the equals sign", "X: y; a = \"b\"", "X", "y", {{"a ", " \"b\""}}},
      {"a single quote byte", "X: y; a=\"", "X", "y", {{"a", "\""}}},
      {"two quote bytes", "X: y; a=\"\"", "X", "y", {{"a", ""}}},
      {"a quote at one end", "X: y; a=\"b; c=d\"", "X", "y", {{"a", "\"b"}, {"c", "d\""}}},
      {"a semicolon in quotes ends the text", "X: y; a=\"b;c\"", "X", "y", {{"a", "\"b"}}},
      {"no escapes", "X: y; a=\"b\\\"c\"", "X", "y", {{"a", "b\\\"c"}}},
      {"a later key replaces", "X: y; a=1; a=2", "X", "y", {{"a", "2"}}},
      {"keys in their letter case", "X: y; a=1; A=2", "X", "y", {{"a", "1"}, {"A", "2"}}},
      {"an equals sign in the text", "X: y; a=b=c", "X", "y", {{"a", "b=c"}}},
      {"an empty key", "X: y; =b", "X", "y", {{"", "b"}}},
      {"an empty text", "X: y; a=; c=d", "X", "y", {{"a", ""}, {"c", "d"}}},
      {"a piece without equals sign joins the next", "X: y; a; b=c", "X", "y", {{"a; b", "c"}}},
      {"and is left out at the end", "X: y; b=c; a", "X", "y", {{"b", "c"}}},
      {"a semicolon at the end", "X: y; b=c;", "X", "y", {{"b", "c"}}},
      {"a lone CR belongs to the line", "X: y\rz", "X", "y\rz", {}},
      {"a lone LF as well", "X: y\nz", "X", "y\nz", {}},
      {"bytes above 127", "X: \xC3\xA9; a=\xFF", "X", "\xC3\xA9", {{"a", "\xFF"}}},
  };
  for (const Line& line : lines) {
    SCOPED_TRACE(line.about);
    const std::string body = line.text + "\r\nrest";
    CMultipartParser parser(body.data(), body.size(), "--B");
    CMultipartHeader header;
    EXPECT_EQ(S_OK, parser.GetHeader(header));
    EXPECT_EQ(line.text.size() + 2, parser.position());
    EXPECT_EQ(line.name, header.name);
    EXPECT_EQ(line.value, header.value);
    EXPECT_EQ(line.params, header.params);
    EXPECT_TRUE(header.has_colon);
  }
}

TEST(GetHeader, GathersTheParametersOfAllLines) {
  const std::string body = "X: y; a=1; b=2\r\nno colon; a=9\r\nZ: w; b=3\r\n\r\n";
  CMultipartParser parser(body.data(), body.size(), "--B");
  CMultipartHeader header;
  EXPECT_EQ(S_OK, parser.GetHeader(header));
  EXPECT_EQ(S_OK, parser.GetHeader(header));  // leaves the header alone
  EXPECT_EQ("X", header.name);
  EXPECT_EQ("y", header.value);
  EXPECT_EQ((Params{{"a", "1"}, {"b", "2"}}), header.params);
  EXPECT_FALSE(header.has_colon);
  EXPECT_TRUE(header.stored.empty());
  EXPECT_EQ(S_OK, parser.GetHeader(header));
  EXPECT_EQ("Z", header.name);
  EXPECT_EQ((Params{{"a", "1"}, {"b", "3"}}), header.params);
  ASSERT_EQ(1u, header.stored.size());
  EXPECT_EQ("b", *header.stored[0]);
  EXPECT_EQ(S_FALSE, parser.GetHeader(header));
  EXPECT_EQ(body.size(), parser.position());
  EXPECT_EQ(E_FAIL, parser.GetHeader(header));
}

TEST(GetHeader, FailsWithoutALineEnd) {
  for (const std::string& body : {std::string(), std::string("X: y"), std::string("X: y\r"), std::string("X: y\n"),
                                  std::string("X\0: y\r\n", 7), std::string("\0\r\n", 3), std::string("\r\r")}) {
    // Exactly as long as it is said to be, so that a checker sees a byte read beyond it.
    const std::vector<char> exact(body.begin(), body.end());
    CMultipartParser parser(exact.data(), exact.size(), "--B");
    CMultipartHeader header;
    EXPECT_EQ(E_FAIL, parser.GetHeader(header));
    EXPECT_EQ(0u, parser.position());
  }
}

TEST(MultipartParser, LooksNowhereBeyondTheBody) {
  const std::string whole = "--B\r\nX: y; a=b\r\n\r\nvalue\r\n--B--\r\n";
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    const std::vector<char> exact(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
    CMultipartParser parser(exact.data(), exact.size(), "--B");
    std::size_t start = 0;
    bool is_last = false;
    if (FAILED(parser.MoveNextBoundary(start, is_last))) {
      EXPECT_LT(cut, 5u);
      continue;
    }
    CMultipartHeader header;
    HRESULT hr = S_OK;
    while ((hr = parser.GetHeader(header)) == S_OK) EXPECT_LE(parser.position(), cut);
    EXPECT_EQ(cut < 18 ? E_FAIL : S_FALSE, hr) << cut;
    if (hr == S_FALSE) {
      EXPECT_EQ(cut < 30 ? E_FAIL : S_OK, parser.MoveNextBoundary(start, is_last)) << cut;
    }
    EXPECT_LE(parser.position(), cut);
  }
}

}  // namespace
}  // namespace test
