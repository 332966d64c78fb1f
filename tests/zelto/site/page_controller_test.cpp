// The component's page controller in pages of a site: what it keeps from one request to the next, and what it draws.
#include <gtest/gtest.h>

#include <filesystem>

#include "zelto/site/page_run_fixture.h"

namespace {

using test::MemorySink;
using PageController = test::PageRunFixture;

TEST_F(PageController, KeepsTheBagOfThePageController) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first '); }"
      "function On_StartProcess(m) { m.Bag('n') = (m.Bag('n') || 0) + 1; Response.Write(m.Bag('n')); }"
      "m.Process(); %>";
  EXPECT_EQ("first 1", body(page));
  EXPECT_EQ("2", body(page));
  EXPECT_EQ("3", body(page));
}

TEST_F(PageController, ExpectsTheCommandInAFieldOfAnotherNameEachTime) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'keyed'; m.Backable = false;"
      "function OnCommand_Save(m) { Response.Write('saved '); }"
      "m.Process(); Response.Write(m.ToCommand('Save')); %>";
  const auto field = [](const std::string& answer) {
    const std::size_t begin = answer.find('?') + 1;
    return answer.substr(begin, answer.find('=') - begin);
  };
  // The first page too ends a command, though it has none.
  std::string shown = body(page);
  for (char number = '1'; number < '5'; ++number) {
    EXPECT_EQ(number == '1' ? std::string::npos : 0, shown.find("saved")) << shown;
    ASSERT_EQ(7u, field(shown).size()) << shown;
    EXPECT_EQ(number, field(shown).back());
    query = field(shown) + "=Save";
    shown = body(page);
  }
  // A page that is shown again from the browser's history submits the former name.
  EXPECT_EQ(std::string::npos, body(page).find("saved"));
}

TEST_F(PageController, BeginsAndEndsTheBag) {
  const std::string page =
      "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first '); }"
      "function On_LastAccess(m) { Response.Write('last ' + m.Bag('n')); }"
      "function OnCommand_Set(m) { m.Bag('n') = 5; }"
      "function OnCommand_Leave(m) { m.Abandon(); }"
      "m.Process(); %>";
  query = "c=Set";
  EXPECT_EQ("first ", body(page));
  query = "";
  EXPECT_EQ("", body(page));
  query = "c=Leave";
  EXPECT_EQ("last 5", body(page));
  query = "";
  EXPECT_EQ("first ", body(page));
}

TEST_F(PageController, MakesABagAnewWhereTheSessionHoldsAPlainValue) {
  const std::string page =
      "<% Session('app') = 'text'; var m = Server.CreateObject('Mirt'); m.Script = this; m.Name = 'app';"
      "function On_FirstAccess(m) { Response.Write('first'); } m.Process(); %>";
  EXPECT_EQ("first", body(page));
}

TEST_F(PageController, DrawsAnEditedTemplateOnTheNextRequest) {
  const auto draw = [this](const std::string& text, int hours) {
    namespace fs = std::filesystem;
    fs::last_write_time(folder.write("tpl/main.html", text),
                        fs::file_time_type::clock::now() + std::chrono::hours(hours));
    return body(
        "<% var m = Server.CreateObject('Mirt'); m.Script = this; m.TemplateFolder = Server.MapPath('tpl');"
        "m.TemplateExt = '.html'; m.Template = 'main'; m.Process(); %>");
  };
  EXPECT_EQ("one", draw("one", 1));
  EXPECT_EQ("one", draw("one", 1));
  EXPECT_EQ("two", draw("two", 2));
}

TEST_F(PageController, SurvivesATemplateThatIncludesItselfAndADrawThatNeverAgrees) {
  const MemorySink nested =
      run("<% var m = Server.CreateObject('Mirt'); m.Script = this;"
          "function OnDraw_again(m) { m.ProcessTemplate('(#%again#)'); } m.ProcessTemplate('(#%again#)'); %>",
          "");
  EXPECT_EQ(500, nested.head.status);
  const MemorySink drawn =
      run("<% var m = Server.CreateObject('Mirt'); m.Script = this; m.Template = 'x';"
          "function OnDrawTemplate_x(m) { return false; } m.Process(); %>",
          "");
  EXPECT_EQ(500, drawn.head.status);
  EXPECT_EQ("still here", body("still <%= 'here' %>"));
}

}  // namespace
