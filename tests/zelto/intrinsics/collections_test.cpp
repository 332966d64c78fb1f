#include "intrinsics/collections.h"

#include <memory>

#include "base/letter_case.h"
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

// A page asks for one or two of them, and gets these without the others.
TEST_F(Collections, TellOneServerVariableAsInAllOfThem) {
  const auto made = [] {
    zelto::HttpRequest http;
    http.method = "POST";
    http.query = "a=1";
    http.headers = {
        {"Host", "example.org"}, {"X-A", "1"}, {"Content-Type", "text/plain"}, {"x-a", "2"}, {"Method", "?"}};
    return std::make_unique<zelto::RequestState>(std::move(http), zelto::PagePlace{"/a.asp", "/srv/a.asp", "/srv"});
  };
  zelto::RequestState::Fields all;
  ASSERT_EQ(S_OK, made()->server_variables(all));
  EXPECT_LT(30u, all->size());
  for (const zelto::Field& field : *all) {
    const auto state = made();
    const auto one = state->server_variable(base::ascii_lowered(field.name));
    ASSERT_TRUE(one);
    EXPECT_EQ(field.name, one->name);
    EXPECT_EQ(field.values, one->values) << testing::PrintToString(field.name);
  }
  const auto state = made();
  EXPECT_EQ(L"1, 2", state->server_variable(L"HTTP_X_A")->values.front());
  EXPECT_EQ(L"POST", state->server_variable(L"HTTP_METHOD")->values.front());
  for (const wchar_t* none : {L"HTTP_X_B", L"HTTP_", L"", L"X-A"}) EXPECT_FALSE(state->server_variable(none));
  ASSERT_EQ(S_OK, state->server_variables(all));
  EXPECT_EQ(L"1, 2", state->server_variable(L"HTTP_X_A")->values.front());
  EXPECT_FALSE(state->server_variable(L"HTTP_X_B"));
}

}  // namespace
