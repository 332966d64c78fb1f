// Template files: resolved, permitted, read, cached and drawn.
#include <cwctype>
#include <fstream>

#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class TemplateFiles : public PageTest {
 protected:
  void SetUp() override { use_folder(); }
  std::wstring absolute(const std::string& name) const { return (folder() / name).wstring(); }
};

TEST_F(TemplateFiles, AreFoundByNameBelowTheFolder) {
  file("list.html", "a list");
  file("sub/item.html", "an item");
  EXPECT_EQ(L"a list", draw_file(L"list"));
  EXPECT_EQ(L"a list", draw_file(L"/list"));
  EXPECT_EQ(L"a list", draw_file(L"\\list"));
  EXPECT_EQ(L"an item", draw_file(L"sub/item"));
  EXPECT_EQ(L"an item", draw_file(L"sub\\item"));
  EXPECT_EQ(L"a list", draw_file(L"sub/../list"));
  EXPECT_EQ(L"a list", draw_file(L"./list"));
}

TEST_F(TemplateFiles, TheFolderMayEndInASeparator) {
  file("list.html", "a list");
  for (const wchar_t* end : {L"/", L"\\", L"//"}) {
    put(page(), L"TemplateFolder", folder().wstring() + end);
    EXPECT_EQ(L"a list", draw_file(L"list"));
  }
}

TEST_F(TemplateFiles, TheExtensionIsTakenAsItStands) {
  file("list", "bare");
  file("listhtml", "no dot");
  put(page(), L"TemplateExt", L"");
  EXPECT_EQ(L"bare", draw_file(L"list"));
  put(page(), L"TemplateExt", L"html");
  EXPECT_EQ(L"no dot", draw_file(L"list"));
}

TEST_F(TemplateFiles, AreReadInThePagesCharset) {
  file("text.html", "\xC3\xA4");
  EXPECT_EQ(L"ä", draw_file(L"text"));
  put(page(), L"TemplateCharset", L"windows-1252");
  put(page(), L"CacheTemplate", false);
  EXPECT_EQ(L"Ã¤", draw_file(L"text"));
  put(page(), L"TemplateCharset", L"no such charset");
  EXPECT_EQ(L"<code 80004005>Template file can't read.[" + absolute("text.html") + L"]", draw_file(L"text"));
}

TEST_F(TemplateFiles, OutsideTheFolderAreRefused) {
  file("tpl/in.html", "in");
  const std::wstring secret = file("secret.html", "secret");
  put(page(), L"TemplateFolder", (folder() / "tpl").wstring());
  const Answer answer = call(page(), L"DrawTemplate", L"..\\secret");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Template file can't obtain.[" + secret + L"]", answer.description);
  EXPECT_EQ(L"Mirt", answer.source);
  EXPECT_EQ(L"", output());
  put(page(), L"TemplatePermissionPath", folder().wstring());
  EXPECT_EQ(L"secret", draw_file(L"..\\secret"));
  put(page(), L"TemplatePermissionPath", (folder() / "other").wstring());
  EXPECT_EQ(L"<code 80004005>Template file can't obtain.[" + absolute("tpl/in.html") + L"]", draw_file(L"in"));
}

TEST_F(TemplateFiles, BesideTheFolderAreRefused) {
  file("tpl/in.html", "in");
  const std::wstring beside = file("tplx/a.html", "beside");
  put(page(), L"TemplateFolder", (folder() / "tpl").wstring());
  EXPECT_EQ(L"<code 80004005>Template file can't obtain.[" + beside + L"]", draw_file(L"../tplx/a"));
}

TEST_F(TemplateFiles, BehindALinkThatLeavesTheFolderAreRefused) {
  file("tpl/in.html", "in");
  const std::wstring secret = file("secret.html", "secret");
  std::filesystem::create_symlink(folder() / "secret.html", folder() / "tpl" / "link.html");
  put(page(), L"TemplateFolder", (folder() / "tpl").wstring());
  EXPECT_EQ(L"<code 80004005>Template file can't obtain.[" + secret + L"]", draw_file(L"link"));
}

// By its canonical form, however it is written; a path that does not exist counts as it is written.
TEST_F(TemplateFiles, ThePermittedFolderMayBeWrittenInOtherWays) {
  file("tpl/sub/in.html", "in");
  std::filesystem::create_directory_symlink(folder() / "tpl", folder() / "link");
  std::wstring upper = absolute("tpl");
  for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
  for (const std::wstring& permitted :
       {absolute("tpl"), absolute("tpl/"), absolute("tpl\\"), absolute("tpl/sub/.."), absolute("./tpl//sub/"),
        absolute("link"), absolute("link\\sub"), upper, upper + L"/SUB", upper + L"\\sub\\"}) {
    put(page(), L"TemplatePermissionPath", permitted);
    EXPECT_EQ(L"in", draw_file(L"tpl\\sub\\in")) << testing::PrintToString(permitted);
  }
}

TEST_F(TemplateFiles, AFolderThatIsNotThePermittedOneIsRefused) {
  file("tpl/in.html", "in");
  file("tplx/in.html", "beside");
  file("tpl/sub/in.html", "below");
  const std::wstring refused = L"<code 80004005>Template file can't obtain.[" + absolute("tpl/in.html") + L"]";
  for (const std::wstring& permitted :
       {absolute("tplx"), absolute("tp"), absolute("tpl/in.html"), absolute("tpl/sub"), absolute("tpl/gone"),
        absolute("gone/tpl"), absolute("tpl/sub/../../tplx"), std::wstring(L"tpl")}) {
    put(page(), L"TemplatePermissionPath", permitted);
    EXPECT_EQ(refused, draw_file(L"tpl\\in")) << testing::PrintToString(permitted);
  }
}

// The folder itself is judged, not only what is named below it: its files lie where its link leads.
TEST_F(TemplateFiles, AFolderThatIsALinkIsPermittedWhereItLeads) {
  const std::wstring target = file("real/in.html", "in");
  std::filesystem::create_directory_symlink(folder() / "real", folder() / "tpl");
  put(page(), L"TemplateFolder", absolute("tpl"));
  EXPECT_EQ(L"in", draw_file(L"in"));
  std::filesystem::create_directories(folder() / "other");
  put(page(), L"TemplatePermissionPath", absolute("other"));
  EXPECT_EQ(L"<code 80004005>Template file can't obtain.[" + target + L"]", draw_file(L"in"));
}

TEST_F(TemplateFiles, WithoutAFolderEveryOneIsRefused) {
  const std::wstring path = file("list.html", "a list");
  put(page(), L"TemplateFolder", L"");
  EXPECT_EQ(L"<code 80004005>Template file path is invalid.[no such.html]", draw_file(L"no such"));
  put(page(), L"TemplateExt", L"");
  // The path is the name without its separator, below the working directory.
  const std::wstring relative = std::filesystem::relative(path).wstring();
  EXPECT_EQ(L"<code 80004005>Template file can't obtain.[" + path + L"]", draw_file(relative));
}

TEST_F(TemplateFiles, AMissingFileHasAnInvalidPathWhereTheHostKnowsNoBetter) {
  const std::wstring composed = folder().wstring() + L"\\none.html";
  EXPECT_EQ(L"<code 80004005>Template file path is invalid.[" + composed + L"]", draw_file(L"none"));
}

TEST_F(TemplateFiles, ANulInANameIsRefused) {
  file("list", "without extension");
  const Answer answer = call(page(), L"DrawTemplate", std::wstring(L"list\0", 5));
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Template file path is invalid.[" + folder().wstring() + L"\\list", answer.description);
}

TEST_F(TemplateFiles, AwkwardNamesFailCleanly) {
  for (const std::wstring& name : {std::wstring(5000, L'x'), std::wstring(L"\xD800"), std::wstring(L""),
                                   std::wstring(L"../../../../../../../.."), std::wstring(L"a'\"<>|*?:b")})
    EXPECT_EQ(L"<code 80004005>Template file ", draw_file(name).substr(0, 29));
}

// A folder in a file's place: its path is fine, and reading it fails.
class UnreadableFile : public TemplateFiles {
 protected:
  void SetUp() override {
    use_folder();
    std::filesystem::create_directories(folder() / "broken.html");
  }
};

TEST_F(UnreadableFile, IsAnErrorByDefault) {
  EXPECT_EQ(L"<code 80004005>Template file can't read.[" + absolute("broken.html") + L"]", draw_file(L"broken"));
  for (const CComVariant& answer : {CComVariant(), CComVariant(true), CComVariant(LONG{0})}) {
    script().function(L"On_TemplateNotFound", [answer](const Arguments& a) {
      EXPECT_EQ(2u, a.size());
      return answer;
    });
    EXPECT_EQ(L"<code 80004005>Template file can't read.[" + absolute("broken.html") + L"]", draw_file(L"broken"));
  }
}

TEST_F(UnreadableFile, IsReplacedByAnotherTemplateWhenTheScriptSaysFalse) {
  file("other.html", "the other");
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"other");
    return CComVariant(false);
  });
  put(page(), L"Template", L"broken");
  process();
  EXPECT_EQ(L"the other", output());
  EXPECT_EQ(L"the other", draw_file(L"broken"));
}

TEST_F(UnreadableFile, EndsAsTheOtherTemplateDoes) {
  file("other.html", "a(#:missing#)");
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"other");
    return CComVariant(false);
  });
  EXPECT_EQ(L"<code 80020006>[(#:missing#)]a", draw_file(L"broken"));
  put(page(), L"Template", L"broken");
  EXPECT_EQ(DISP_E_UNKNOWNNAME, call(page(), L"Process").hr);
}

// The other template is the page's, so it lies in the page's folder and not beside the one around it.
TEST_F(UnreadableFile, IsReplacedFromThePagesFolder) {
  file("other.html", "outer");
  file("sub/other.html", "inner");
  file("sub/page.html", "(#`none#)");
  std::filesystem::create_directories(folder() / "sub/none.html");
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"other");
    return CComVariant(false);
  });
  EXPECT_EQ(L"outer", draw_file(L"sub\\page"));
}

TEST_F(UnreadableFile, IsDrawnByTheTemplatesOwnFunction) {
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"drawn");
    return CComVariant(false);
  });
  script().function(L"OnTemplate_drawn", [](const Arguments& a) {
    call(a[0].pdispVal, L"Write", L"by function", false);
    return CComVariant();
  });
  EXPECT_EQ(L"by function", draw_file(L"broken"));
}

TEST_F(UnreadableFile, EndsTheDrawWithTheEventsFailure) {
  script().failing(L"On_TemplateNotFound", DISP_E_EXCEPTION, L"broken");
  EXPECT_EQ(L"<code 80020009>broken", draw_file(L"broken"));
}

TEST_F(TemplateFiles, DrawOthersRelativeToThemselves) {
  file("page.html", "page(#`parts/a#)(#`b#)");
  file("parts/a.html", "[a(#`b#)]");
  file("parts/b.html", "inner b");
  file("b.html", "outer b");
  // Only backslashes part a composed path, so the name's own slash does not count as a folder.
  EXPECT_EQ(L"page[aouter b]outer b", draw_file(L"page"));
  file("page2.html", "page(#`parts\\a#)(#`b#)");
  EXPECT_EQ(L"page[ainner b]outer b", draw_file(L"page2"));
}

TEST_F(TemplateFiles, GoOnFromTheirOwnFolderBehindAChild) {
  file("sub/page.html", "(#`deep\\a#)(#`b#)");
  file("sub/deep/a.html", "[(#`b#)]");
  file("sub/deep/b.html", "deep b");
  file("sub/b.html", "sub b");
  file("b.html", "outer b");
  for (const bool cached : {true, false}) {
    put(page(), L"CacheTemplate", cached);
    EXPECT_EQ(L"[deep b]sub b", draw_file(L"sub\\page"));
  }
}

TEST_F(TemplateFiles, PutTheCurrentPathBackAfterAFailure) {
  file("parts/bad.html", "(#:missing#)");
  file("b.html", "outer b");
  file("parts/b.html", "inner b");
  EXPECT_EQ(L"<code 80020006>[(#:missing#)]", draw_file(L"parts\\bad"));
  EXPECT_EQ(L"outer b", draw_file(L"b"));
  put(page(), L"CacheTemplate", false);
  EXPECT_EQ(L"<code 80020006>[(#:missing#)]", draw_file(L"parts\\bad"));
  EXPECT_EQ(L"outer b", draw_file(L"b"));
}

TEST_F(TemplateFiles, ReplayWholeRunsFromTheCacheAndSingleCharactersWithout) {
  file("t.html", "ab(#?#)cd");
  EXPECT_EQ(L"abccd", draw_file(L"t"));
  EXPECT_EQ((fake::Texts{L"ab", L"c", L"cd"}), asp_.response->writes);
  put(page(), L"CacheTemplate", false);
  EXPECT_EQ(L"abccd", draw_file(L"t"));
  EXPECT_EQ((fake::Texts{L"a", L"b", L"c", L"c", L"d"}), asp_.response->writes);
}

// The cache is asked by the composed path. A host without file functions of its own does not take backslashes for
// separators and cannot open it, so no time is ever compared there and an entry stays.
TEST_F(TemplateFiles, StayInTheCacheWhereTheHostCannotTellTheirTime) {
  file("t.html", "old");
  EXPECT_EQ(L"old", draw_file(L"t"));
  file("t.html", "new");
  EXPECT_EQ(L"old", draw_file(L"t"));
  EXPECT_EQ(L"new", draw_file(L"./t")) << "another composed path is another entry";
  put(page(), L"CacheTemplate", false);
  EXPECT_EQ(L"new", draw_file(L"t"));
  put(page(), L"CacheTemplate", true);
  std::filesystem::remove(folder() / "t.html");
  std::filesystem::create_directories(folder() / "t.html");
  EXPECT_EQ(L"<code 80004005>Template file can't read.[" + absolute("t.html") + L"]", draw_file(L"t"))
      << "the file is read in any case";
}

TEST_F(TemplateFiles, ThatDoNotParseAreNotCached) {
  file("t.html", "a(#b");
  EXPECT_EQ(L"<code 80004005>Invalid mark order.", draw_file(L"t"));
  file("t.html", "mended");
  EXPECT_EQ(L"mended", draw_file(L"t"));
}

TEST_F(TemplateFiles, WithoutCacheDrawUpToTheFault) {
  put(page(), L"CacheTemplate", false);
  file("t.html", "a(#b");
  EXPECT_EQ(L"<code 80004005>Invalid mark order.a", draw_file(L"t"));
}

TEST_F(TemplateFiles, AChangeOfFolderWhileDrawingCountsForTheNextOne) {
  file("t.html", "(#:move#)(#`in#)");
  file("in.html", "old place");
  file("new/in.html", "new place");
  script().function(L"move", [this](const Arguments& a) {
    put(a[0].pdispVal, L"TemplateFolder", (folder() / "new").wstring());
    put(a[0].pdispVal, L"TemplatePermissionPath", folder().wstring());
    return CComVariant();
  });
  EXPECT_EQ(L"old place", draw_file(L"t")) << "a template inside another lies beside it";
  EXPECT_EQ(L"new place", draw_file(L"in"));
}

TEST_F(TemplateFiles, ThePageSurvivesGivingUpItsLastReferenceWhileItDraws) {
  file("t.html", "a(#:leave#)b(#:v#)");
  CComPtr<IDispatch> held;
  const CComPtr<FakeScript> own = hold_page_that_leaves(held);
  put(held.get(), L"TemplateFolder", folder().wstring());
  put(held.get(), L"TemplateExt", L".html");
  EXPECT_EQ(S_OK, call(held.get(), L"DrawTemplate", L"t").hr);
  own->forget_calls();
  EXPECT_EQ(L"abv", output());
}

TEST_F(TemplateFiles, OneThatDrawsItselfFailsCleanly) {
  file("t.html", "(#`t#)");
  for (const bool cached : {true, false}) {
    put(page(), L"CacheTemplate", cached);
    // "Out of stack space", for which this host has no text.
    EXPECT_EQ(L"<code 800A001C>[(#`t#)]", draw_file(L"t"));
  }
  EXPECT_EQ(L"c", draw(L"(#?#)"));
}

TEST_F(TemplateFiles, LargeOnesAreDrawn) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "(#?#)x";
  file("many.html", text);
  EXPECT_EQ(200000u, draw_file(L"many").size());
}

}  // namespace
}  // namespace test
