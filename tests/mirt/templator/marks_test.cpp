#include "templator/marks.h"

#include <gtest/gtest.h>

#include <string>

namespace test {
namespace {

TEST(Marks, GiveEachOwnersEngineItsTypes) {
  EXPECT_EQ(L"%;:*/=~+-$\\&|!?`@", std::wstring(kMarkTypes<MarkOwner::page>.data()));
  EXPECT_EQ(L"%;:*/=~+-$\\&|", std::wstring(kMarkTypes<MarkOwner::templator>.data()));
}

TEST(Marks, AreFoundByTheirTypeWhereTheOwnerDrawsThem) {
  for (const MarkKind& kind : kMarkKinds) {
    EXPECT_EQ(&kind, find_mark_kind(kind.type, MarkOwner::page));
    EXPECT_EQ(kind.in_templators ? &kind : nullptr, find_mark_kind(kind.type, MarkOwner::templator));
  }
  for (const wchar_t other : {L'\0', L' ', L'a', L'#', L'\x1F600'}) {
    EXPECT_EQ(nullptr, find_mark_kind(other, MarkOwner::page));
    EXPECT_EQ(nullptr, find_mark_kind(other, MarkOwner::templator));
  }
}

}  // namespace
}  // namespace test
