#include "http/part_counter.h"

#include <gtest/gtest.h>

namespace {

using zelto::part_delimiter;
using zelto::PartCounter;

TEST(PartDelimiter, ComesFromTheContentType) {
  struct Row {
    const char* type;
    const char* delimiter;
  };
  const Row rows[] = {{"multipart/form-data; boundary=x", "--x"},
                      {"Multipart/Form-Data;charset=utf-8;BOUNDARY=----a.b", "------a.b"},
                      {"multipart/mixed; boundary=\"a b\"", "--a b"},
                      {"multipart/form-data; boundary=x; boundary=y", "--x"},
                      {"multipart/form-data", ""},
                      {"multipart/form-data; boundary=", ""},
                      {"application/x-www-form-urlencoded; boundary=x", ""},
                      {"text/plain", ""},
                      {"", ""}};
  for (const Row& row : rows) EXPECT_EQ(row.delimiter, part_delimiter(row.type)) << row.type;
}

TEST(PartCounter, FindsEveryDelimiterHoweverTheBodyIsCut) {
  const std::string body = "--ab\r\nx\r\n--ab\r\n---ab-a--a\r\n--ab--ab--\r\n-";
  for (std::size_t first = 0; first <= body.size(); ++first) {
    for (std::size_t second = first; second <= body.size(); ++second) {
      PartCounter counter("--ab");
      counter.add(body.substr(0, first));
      counter.add(body.substr(first, second - first));
      counter.add(body.substr(second));
      EXPECT_EQ(5u, counter.count()) << first << " " << second;
    }
  }
  PartCounter single("--ab");
  for (const char c : body) single.add(std::string(1, c));
  EXPECT_EQ(5u, single.count());
}

TEST(PartCounter, FindsNothingWithoutADelimiter) {
  PartCounter counter("");
  counter.add("--");
  EXPECT_EQ(0u, counter.count());
}

}  // namespace
