// Streaming and replay: what is written, in which order, in how many writes.
#include <filesystem>
#include <fstream>
#include <iterator>

#include <korlib/text.h>

#include "mirt/templator/engine.h"

namespace test {
namespace {

using Texts = std::vector<std::wstring>;

struct Drawing {
  Engine engine;
  CComPtr<RecordingSink> sink = RecordingSink::make(kResponse);

  Drawing() { EXPECT_EQ(S_OK, engine.putref_Output(sink->unknown())); }
};

TEST(Streaming, WritesLiteralTextOneCharacterAtATime) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.stream(L"ab(#%x#)cd"));
  EXPECT_EQ((Texts{L"a", L"b", L"<% x>", L"c", L"d"}), drawing.sink->texts());
}

TEST(Streaming, LendsOneStringForAllCharacters) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.stream(L"abc(#%x#)d("));
  const auto& addresses = drawing.sink->addresses;
  ASSERT_EQ(6u, addresses.size());
  for (const std::size_t i : {1, 2, 4, 5}) EXPECT_EQ(addresses[0], addresses[i]) << i;
}

TEST(Streaming, WritesAProtectedDelimiterWhole) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.stream(L"^(#^#)^^^x^"));
  EXPECT_EQ((Texts{L"(#", L"#)", L"^", L"^", L"x", L"^"}), drawing.sink->texts());
}

TEST(Streaming, ProtectsNoSeparatorOutsideAMark) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.stream(L"^|^#|#^x"));
  EXPECT_EQ((Texts{L"^", L"|", L"^", L"#", L"|", L"#", L"^", L"x"}), drawing.sink->texts());
}

TEST(Streaming, WritesNothingForNothing) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.stream(L""));
  EXPECT_EQ(S_OK, drawing.engine.Process(static_cast<wchar_t*>(nullptr)));
  EXPECT_EQ(Texts{}, drawing.sink->texts());
}

// The third time it is not scanned any more.
TEST(Streaming, WritesATextThatComesAgainAsTheFirstTime) {
  Drawing drawing;
  Texts expected;
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(S_OK, drawing.engine.stream(L"a^(#b|(#%x|y#)^^c"));
    for (const wchar_t* text : {L"a", L"(#", L"b", L"|", L"<% x|y>", L"^", L"c"}) expected.emplace_back(text);
    EXPECT_EQ(expected, drawing.sink->texts()) << i;
  }
  const auto& addresses = drawing.sink->addresses;
  ASSERT_EQ(28u, addresses.size());
  EXPECT_EQ(addresses[21], addresses[27]) << "one string is lent for all characters";
}

TEST(Streaming, FailsInTheSamePlaceEachTime) {
  Drawing drawing;
  Texts expected;
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(E_FAIL, drawing.engine.stream(L"a(#%x#)b#)c"));
    for (const wchar_t* text : {L"a", L"<% x>", L"b"}) expected.emplace_back(text);
    EXPECT_EQ(expected, drawing.sink->texts()) << i;
  }
}

TEST(Streaming, GoesOnWithATextWhoseMarkHasDrawnAnother) {
  Drawing drawing;
  drawing.engine.on_mark = [&](const Mark& mark) {
    if (mark.name != L"outer") return drawing.engine.write_output(CComBSTR(L"!"));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(S_OK, drawing.engine.stream(L"[(#inner#)]"));
    return S_OK;
  };
  for (int i = 0; i < 4; ++i) EXPECT_EQ(S_OK, drawing.engine.stream(L"a(#outer#)b(#outer#)c"));
  std::wstring expected;
  for (int i = 0; i < 4; ++i) expected += L"a[!][!][!]b[!][!][!]c";
  EXPECT_EQ(expected, drawing.sink->text());
}

TEST(Streaming, AsksForTheOutputAgainBehindEachMark) {
  Drawing drawing;
  const CComPtr<RecordingSink> other = RecordingSink::make(kTextStream);
  drawing.engine.on_mark = [&](const Mark& mark) {
    return drawing.engine.putref_Output(mark.name == L"other" ? other->unknown() : drawing.sink->unknown());
  };
  for (int i = 0; i < 3; ++i) EXPECT_EQ(S_OK, drawing.engine.stream(L"a(#other#)b(#back#)c"));
  EXPECT_EQ(L"acacac", drawing.sink->text());
  EXPECT_EQ(L"bbb", other->text());
}

// Marks are filled again and again; nothing of one is left in the next, nor in the next template.
TEST(Streaming, HandsEveryMarkOverLikeNew) {
  std::wstring text = L"(#%many";
  for (int i = 0; i < 40; ++i) text += L"#|#" + std::to_wstring(i);
  text += L"#)(#x#)(#:short|p#)(##)";
  Drawing drawing;
  const std::vector<Mark> expected = parse(text).marks;
  ASSERT_EQ(4u, expected.size());
  EXPECT_EQ(S_OK, drawing.engine.stream(text));
  EXPECT_EQ(expected, drawing.engine.marks);
  drawing.engine.marks.clear();
  EXPECT_EQ(E_FAIL, drawing.engine.stream(L"(#%unfinished|a#|#b"));
  EXPECT_EQ(S_OK, drawing.engine.stream(text));
  EXPECT_EQ(expected, drawing.engine.marks);
}

TEST(Streaming, KeepsWhatWasWrittenBeforeAFault) {
  Drawing drawing;
  EXPECT_EQ(E_FAIL, drawing.engine.stream(L"a#)b"));
  EXPECT_EQ(L"Invalid mark order.", take_error().description);
  EXPECT_EQ(E_FAIL, drawing.engine.stream(L"c(#%x"));
  EXPECT_EQ(L"Templator", take_error().source);
  EXPECT_EQ((Texts{L"a", L"c"}), drawing.sink->texts());
  EXPECT_TRUE(drawing.engine.marks.empty());
}

TEST(Replay, WritesEachRunWhole) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.replay(L"ab(#%x#)cd"));
  EXPECT_EQ((Texts{L"ab", L"<% x>", L"cd"}), drawing.sink->texts());
}

TEST(Replay, WritesEmptyRunsToo) {
  Drawing drawing;
  EXPECT_EQ(S_OK, drawing.engine.replay(L"(#%x#)(#%y#)"));
  EXPECT_EQ((Texts{L"", L"<% x>", L"", L"<% y>", L""}), drawing.sink->texts());
}

TEST(Replay, StopsAtTheMarkThatFails) {
  Drawing drawing;
  drawing.engine.on_mark = [&](const Mark& mark) { return mark.name == L"2" ? E_ABORT : S_OK; };
  EXPECT_EQ(E_ABORT, drawing.engine.replay(L"a(#%1#)b(#%2#)c(#%3#)d"));
  EXPECT_EQ((Texts{L"a", L"b"}), drawing.sink->texts());
  EXPECT_EQ(2u, drawing.engine.marks.size());
}

TEST(Replay, RefusesWhatAFailedParseLeft) {
  Drawing drawing;
  CTemplate partial;
  EXPECT_EQ(E_FAIL, drawing.engine.Parse(CComBSTR(L"a(#%x#)b#)"), partial));
  EXPECT_TRUE(FAILED(drawing.engine.Process(partial)));
  CTemplate fresh;
  EXPECT_TRUE(FAILED(drawing.engine.Process(fresh)));
  EXPECT_EQ(Texts{}, drawing.sink->texts());
}

TEST(Replay, ServesSeveralEnginesFromOneTemplate) {
  Drawing one;
  Drawing two;
  CTemplate tmpl;
  ASSERT_EQ(S_OK, one.engine.Parse(CComBSTR(L"a(#%x|y#)b"), tmpl));
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(S_OK, one.engine.Process(tmpl));
    EXPECT_EQ(S_OK, two.engine.Process(tmpl));
  }
  EXPECT_EQ(L"a<% x|y>ba<% x|y>b", one.sink->text());
  EXPECT_EQ(one.sink->texts(), two.sink->texts());
}

enum class Mode { kStream, kReplay };

class BothModes : public testing::TestWithParam<Mode> {
 protected:
  HRESULT draw(Engine& engine, std::wstring_view text) const {
    return GetParam() == Mode::kStream ? engine.stream(text) : engine.replay(text);
  }
};

TEST_P(BothModes, FailWithoutAnOutput) {
  Engine engine;
  for (const wchar_t* text : {L"a(#%x#)", L"(#%x#)", L""}) EXPECT_EQ(E_FAIL, draw(engine, text)) << text;
  EXPECT_TRUE(engine.marks.empty());
}

TEST_P(BothModes, PassAFailedWriteOn) {
  const std::wstring text = L"ab^(#(#%x#)^^c(#:y#)";
  Drawing whole;
  ASSERT_EQ(S_OK, draw(whole.engine, text));
  const Texts expected = whole.sink->texts();
  for (std::size_t n = 0; n < expected.size(); ++n) {
    Drawing drawing;
    drawing.sink->fail_at = static_cast<int>(n);
    EXPECT_EQ(E_ABORT, draw(drawing.engine, text)) << n;
    EXPECT_EQ(Texts(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(n)), drawing.sink->texts());
  }
}

TEST_P(BothModes, PassAFailedMarkOn) {
  Drawing drawing;
  drawing.engine.on_mark = [](const Mark&) { return DISP_E_OVERFLOW; };
  EXPECT_EQ(DISP_E_OVERFLOW, draw(drawing.engine, L"a(#%x#)b"));
  EXPECT_EQ(Texts{L"a"}, drawing.sink->texts());
}

TEST_P(BothModes, LetAMarkDrawATemplateOfItsOwn) {
  Drawing drawing;
  drawing.engine.on_mark = [&](const Mark& mark) {
    return mark.params.empty() ? drawing.engine.write_output(CComBSTR(L"!")) : draw(drawing.engine, mark.params[0]);
  };
  EXPECT_EQ(S_OK, draw(drawing.engine, L"1(#%x|2(#%y|3(#%z#)4#)5#)6"));
  EXPECT_EQ(L"123!456", drawing.sink->text());
}

TEST_P(BothModes, FollowAChangeOfOutput) {
  Drawing drawing;
  const CComPtr<RecordingSink> other = RecordingSink::make(kTextStream);
  drawing.engine.on_mark = [&](const Mark&) { return drawing.engine.putref_Output(other->unknown()); };
  EXPECT_EQ(S_OK, draw(drawing.engine, L"a(#%x#)b"));
  EXPECT_EQ(L"a", drawing.sink->text());
  EXPECT_EQ(L"b", other->text());
}

TEST_P(BothModes, StopWhenTheOutputIsTakenAway) {
  Drawing drawing;
  drawing.engine.on_mark = [&](const Mark&) { return drawing.engine.putref_Output(nullptr); };
  EXPECT_EQ(E_FAIL, draw(drawing.engine, L"a(#%x#)b"));
  EXPECT_EQ(L"a", drawing.sink->text());
}

INSTANTIATE_TEST_SUITE_P(Process, BothModes, testing::Values(Mode::kStream, Mode::kReplay),
                         [](const auto& mode) { return mode.param == Mode::kStream ? "Streaming" : "Replay"; });

std::wstring contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::wstring text(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'\0');
  utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size());
  return text;
}

// Every sequence of up to five of the delimiters and a letter, in both modes.
TEST(EverySequence, DrawsAlikeStreamedAndReplayed) {
  std::vector<std::wstring> templates{L""};
  for (std::size_t done = 0, length = 1; length <= 5; ++length) {
    const std::size_t end = templates.size();
    for (; done < end; ++done) {
      for (const wchar_t* piece : {L"^", L"(#", L"#)", L"|", L"#|#", L"a"})
        templates.push_back(templates[done] + piece);
    }
  }
  int drawn = 0;
  for (const std::wstring& text : templates) {
    Drawing streamed;
    Drawing replayed;
    const HRESULT hr = streamed.engine.stream(text);
    ASSERT_EQ(hr, replayed.engine.replay(text)) << testing::PrintToString(text);
    if (FAILED(hr)) continue;
    ++drawn;
    ASSERT_EQ(streamed.sink->text(), replayed.sink->text()) << testing::PrintToString(text);
  }
  EXPECT_GT(drawn, 1000);
}

TEST(TemplateFolders, DrawAlikeStreamedAndReplayed) {
  int folders = 0;
  for (const auto& folder : std::filesystem::directory_iterator(TEST_DATA "/templates")) {
    SCOPED_TRACE(folder.path().filename().string());
    ++folders;
    const std::wstring text = contents(folder.path() / "template.txt");
    const std::wstring expected = contents(folder.path() / "expected.txt");
    Drawing streamed;
    Drawing replayed;
    EXPECT_EQ(S_OK, streamed.engine.stream(text));
    EXPECT_EQ(S_OK, replayed.engine.replay(text));
    EXPECT_EQ(expected, streamed.sink->text());
    EXPECT_EQ(expected, replayed.sink->text());
    EXPECT_EQ(streamed.engine.marks, replayed.engine.marks);
  }
  EXPECT_GE(folders, 5);
}

}  // namespace
}  // namespace test
