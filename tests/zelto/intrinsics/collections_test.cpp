#include "intrinsics/collections.h"

#include "zelto/intrinsics/page_fixture.h"

namespace {

using namespace test;

class Collections : public PageTest {
 protected:
  std::wstring text(const wchar_t* name) {
    return text_of(default_of(object_of(get(request_object().get(), L"QueryString", name))));
  }
};

TEST_F(Collections, KeepEmptyValuesApartWhenTheyJoin) {
  request.query = "a=&a=b&c=&c=&d=x&d=&e=";
  EXPECT_EQ(text(L"a"), L", b");
  EXPECT_EQ(text(L"c"), L", ");
  EXPECT_EQ(text(L"d"), L"x, ");
  EXPECT_EQ(text(L"e"), L"");
}

}  // namespace
