// Which mark failed, and where: told beside the words of the failure, in each way in which a template is drawn.
#include <functional>

#include "frame/error.h"
#include "frame/error_places.h"
#include "mirt/templator/engine.h"
#include "support/still.h"
#include "support/template_places.h"

namespace test {
namespace {

constexpr const wchar_t* kThreeLines = L"one ^(# (#%fine#)\n\t<b>(#;bad|way#|#in#)</b>\nthree (#%late#)";

class MarkPlaces : public testing::Test {
 protected:
  MarkPlaces() {
    engine_.putref_Output(sink_->unknown());
    engine_.on_mark = [](const Mark& mark) {
      return mark.name == L"bad" ? RaiseError(DISP_E_UNKNOWNNAME, L"Mirt", L"words") : S_OK;
    };
  }
  std::wstring streamed(const std::wstring& text, const std::wstring& file = {}) {
    return placed_error_of([&] { engine_.Process(CComBSTR(std::wstring_view(text)), file); }).places;
  }
  std::wstring parsed(const std::wstring& text, const std::wstring& file = {}) {
    CTemplate tmpl;
    return placed_error_of([&] { engine_.Parse(CComBSTR(std::wstring_view(text)), tmpl, file); }).places;
  }
  // Of the first text, parsed, with the second one said to be its source.
  std::wstring replayed(const std::wstring& text, const std::wstring& source, const std::wstring& file = {}) {
    CTemplate tmpl;
    EXPECT_EQ(S_OK, engine_.Parse(CComBSTR(std::wstring_view(text)), tmpl));
    return placed_error_of([&] { engine_.Process(tmpl, source, file); }).places;
  }

  CComPtr<RecordingSink> sink_ = RecordingSink::make(kResponse);
  Engine engine_;
};

TEST_F(MarkPlaces, AreToldWhenATextIsStreamed) {
  EXPECT_EQ(L"(text):2:5: (#;bad|way#|#in#)", streamed(kThreeLines));
  EXPECT_EQ(L"\\site\\row.html:2:5: (#;bad|way#|#in#)", streamed(kThreeLines, L"\\site\\row.html"));
  EXPECT_EQ(L"(text):1:1: (#;bad#)", streamed(L"(#;bad#)"));
}

// From the second time on such a text is not scanned any more.
TEST_F(MarkPlaces, AreToldWhenATextIsStreamedAgain) {
  for (int i = 0; i < 4; ++i) EXPECT_EQ(L"row.html:2:5: (#;bad|way#|#in#)", streamed(kThreeLines, L"row.html"));
}

TEST_F(MarkPlaces, AreToldWhenATemplateIsReplayed) {
  EXPECT_EQ(L"row.html:2:5: (#;bad|way#|#in#)", replayed(kThreeLines, kThreeLines, L"row.html"));
}

TEST_F(MarkPlaces, AreLeftAwayWhereTheSourceIsNotThatOfTheTemplate) {
  for (const wchar_t* other : {L"", L"(#%fine#) (#;bad|way#)", L"(#%fine#) (#:bad|way#|#in#)", L"(#%fine#) (#;bad",
                               L"(#%fine#)", L"(#;bad|way#|#in#)"}) {
    const PlacedError error = placed_error_of([&] {
      CTemplate tmpl;
      engine_.Parse(CComBSTR(kThreeLines), tmpl);
      engine_.Process(tmpl, other, L"row.html");
    });
    EXPECT_EQ(L"none", error.places) << testing::PrintToString(std::wstring(other));
    EXPECT_EQ(L"words", error.description) << testing::PrintToString(std::wstring(other));
  }
}

TEST_F(MarkPlaces, TellWhereAMarkThatIsNotClosedWasOpened) {
  const std::wstring text = L"<p>\r\n  (#%fine#) (#;title</p>\r\n(#;bad#)";
  const std::wstring place = L"row.html:2:13: (#;title</p>: opened here, never closed";
  EXPECT_EQ(place, streamed(text, L"row.html"));
  EXPECT_EQ(place, streamed(text, L"row.html"));
  EXPECT_EQ(place, parsed(text, L"row.html"));
  EXPECT_EQ(L"Invalid mark order.", placed_error_of([&] { engine_.stream(text); }).description);
}

// Of several, the one that an author would close.
TEST_F(MarkPlaces, TellWhichMarkWithinAnotherIsNotClosed) {
  const struct {
    const wchar_t* text;
    const wchar_t* place;
  } kRows[] = {
      {L"(#%Rows|\n <li>(#;cell</li>", L"2:6: (#;cell</li>: opened here, never closed"},
      {L"(#%Rows|\n <li>(#;cell</li>#)", L"2:6: (#;cell</li>#): opened here, never closed"},
      {L"(#%Rows|\n <li>(#;cell#)</li>", L"1:1: (#%Rows|: opened here, never closed"},
      {L"(#;a#)\n(#%Rows|(#;b|<li>#)(#%In|\n(#;c#)", L"2:20: (#%In|: opened here, never closed"},
      {L"(#%Rows|(#;cell\n<b>(#;other#)#)", L"1:9: (#;cell: opened here, never closed"},
      {L"(#%Rows|^(#;cell</li>", L"1:1: (#%Rows|^(#;cell</li>: opened here, never closed"},
      {L"(#%Rows|(#|name|<b>#)", L"1:1: (#%Rows|(#|name|<b>#): opened here, never closed"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(L"(text):" + std::wstring(row.place), streamed(row.text));
    EXPECT_EQ(L"(text):" + std::wstring(row.place), parsed(row.text));
  }
}

TEST_F(MarkPlaces, TellTheReasonOfAFailureWithoutWords) {
  engine_.on_mark = [this](const Mark& mark) {
    if (mark.name == L"bad") engine_.set_reason(L"it is bad");
    return mark.params.empty() ? E_FAIL : engine_.stream(mark.params[0]);
  };
  EXPECT_EQ(L"(text):1:1: (#;bad#): it is bad", streamed(L"(#;bad#)"));
  EXPECT_EQ(L"(text):1:1: (#;other#)", streamed(L"(#;other#)"));
  EXPECT_EQ(L"(text):1:1: (#;bad#): it is bad\n(text):1:1: (#;in|(#;bad#)#)", streamed(L"(#;in|(#;bad#)#)"));
}

TEST_F(MarkPlaces, TellWhatClosesNoMark) {
  EXPECT_EQ(L"(text):2:3: #): closes no mark", streamed(L"^#)\na #) b"));
  EXPECT_EQ(L"(text):2:3: #): closes no mark", parsed(L"^#)\na #) b"));
}

TEST_F(MarkPlaces, ShowAMarkOnOneLineAndNotWithoutEnd) {
  EXPECT_EQ(L"(text):1:1: (#;bad|  <li>#)", streamed(L"(#;bad|\n\t<li>#)"));
  const std::wstring quoted = streamed(L"(#;bad|" + std::wstring(1000, L'x') + L"#)");
  EXPECT_EQ(L"(text):1:1: (#;bad|" + std::wstring(153, L'x') + L"…", quoted);
}

TEST_F(MarkPlaces, AreNotToldOfAnOutputThatFails) {
  for (int i = 0; i < 4; ++i) {  // scanned, and then known
    sink_->outputs.clear();
    sink_->fail_at = 0;
    const PlacedError error = placed_error_of([&] { EXPECT_TRUE(FAILED(engine_.stream(L"(#%fine#)text"))); });
    EXPECT_EQ(L"no error", error.description) << i;
  }
  sink_->fail_at = static_cast<int>(sink_->outputs.size()) + 1;
  EXPECT_EQ(L"none", replayed(L"(#%fine#)text", L"(#%fine#)text"));
}

TEST_F(MarkPlaces, AreToldOfAFailureWithoutWords) {
  engine_.on_mark = [](const Mark&) { return E_FAIL; };
  const PlacedError error = placed_error_of([&] { EXPECT_EQ(E_FAIL, engine_.stream(L"a (#%x#)")); });
  EXPECT_EQ(L"(text):1:3: (#%x#)", error.places);
  EXPECT_EQ(L"", error.description);
}

TEST_F(MarkPlaces, OfNoFailureAreNone) {
  const PlacedError error = placed_error_of([&] {
    engine_.stream(L"a (#%x#)");
    replayed(L"a (#%x#)", L"a (#%x#)");
  });
  EXPECT_EQ(L"no error", error.description);
}

TEST_F(MarkPlaces, ListTheMarksThatDrawEachOther) {
  engine_.on_mark = [this](const Mark& mark) {
    return mark.params.empty() ? DISP_E_UNKNOWNNAME : engine_.stream(mark.params[0]);
  };
  EXPECT_EQ(L"(text):1:3: (#;x#)\n(text):1:1: (#%in|b (#;x#)#)\nrow.html:2:1: (#%out|(#%in|b (#;x#)#)#)",
            streamed(L"\n(#%out|(#%in|b (#;x#)#)#)", L"row.html"));
}

// The innermost are what the author looks for.
TEST_F(MarkPlaces, EndWithTheSixteenthAndTheNumberOfTheOthers) {
  const auto places_of = [this](int deepest) {
    int depth = 0;
    engine_.on_mark = [&, deepest](const Mark&) { return ++depth == deepest ? E_ABORT : engine_.stream(L"(#%in#)"); };
    return streamed(L"\n(#%out#)");
  };
  std::wstring sixteen = L"(text):1:1: (#%in#)";
  for (int i = 1; i < 16; ++i) sixteen += L"\n(text):1:1: (#%in#)";
  EXPECT_EQ(sixteen.substr(20) + L"\n(text):2:1: (#%out#)", places_of(16));
  EXPECT_EQ(sixteen + L"\nand 1 more", places_of(17));
  EXPECT_EQ(sixteen + L"\nand 24 more", places_of(40));
}

// A host tells its own error objects by their address.
TEST_F(MarkPlaces, LeaveTheErrorObjectTheSame) {
  CComPtr<IErrorInfo> own;
  engine_.on_mark = [&](const Mark&) {
    RaiseError(E_FAIL, L"Mirt", L"words");
    GetErrorInfo(0, own.put());
    SetErrorInfo(0, own.get());
    return E_FAIL;
  };
  engine_.stream(L"(#%x#)");
  CComPtr<IErrorInfo> left;
  ASSERT_EQ(S_OK, GetErrorInfo(0, left.put()));
  EXPECT_EQ(own.get(), left.get());
}

// A host that wants to know of marks that show nothing.
class Notes final : public Still<ITemplateNotes> {
 public:
  HRESULT NoteTemplate(BSTR file, BSTR charset) override {
    noted.push_back(std::wstring(korlib::view_of(file)) + L" in " + std::wstring(korlib::view_of(charset)));
    return S_OK;
  }
  HRESULT NoteSlip(TemplateSlip slip, BSTR name, BSTR place, IUnknown*) override {
    noted.push_back(std::to_wstring(static_cast<int>(slip)) + L" " + std::wstring(korlib::view_of(name)) + L" " +
                    std::wstring(korlib::view_of(place)));
    return S_OK;
  }
  HRESULT NoteArguments(BSTR, ULONG, ULONG) override { return S_OK; }
  HRESULT NoteBag(BSTR, IUnknown*) override { return S_OK; }

  std::vector<std::wstring> noted;
};

TEST_F(MarkPlaces, AreToldOfMarksThatShowNothing) {
  Notes notes;
  engine_.set_response(&notes);
  engine_.on_mark = [&](const Mark&) {
    RaiseError(E_FAIL, L"Mirt", L"words");
    engine_.note_slip(TemplateSlip::without_type, CComBSTR(L"name"));
    EXPECT_EQ(L"words", take_placed_error().description) << "what a mark has said is another's";
    return S_OK;
  };
  EXPECT_EQ(S_OK, engine_.stream(L"\n (#name#)"));
  replayed(L"(#a#)\n(#b#)", L"(#a#)\n(#b#)", L"row.html");
  replayed(L"(#a#)", L"other");
  engine_.note_slip(TemplateSlip::without_type, CComBSTR(L"name"));  // outside of any mark
  engine_.note_template(CComBSTR(L"file.html"), CComBSTR(L"UTF-8"));
  EXPECT_EQ((std::vector<std::wstring>{L"1 name (text):2:2: (#name#)", L"1 name row.html:1:1: (#a#)",
                                       L"1 name row.html:2:1: (#b#)", L"1 name ", L"file.html in UTF-8"}),
            notes.noted);
}

TEST_F(MarkPlaces, AreToldToNobodyWhoDoesNotWantToKnow) {
  EXPECT_FALSE(engine_.takes_notes());
  Engine other;
  other.set_response(sink_->unknown());
  EXPECT_FALSE(other.takes_notes());
  other.note_template(CComBSTR(L"file.html"), CComBSTR(L"UTF-8"));
}

TEST(ErrorPlaces, StayWhenTheWordsAreReplaced) {
  const PlacedError error = placed_error_of([] {
    RaiseError(E_FAIL, L"Mirt", L"inner");
    mirt::ErrorInHand().add(L"a:1:1: m");
    EXPECT_EQ(E_ABORT, mirt::raise_around(E_ABORT, L"Mirt", L"outer"));
  });
  EXPECT_EQ(L"outer", error.description);
  EXPECT_EQ(L"a:1:1: m", error.places);
  EXPECT_EQ(L"none", placed_error_of([] { mirt::raise_around(E_ABORT, L"Mirt", L"x"); }).places);
}

}  // namespace
}  // namespace test
