// docs/controller.md tells of every member that a script may call.
#include <gtest/gtest.h>

#include <korlib_host/unicode.h>

#include <fstream>
#include <iterator>
#include <span>
#include <string>

#include "mirt/frame/member_rows.h"

namespace {

TEST(MembersDocument, HasEveryMember) {
  std::ifstream in(CONTROLLER_DOCUMENT);
  const std::string document(std::istreambuf_iterator<char>(in), {});
  ASSERT_FALSE(document.empty());
  for (const std::span<const test::Row> rows :
       {std::span<const test::Row>(test::kMirtRows), std::span<const test::Row>(test::kUtilityRows),
        std::span<const test::Row>(test::kTextTemplatorRows), std::span<const test::Row>(test::kMirtedTemplatorRows),
        std::span<const test::Row>(test::kFormFileRows)}) {
    for (const test::Row& row : rows) {
      const std::string name = "`" + korlib::to_utf8(row.name);
      EXPECT_TRUE(document.find(name + "`") != document.npos || document.find(name + "(") != document.npos) << name;
    }
  }
}

}  // namespace
