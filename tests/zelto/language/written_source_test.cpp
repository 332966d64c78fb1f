#include "language/written_source.h"

#include <gtest/gtest.h>

namespace zelto::language {
namespace {

TEST(WrittenSource, HasNoWordOfTheHost) {
  EXPECT_EQ(L"a.b(c(1),d) is 1; a.B()",
            as_written(L"$zelto.at(a.b,c(1),d).v is 1; $zelto_call(a ,  \"B\" /* c */ , )"));
  EXPECT_EQ(L"Response.Write(Server.HTMLEncode(a), Server.URLEncode(b))",
            as_written(L"$zelto_write(Response,$zelto_html_encode(Server,a), $zelto_url_encode(Server,b))"));
  EXPECT_EQ(L"a.b.C().D()", as_written(L"$zelto_call($zelto_call(a.b, \"C\", \"a.b\"), \"D\",)"));
  EXPECT_EQ(L"a.B(c.D(1)) is 1; a.B(1).C()",
            as_written(L"$zelto_of(a,\"B\",\"a\").B($zelto_of(c,\"D\",\"c\").D(1)) is 1; "
                       L"$zelto_call($zelto_of(a,\"B\",\"a\").B(1), \"C\",)"));
  EXPECT_EQ(L"a.Add(this)", as_written(L"$zelto_of(a,\"Add\",\"a\").Add($zelto_given(this,a))"));
  EXPECT_EQ(L"cut in '$zelto_call(a, \"B", as_written(L"cut in '$zelto_call(a, \"B"));
}

// This one would take minutes: a client's text may be in a page's own message.
TEST(WrittenSource, LeavesAMessageAloneThatIsTooLongForTheEngines) {
  std::wstring message;
  for (int i = 0; i < 300'000; ++i) message += L"$zelto_value(a)";
  EXPECT_TRUE(message == as_written(message));
}

}  // namespace
}  // namespace zelto::language
