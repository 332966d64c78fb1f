#include "intrinsics/collections.h"

#include "zelto/intrinsics/request_fixture.h"

namespace {

using namespace test;

class Collections : public RequestTest {};

TEST_F(Collections, KeepEmptyValuesApartWhenTheyJoin) {
  request.query = "a=&a=b&c=&c=&d=x&d=&e=";
  EXPECT_EQ(L", b", text(L"QueryString", L"a"));
  EXPECT_EQ(L", ", text(L"QueryString", L"c"));
  EXPECT_EQ(L"x, ", text(L"QueryString", L"d"));
  EXPECT_EQ(L"", text(L"QueryString", L"e"));
}

TEST_F(Collections, NameTheServerWithoutItsPort) {
  const auto server_name = [](const char* named) {
    zelto::HttpRequest http;
    http.headers = {{"Host", named}};
    http.local_address = "127.0.0.1";
    zelto::RequestState state(std::move(http), {"/a.asp", "/srv/a.asp", "/srv"});
    zelto::RequestState::Fields variables;
    EXPECT_EQ(S_OK, state.server_variables(variables));
    return variables->find(L"SERVER_NAME")->values.front();
  };
  EXPECT_EQ(L"example.org", server_name("example.org:8080"));
  EXPECT_EQ(L"example.org", server_name("example.org"));
  EXPECT_EQ(L"[2001:db8::1]", server_name("[2001:db8::1]:8080"));
  EXPECT_EQ(L"[2001:db8::1]", server_name("[2001:db8::1]"));
  EXPECT_EQ(L"127.0.0.1", server_name(""));
}

}  // namespace
