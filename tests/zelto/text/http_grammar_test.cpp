#include "text/http_grammar.h"

#include <gtest/gtest.h>

#include <string>

namespace zelto {
namespace {

TEST(HttpGrammar, KnowsNamesAndValuesOfHeaders) {
  for (const char* name : {"X-A", "a", "!#$%&'*+-.^_`|~09"}) EXPECT_TRUE(is_token(name)) << name;
  for (const char* name : {"", "a b", "a:", "a\t", "(a)", "\xC3\xA9"}) EXPECT_FALSE(is_token(name)) << name;
  for (const char* value : {"", "a b", "a\tb", "\xC3\xA9"}) EXPECT_TRUE(is_field_value(value)) << value;
  for (const char* value : {"a\r", "a\nb", "\x7F", "\x1B"}) EXPECT_FALSE(is_field_value(value)) << value;
  EXPECT_FALSE(is_field_value(std::string_view("a\0b", 3)));
}

TEST(HttpGrammar, TakesListsApart) {
  std::string elements;
  for_each_element(",a , \t,b c,", [&](std::string_view element) { elements.append("[").append(element).append("]"); });
  EXPECT_EQ("[a][b c]", elements);
  std::string pieces;
  for_each_piece(";; a;b;", ';', [&](std::string_view piece) { pieces.append("[").append(piece).append("]"); });
  EXPECT_EQ("[ a][b]", pieces);
}

}  // namespace
}  // namespace zelto
