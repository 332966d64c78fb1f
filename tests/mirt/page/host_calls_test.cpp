// What the controller asks of the host and of the script, call by call: in this order, and nothing else.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

using Log = std::vector<std::string>;
using Names = std::vector<std::wstring>;

class HostCalls : public PageTest {
 protected:
  void SetUp() override {
    page();
    asp_.request->query_string->set(L"q", {L"<q>"});
    asp_.session->values()[L"s"] = CComVariant(L"<s>");
    asp_.application->values[L"a"] = CComVariant(L"<a>");
    script().value(L"v", L"<v>");
  }
  // The calls that `body` leads to.
  template <class Body>
  Log calls_of(Body body) {
    asp_.calls->log.clear();
    body();
    return asp_.calls->log;
  }
};

const Log kRequestOfGet = {"Request.ServerVariables", "ServerVariables.Item", "StringList.Item", "Request.QueryString"};

Log joined(Log first, const Log& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

TEST_F(HostCalls, OfMembers) {
  const auto list =
      korlib::make<fake::StringList>(asp_.calls, std::vector<CComVariant>{CComVariant(L"a"), CComVariant(L"b")});
  const CComVariant collection(static_cast<IDispatch*>(list.get()));
  const struct {
    const wchar_t* member;
    std::vector<CComVariant> arguments;
    Log calls;
  } cases[] = {
      {L"Write", {value_of(L"x"), value_of(false)}, {"Response.Write"}},
      {L"Write", {value_of(L"x"), value_of(true)}, {"Server.HTMLEncode", "Response.Write"}},
      {L"Write", {value_of(L""), value_of(true)}, {"Response.Write"}},
      {L"Redirect", {value_of(L"x")}, {"Response.Status", "Response.AddHeader"}},
      {L"AddLog", {value_of(L"a"), value_of(L"b")}, {"Response.AppendToLog"}},
      {L"Abandon", {}, {"Session.Contents", "Contents.Remove"}},
      {L"ToCommand", {value_of(L"x")}, {"Server.URLEncode", "Server.URLEncode"}},
      {L"ToParameter", {value_of(L"a"), value_of(L"b")}, {"Server.URLEncode", "Server.URLEncode"}},
      {L"ToArray", {collection}, {"StringList.Count", "StringList.Item", "StringList.Item"}},
      {L"AddMessage", {value_of(L"m"), value_of(L"")}, {}},
      {L"MessageExists", {value_of(L"")}, {}},
      {L"ProcessTemplate", {value_of(L"ab")}, {"Response.Write", "Response.Write"}},
      {L"FireEvent", {value_of(L"none"), value_of(1), value_of(1)}, {}},
  };
  for (const auto& row : cases) {
    const Log calls = calls_of([&] { EXPECT_EQ(S_OK, invoke(page(), row.member, DISPATCH_METHOD, row.arguments).hr); });
    EXPECT_EQ(row.calls, calls) << testing::PrintToString(std::wstring(row.member));
  }
}

TEST_F(HostCalls, OfTheRequestProperty) {
  const auto read = [&] { EXPECT_EQ(S_OK, get(page(), L"Request").hr); };
  EXPECT_EQ(kRequestOfGet, calls_of(read));
  asp_.post_form();
  EXPECT_EQ((Log{"Request.ServerVariables", "ServerVariables.Item", "StringList.Item", "Request.ServerVariables",
                 "ServerVariables.Item", "StringList.Item", "Request.Form"}),
            calls_of(read));
}

TEST_F(HostCalls, OfMarks) {
  const Log none;
  const Log raw = {"Response.Write"};
  const Log encoded = {"Server.HTMLEncode", "Response.Write"};
  const Log found_in_query = {"Request.ServerVariables", "ServerVariables.Item", "StringList.Count",
                              "Request.QueryString",     "QueryString.Item",     "StringList.Count",
                              "StringList.Item"};
  Log nowhere;
  for (const char* collection : {"ServerVariables", "QueryString", "Form", "Cookies", "ClientCertificate"})
    nowhere =
        joined(nowhere, {std::string("Request.") + collection, std::string(collection) + ".Item", "StringList.Count"});
  const Log link = {"Server.URLEncode", "Server.URLEncode"};
  const struct {
    const wchar_t* mark;
    Log calls;
  } cases[] = {
      {L"(#;v#)", encoded},
      {L"(#:v#)", raw},
      {L"(#/w#)", raw},
      {L"(#*w#)", encoded},
      {L"(#=s#)", joined({"Session.Value"}, encoded)},
      {L"(#~s#)", joined({"Session.Value"}, raw)},
      {L"(#+a#)", joined({"Application.Value"}, encoded)},
      {L"(#-a#)", joined({"Application.Value"}, raw)},
      {L"(#$q#)", joined(found_in_query, encoded)},
      {L"(#\\q#)", joined(found_in_query, raw)},
      {L"(#$none#)", nowhere},
      {L"(#&b#)", encoded},
      {L"(#|b#)", raw},
      {L"(#!#)", encoded},
      {L"(#?#)", raw},
      {L"(#!x#)", joined(link, encoded)},
      {L"(#?x#)", joined(link, raw)},
      {L"(#@none#)", none},
      {L"(#x#)", none},
      {L"(#%_InputDefault|b#|#<b>#|##|#x#)", none},
      {L"(#%_Message|x#)", none},
  };
  with_name();
  in_process([&] {
    call(page(), L"SetView", L"w", L"<w>");
    put(object_of(get(page(), L"Bag")).get(), L"Item", L"b", L"<b>");
    for (const auto& row : cases) {
      EXPECT_EQ(row.calls, calls_of([&] { draw(row.mark); })) << testing::PrintToString(std::wstring(row.mark));
    }
  });
}

// The intake of an upload asks for the type first, then the command for its field.
const Log kIntake = {"Request.ServerVariables", "ServerVariables.Item", "StringList.Item"};
const Log kCommand = joined(kRequestOfGet, {"QueryString.Item", "StringList.Item"});

TEST_F(HostCalls, OfProcess) {
  const auto run = [&] { process(); };
  EXPECT_EQ(joined(kIntake, kCommand), calls_of(run)) << "without a name";
  put(page(), L"Command", L"");
  with_name();
  EXPECT_EQ(joined(joined(kIntake, {"Session.Value", "Session.putref_Value"}), joined(kCommand, {"Session.Value"})),
            calls_of(run))
      << "a new session";
  EXPECT_EQ(joined(joined(kIntake, {"Session.Value"}), joined(kCommand, {"Session.Value"})), calls_of(run));
}

TEST_F(HostCalls, OfProcessToTheScript) {
  with_name();
  put(page(), L"Template", L"t");
  put(page(), L"TemplateFolder", L"");
  script().forget_calls();
  EXPECT_EQ(E_FAIL, call(page(), L"Process").hr) << "a template file that may not be drawn";
  EXPECT_EQ((Names{L"On_FirstAccess", L"On_StartProcess", L"On_StartCommand", L"OnCommand_", L"On_EndCommand",
                   L"On_StartDraw", L"OnDrawTemplate_t", L"OnTemplate_t"}),
            script().asked());
  put(page(), L"Template", L"");
  script().function(L"On_EndProcess", [this](const Arguments&) {
    asp_.session->values().clear();
    return CComVariant();
  });
  script().forget_calls();
  process();
  EXPECT_EQ((Names{L"On_StartProcess", L"On_StartCommand", L"OnCommand_", L"On_EndCommand", L"On_StartDraw",
                   L"OnDrawTemplate_", L"OnTemplate_", L"On_EndDraw", L"On_EndProcess", L"On_LastAccess"}),
            script().asked());
}

TEST_F(HostCalls, OfMarksToTheScript) {
  const struct {
    const wchar_t* mark;
    Names names;
  } cases[] = {
      {L"(#;v#)", {L"v"}},
      {L"(#%Row#)", {L"OnDraw_Row"}},
      {L"(#%_Message|x#)", {L"OnDraw__Message"}},
      {L"(#%_InputDefaultP|v#|#x#|##|##)", {L"OnDraw__InputDefaultP", L"v"}},
      {L"(#=s#)(#+a#)(#$q#)(#?#)(#!x#)", {}},
  };
  for (const auto& row : cases) {
    script().forget_calls();
    draw(row.mark);
    EXPECT_EQ(row.names, script().asked()) << testing::PrintToString(std::wstring(row.mark));
  }
}

}  // namespace
}  // namespace test
