#include "http/request_parser.h"

#include <gtest/gtest.h>

#include <string>

namespace zelto {
namespace {

using Verdict = HeadScanner::Verdict;

TEST(HeadScanner, FindsTheSameEndHoweverTheHeadIsCut) {
  const std::string head = "GET / HTTP/1.1\r\nHost: a\r\n\r\n";
  for (std::size_t cut = 0; cut < head.size(); ++cut) {
    HeadScanner scanner(100, 10);
    EXPECT_EQ(Verdict::more, scanner.scan(head.substr(0, cut))) << cut;
    EXPECT_EQ(Verdict::complete, scanner.scan(head + "body\n")) << cut;
    EXPECT_EQ(head.size(), scanner.size()) << cut;
  }
}

TEST(HeadScanner, RefusesAtOnce) {
  struct Row {
    std::string head;
    Verdict verdict;
  };
  const Row rows[] = {
      {"\n", Verdict::bare_line_end},
      {"GET / HTTP/1.1\n", Verdict::bare_line_end},
      {"GET / HTTP/1.1\r\nA: b\n", Verdict::bare_line_end},
      {"GET / HTTP/1.1\r\nA: b\r\n\n", Verdict::bare_line_end},
      {"GET / HTTP/1.1\r\nA: b\r\n c\r\n", Verdict::folded},
      {"GET / HTTP/1.1\r\nA: b\r\n\tc\r\n", Verdict::folded},
      {std::string(101, 'a'), Verdict::target_too_long},
      {std::string(99, 'a') + "\r\n", Verdict::target_too_long},
      {"GET / HTTP/1.1\r\n" + std::string(85, 'a'), Verdict::too_large},
      {"a\r\nb\r\nc\r\nd\r\n", Verdict::too_large},
  };
  for (const Row& row : rows) EXPECT_EQ(row.verdict, HeadScanner(100, 2).scan(row.head)) << row.head;
  EXPECT_EQ(Verdict::complete, HeadScanner(100, 2).scan("a\r\nb\r\nc\r\n\r\n"));
}

}  // namespace
}  // namespace zelto
