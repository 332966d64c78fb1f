#include "page/text.h"

#include <gtest/gtest.h>

namespace test {
namespace {

TEST(PageText, JoinsTextsWithWhateverIsInThem) {
  EXPECT_EQ(std::wstring_view(L"a\0b\xD800", 4), page::join({L"a", {L"\0", 1}, L"", L"b\xD800"}).view());
  EXPECT_EQ(L"", page::join({}).view());
  EXPECT_TRUE(page::join({L""}).get() != nullptr);
}

}  // namespace
}  // namespace test
