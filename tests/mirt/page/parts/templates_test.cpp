#include "page/templates.h"

#include "mirt/page/parts/parts_fixture.h"
#include "support/temporary_folder.h"

namespace test {
namespace {

class Templates : public PartsTest {
 protected:
  Templates() {
    templates_.folder = CComBSTR(std::wstring_view(folder_.wide()));
    templates_.extension = CComBSTR(L".html");
    // A mark draws the file of its name.
    engine_.on_mark = [this](const Mark& mark) { return templates_.draw(mark.name); };
  }
  std::wstring draw(std::wstring_view name) {
    const HRESULT hr = templates_.draw(name);
    const std::wstring text = drawn();
    return FAILED(hr) ? take_error().description : text;
  }

  TemporaryFolder folder_;
  std::function<HRESULT(bool& is_drawn)> instead_ = [](bool&) { return S_OK; };
  page::Templates templates_{engine_, [this](bool& is_drawn) { return instead_(is_drawn); }};
};

TEST_F(Templates, AreDrawnFreshOrFromTheCache) {
  folder_.write("a.html", "a(#b#)c");
  folder_.write("b.html", "<b>");
  for (const bool cached : {true, true, false}) {
    templates_.are_cached = cached;
    EXPECT_EQ(L"a<b>c", draw(L"a"));
  }
}

TEST_F(Templates, LieBesideTheOneThatDrawsThem) {
  folder_.write("parts/a.html", "(#b#)(#/b#)");
  folder_.write("b.html", "folder");
  folder_.write("parts/b.html", "beside");
  // The path is composed with the folder's own separators, of which only the last backslash counts.
  EXPECT_EQ(L"folder", draw(L"b"));
  EXPECT_EQ(L"besidebeside", draw(L"parts\\a"));
  EXPECT_EQ(L"folder", draw(L"b")) << "the path is put back";
}

TEST_F(Templates, AreRefusedOutsideTheirFolders) {
  folder_.write("tpl/a.html", "a");
  folder_.write("secret.html", "secret");
  templates_.folder = CComBSTR(std::wstring_view(folder_.wide("tpl")));
  EXPECT_EQ(L"a", draw(L"a"));
  EXPECT_EQ(L"Template file can't obtain.[" + folder_.wide("secret.html") + L"]", draw(L"..\\secret"));
  templates_.permission_path = CComBSTR(std::wstring_view(folder_.wide()));
  EXPECT_EQ(L"secret", draw(L"..\\secret"));
  templates_.permission_path.reset();
  templates_.folder.reset();
  EXPECT_TRUE(draw(L"/" + folder_.wide("tpl/a")).starts_with(L"Template file can't obtain.["));
}

TEST_F(Templates, ThatCannotBeReadGiveWayToWhatIsDrawnInstead) {
  std::filesystem::create_directories(folder_.path("broken.html"));
  EXPECT_EQ(L"Template file can't read.[" + folder_.wide("broken.html") + L"]", draw(L"broken"));
  folder_.write("other.html", "other");
  instead_ = [this](bool& is_drawn) {
    is_drawn = true;
    return templates_.draw(L"other");
  };
  EXPECT_EQ(L"other", draw(L"broken"));
  instead_ = [](bool&) { return E_ABORT; };
  EXPECT_EQ(E_ABORT, templates_.draw(L"broken"));
}

TEST_F(Templates, AreReadInTheirCharacterSet) {
  folder_.write("a.html", "\xE9");
  templates_.charset = CComBSTR(L"ISO-8859-1");
  EXPECT_EQ(L"\u00e9", draw(L"a"));
}

}  // namespace
}  // namespace test
