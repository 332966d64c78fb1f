#include "language/source_edits.h"

#include <gtest/gtest.h>

namespace zelto::language {
namespace {

TEST(SourceEdits, AreMadeInTheOrderOfTheText) {
  SourceEdits edits(L"a = b;");
  edits.insert(5, L")");
  edits.replace(2, 1, L"+=");
  edits.insert(4, L"(");
  EXPECT_EQ(L"a += (b);", edits.apply().text);
}

TEST(SourceEdits, OpenTheOutermostWrappingFirst) {
  SourceEdits edits(L"x.y.z");
  edits.open_wrapping(0, 3, L"inner(");
  edits.open_wrapping(0, 5, L"outer(");
  edits.insert(0, L"!");
  edits.insert(3, L")");
  edits.insert(5, L")");
  EXPECT_EQ(L"!outer(inner(x.y).z)", edits.apply().text);
}

TEST(SourceEdits, TellWhatTheyShiftInEachLine) {
  SourceEdits edits(L"one\r\ntwo three");
  edits.insert(0, L"12");
  edits.replace(9, 5, L"3");
  const EditedText edited = edits.apply();
  EXPECT_EQ(L"12one\r\ntwo 3", edited.text);
  ASSERT_EQ(2U, edited.shifts.size());
  EXPECT_EQ(1, edited.shifts[0].line);
  EXPECT_EQ(0, edited.shifts[0].column);
  EXPECT_EQ(2, edited.shifts[0].inserted);
  EXPECT_EQ(0, edited.shifts[0].removed);
  EXPECT_EQ(2, edited.shifts[1].line);
  EXPECT_EQ(4, edited.shifts[1].column);
  EXPECT_EQ(1, edited.shifts[1].inserted);
  EXPECT_EQ(5, edited.shifts[1].removed);
}

}  // namespace
}  // namespace zelto::language
