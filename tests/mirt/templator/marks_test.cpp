#include "templator/marks.h"

#include <gtest/gtest.h>

#include <string>

namespace test {
namespace {

TEST(Marks, GiveEachOwnersEngineItsTypes) {
  EXPECT_EQ(L"%;:*/=~+-$\\&|!?`@", std::wstring(kMarkTypes<MarkOwner::kPage>.data()));
  EXPECT_EQ(L"%;:*/=~+-$\\&|", std::wstring(kMarkTypes<MarkOwner::kTemplator>.data()));
}

TEST(Marks, AreFoundByTheirTypeWhereTheOwnerDrawsThem) {
  for (const MarkKind& kind : kMarkKinds) {
    EXPECT_EQ(&kind, find_mark_kind(kind.type, MarkOwner::kPage));
    EXPECT_EQ(kind.in_templators ? &kind : nullptr, find_mark_kind(kind.type, MarkOwner::kTemplator));
  }
  for (const wchar_t other : {L'\0', L' ', L'a', L'#', L'\x1F600'}) {
    EXPECT_EQ(nullptr, find_mark_kind(other, MarkOwner::kPage));
    EXPECT_EQ(nullptr, find_mark_kind(other, MarkOwner::kTemplator));
  }
}

}  // namespace
}  // namespace test
