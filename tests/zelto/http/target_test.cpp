#include "http/target.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

struct Row {
  std::string target;
  int status;
  std::string path;
  std::string query;
};

TEST(Target, SplitsDecodesAndNormalises) {
  const Row rows[] = {
      {"/", 200, "/", ""},
      {"/a/b.asp", 200, "/a/b.asp", ""},
      {"/a?b=%41?c", 200, "/a", "b=%41?c"},
      {"/?", 200, "/", ""},
      {"//a///b/", 200, "/a/b/", ""},
      {"/a/./b/../c", 200, "/a/c", ""},
      {"/a/..", 200, "/", ""},
      {"/a/.", 200, "/a/", ""},
      {"/a/%2e%2E/b", 200, "/b", ""},
      {"/%41%c3%a4", 200, "/A\xC3\xA4", ""},
      {"/%2541", 200, "/%41", ""},
      {"/%F0%9F%98%80", 200, "/\xF0\x9F\x98\x80", ""},
      {"/a+b", 200, "/a+b", ""},
      {"http://host", 200, "/", ""},
      {"HTTP://host:1/a?b", 200, "/a", "b"},
      {"https://host?b", 200, "/", "b"},
      {"", 400, "", ""},
      {"*", 400, "", ""},
      {"a", 400, "", ""},
      {"ftp://host/", 400, "", ""},
      {"http:///a", 400, "", ""},
      {"http://:80/a", 400, "", ""},
      {"http://user@host/a", 400, "", ""},
      {"http://h<h/a", 400, "", ""},
      {"host:80", 400, "", ""},
      {"/a#b", 400, "", ""},
      {"/..", 400, "", ""},
      {"/a/../..", 400, "", ""},
      {"/a/%2e%2e/%2e%2e/a", 400, "", ""},
      {"/../../etc/passwd", 400, "", ""},
      {"/%00", 400, "", ""},
      {"/a%0ab", 400, "", ""},
      {"/a%7f", 400, "", ""},
      {"/a\\b", 400, "", ""},
      {"/a%5cb", 400, "", ""},
      {"/a%2fb", 400, "", ""},
      {"/a%2Fb", 400, "", ""},
      {"/%", 400, "", ""},
      {"/%4", 400, "", ""},
      {"/%g0", 400, "", ""},
      {"/\xC3\xA4", 400, "", ""},
      {"/%c3", 400, "", ""},
      {"/%c0%80", 400, "", ""},
      {"/%e0%80%80", 400, "", ""},
      {"/%ed%a0%80", 400, "", ""},
      {"/%f0%80%80%80", 400, "", ""},
      {"/%f4%90%80%80", 400, "", ""},
      {"/%ff", 400, "", ""},
      {"/page.asp.", 404, "", ""},
      {"/page.asp%20", 404, "", ""},
      {"/page.asp::$DATA", 404, "", ""},
      {"/a./b", 404, "", ""},
      {"/...", 404, "", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.target);
    const Target target = parse_target(row.target);
    EXPECT_EQ(row.status, target.status);
    if (row.status != 200) continue;
    EXPECT_EQ(row.path, target.path);
    EXPECT_EQ(row.query, target.query);
  }
}

TEST(Target, TellsTheHostOfTheAbsoluteForm) {
  EXPECT_EQ("host:1", parse_target("http://host:1/a").authority);
  EXPECT_EQ("[::1]", parse_target("http://[::1]").authority);
  EXPECT_EQ("", parse_target("/http://host/").authority);
}

TEST(Target, EncodesAPathSoThatItReadsBack) {
  EXPECT_EQ("/a%20b/%C3%A4%25~-_.%3F%23", encode_path("/a b/\xC3\xA4%~-_.?#"));
  EXPECT_EQ("/a b/\xC3\xA4%x", parse_target(encode_path("/a b/\xC3\xA4%x")).path);
}

}  // namespace
}  // namespace zelto
