// The templates and marks that a failure has come through, as the component's objects tell them to any host.
#include <korlib/comvariant.h>
#include <mirt/mirt.h>

#include "mirt/page/page_fixture.h"
#include "support/template_places.h"

namespace test {
namespace {

class ErrorPlaces : public PageTest {
 protected:
  IMirt* typed() { return CComQIPtr<IMirt>(page()).get(); }
  PlacedError of_text(const wchar_t* text) {
    return placed_error_of([&] { typed()->ProcessTemplate(CComBSTR(text)); });
  }
  PlacedError of_file(const wchar_t* name) {
    return placed_error_of([&] { typed()->DrawTemplate(CComBSTR(name)); });
  }
  // Without the test's folder in front, and with slashes.
  std::wstring within_folder(std::wstring places) const {
    std::replace(places.begin(), places.end(), L'\\', L'/');
    const std::wstring root = folder_path() + L"/";
    for (std::size_t at = places.find(root); at != places.npos; at = places.find(root)) places.erase(at, root.size());
    return places;
  }
  std::wstring folder_path() const { return folder().wstring(); }
};

TEST_F(ErrorPlaces, NameTheTemplatesThatDrawEachOther) {
  use_folder();
  file("page.html", "<body>\n  (#`parts\\list#)\n</body>");
  file("parts/list.html", "(#`row#)");
  file("parts/row.html", "<li>\n<b>(#;nothing|way#)</b>");
  for (const bool are_cached : {false, true, true}) {
    put(page(), L"CacheTemplate", are_cached);
    const PlacedError error = of_file(L"page");
    EXPECT_EQ(L"parts/row.html:2:4: (#;nothing|way#)\nparts/list.html:1:1: (#`row#)\npage.html:2:3: (#`parts/list#)",
              within_folder(error.places))
        << are_cached;
  }
}

// The words are those of always.
TEST_F(ErrorPlaces, StandBesideTheWords) {
  EXPECT_EQ(L"[(#;nothing#)]", of_text(L"(#;nothing#)").description);
  EXPECT_EQ(L"Event 'OnDraw_Nothing' not found.", of_text(L"(#%Nothing#)").description);
  EXPECT_EQ(L"(text):1:1: (#%Nothing|a#|#b#)", of_text(L"(#%Nothing|a#|#b#)").places);
}

TEST_F(ErrorPlaces, AreToldOfEachKindOfFailure) {
  script().value(L"array", value_of(std::vector<CComVariant>{CComVariant(L"one")}));
  script().value(L"null", null_value());
  for (const wchar_t* mark :
       {L"(#;nothing#)", L"(#%Nothing#)", L"(#;null#)", L"(#&item#)", L"(#%_InputDefault|one#)", L"(#`nowhere#)"}) {
    EXPECT_EQ(L"(text):1:2: " + std::wstring(mark), of_text((L"." + std::wstring(mark)).c_str()).places) << mark;
  }
  EXPECT_EQ(L"(text):1:1: (#*item#): there is no View outside of the page's Process", of_text(L"(#*item#)").places);
}

// What a script calls the values on the way.
TEST_F(ErrorPlaces, NameTheStepOfAPathThatFails) {
  script().value(L"array", value_of(std::vector<CComVariant>{CComVariant(L"one")}));
  EXPECT_EQ(L"(text):1:1: (#;array|7#): 'array' has no element '7'", of_text(L"(#;array|7#)").places);
  EXPECT_EQ(L"(text):1:1: (#;array|x#): 'array' is an array, and has no 'x'", of_text(L"(#;array|x#)").places);
  EXPECT_EQ(L"(text):1:1: (#;array|0#|#way#|#on#): 'array.0' is no object, and has no 'way'",
            of_text(L"(#;array|0#|#way#|#on#)").places);
  EXPECT_EQ(L"(text):1:1: (#;array|0|way#): 'array' is an array, and has no '0|way' (parameters are parted by #|#)",
            of_text(L"(#;array|0|way#)").places);
}

TEST_F(ErrorPlaces, TellWhereAMarkWasOpened) {
  use_folder();
  file("page.html", "(#`part#)");
  file("part.html", "<p>(#;title</p>\n");
  for (const bool are_cached : {false, true}) {
    put(page(), L"CacheTemplate", are_cached);
    const PlacedError error = of_file(L"page");
    EXPECT_EQ(L"part.html:1:4: (#;title</p>: opened here, never closed\npage.html:1:1: (#`part#)",
              within_folder(error.places));
    EXPECT_EQ(L"Invalid mark order.", error.description);
  }
}

TEST_F(ErrorPlaces, GoThroughTheFunctionsThatDraw) {
  script().fallible(L"OnDraw_Rows", [this](const Arguments&, VARIANT*) {
    return typed()->ProcessTemplate(CComBSTR(L"<li>(#;nothing#)"));
  });
  EXPECT_EQ(L"(text):1:5: (#;nothing#)\n(text):1:1: (#%Rows#)", of_text(L"(#%Rows#)").places);
}

TEST_F(ErrorPlaces, AreToldByTheMessagesThatAreDrawn) {
  CComVariant message(L"text (#;nothing#)");
  EXPECT_EQ(S_OK, typed()->AddMessage(&message, nullptr));
  EXPECT_EQ(L"(text):1:6: (#;nothing#)\n(text):1:1: (#%_Message_Text#)\n(text):1:1: (#%_Message|(#%_Message_Text#)#)",
            of_text(L"(#%_Message|(#%_Message_Text#)#)").places);
}

TEST_F(ErrorPlaces, AreToldByAChild) {
  const std::wstring path = file("child.html", "a\n(#:nothing#)");
  const korlib_host::ContextScope scope(asp_.context.get());
  CComPtr<IMirtedTemplator> child;
  ASSERT_EQ(S_OK, typed()->NewTemplator(CComBSTR(L"Draw_"), child.put()));
  EXPECT_EQ(L"(text):1:2: (#%Row#): the templator has no Script",
            placed_error_of([&] { child->ProcessTemplate(CComBSTR(L".(#%Row#)")); }).places);
  const PlacedError error =
      placed_error_of([&] { child->ProcessTemplateFile(CComBSTR(std::wstring_view(path)), CComBSTR(L"UTF-8")); });
  EXPECT_EQ(path + L":2:1: (#:nothing#): the templator has no Script", error.places);
  EXPECT_EQ(L"", error.description) << "the child has no words of its own";
}

// It raises no words for them.
TEST_F(ErrorPlaces, TellWhatAChildDoesNotHave) {
  const korlib_host::ContextScope scope(asp_.context.get());
  CComPtr<IMirtedTemplator> child;
  ASSERT_EQ(S_OK, typed()->NewTemplator(CComBSTR(L"Draw_"), child.put()));
  const auto error_of = [&](const wchar_t* text) {
    return placed_error_of([&] { EXPECT_EQ(E_FAIL, child->ProcessTemplate(CComBSTR(text))); });
  };
  EXPECT_EQ(L"(text):1:1: (#&item#): the page that has made the templator has no Name, and so no bag",
            error_of(L"(#&item#)").places);
  EXPECT_EQ(L"", error_of(L"(#&item#)").description);
  EXPECT_EQ(L"(text):1:1: (#*item#): there is no View outside of the page's Process", error_of(L"(#*item#)").places);
}

TEST_F(ErrorPlaces, AreToldByAStandAloneTemplator) {
  const std::wstring path = file("plain.html", "a (#\ncomment#)(#nothing#)");
  CComPtr<ITextTemplator> templator;
  ASSERT_EQ(S_OK, module_.create(L"TextTemplator").query(templator.put()));
  const PlacedError error =
      placed_error_of([&] { templator->ProcessTemplateFile(CComBSTR(std::wstring_view(path)), CComBSTR(L"UTF-8")); });
  EXPECT_EQ(path + L":2:10: (#nothing#): the templator has no Script", error.places);
  ASSERT_EQ(S_OK, templator->putref_Script(script_.get()));
  EXPECT_EQ(L"(text):1:1: (#nothing#): no script of the templator has it",
            placed_error_of([&] { templator->ProcessTemplate(CComBSTR(L"(#nothing#)")); }).places);
}

TEST_F(ErrorPlaces, AreGoneWithTheFailureThatTheScriptGoesOnFrom) {
  use_folder();
  file("page.html", "(#`missing#)");
  std::filesystem::create_directories(folder() / "missing.html");
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    const CComQIPtr<IMirt> page(a[0].pdispVal);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, page->ProcessTemplate(CComBSTR(L"(#;nothing#)")));
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(S_OK, page->put_Template(CComBSTR(L"")));
    return CComVariant(false);
  });
  EXPECT_EQ(L"no error", of_file(L"page").description);
}

}  // namespace
}  // namespace test
