// docs/templates.md tells of every type of mark.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "templator/marks.h"

namespace {

// As Markdown shows the character as code; two of them have a meaning in tables or in code itself.
std::string shown(wchar_t type) {
  if (type == L'|') return "<code>&#124;</code>";
  if (type == L'`') return "`` ` ``";
  return "`" + std::string(1, static_cast<char>(type)) + "`";
}

TEST(MarksDocument, HasEveryType) {
  std::ifstream in(TEMPLATES_DOCUMENT);
  const std::string document(std::istreambuf_iterator<char>(in), {});
  ASSERT_FALSE(document.empty());
  for (const MarkKind& kind : kMarkKinds) EXPECT_NE(document.npos, document.find(shown(kind.type))) << shown(kind.type);
  // Values stand in rows with the encoded type and the one that writes them as they are.
  for (std::size_t i = 0; i + 1 < std::size(kMarkKinds); ++i) {
    const MarkKind& first = kMarkKinds[i];
    const MarkKind& second = kMarkKinds[i + 1];
    if (first.source != second.source) continue;
    const std::string row = "\n| " + shown(first.type) + " | " + shown(second.type) + " | ";
    EXPECT_NE(document.npos, document.find(row)) << row;
    EXPECT_EQ(VARIANT_TRUE, first.encode);
  }
}

}  // namespace
