#include <cwchar>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using DigestMembers = UtilityMembers;
ON_BOTH_OBJECTS(DigestMembers);

// FIPS 180-2, appendix A.3.
TEST_P(DigestMembers, SHA1KnowsTheLongVectorOfTheStandard) {
  EXPECT_EQ(L"34aa973cd4c4daa4f61eeb2bdbad27316534016f", text(L"SHA1", std::wstring(1'000'000, L'a'), 0));
}

}  // namespace
}  // namespace test
