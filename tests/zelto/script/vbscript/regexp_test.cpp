// The RegExp object, as the public language reference describes it.
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

class VbRegExp : public VbLibraryTest {
 protected:
  // Of `r`, a RegExp with that pattern that finds all matches in any letter case.
  std::string with(std::wstring_view pattern, std::wstring_view expression) {
    return shown(L"(() => { const r = regexp(); $zelto_vb.let(r, 'Pattern', " + std::wstring(pattern) +
                 L"); $zelto_vb.let(r, 'GLOBAL', true); $zelto_vb.let(r, 'IgnoreCase', true); return " +
                 std::wstring(expression) + L"; })()");
  }
};

TEST_F(VbRegExp, TellsWhetherATextMatches) {
  EXPECT_EQ("Boolean True", with(L"'is.'", L"get(r, 'Test', 'IS1 is2')"));
  EXPECT_EQ("Boolean False", with(L"'^x'", L"get(r, 'Test', 'ax')"));
  EXPECT_EQ("Boolean True", with(L"'a'", L"(get(r, 'Test', 'ba'), get(r, 'Test', 'ba'))"));
  EXPECT_EQ("error 438", with(L"'a'", L"get(r, 'Tset', 'ba')"));
  EXPECT_EQ("error 450", with(L"'a'", L"get(r, 'Test')"));
}

TEST_F(VbRegExp, FindsMatchesWithTheirPlaces) {
  const std::wstring matches = L"get(r, 'Execute', 'IS1 is2 IS3 is4')";
  EXPECT_EQ("Integer 4", with(L"'is.'", L"get(" + matches + L", 'Count')"));
  EXPECT_EQ("String IS3", with(L"'is.'", L"val(ix(" + matches + L", 2))"));
  EXPECT_EQ("Integer 8", with(L"'is.'", L"get(get(" + matches + L", 'Item', 2), 'FirstIndex')"));
  EXPECT_EQ("Integer 3", with(L"'is.'", L"get(ix(" + matches + L", 2), 'Length')"));
  EXPECT_EQ("error 5", with(L"'is.'", L"ix(" + matches + L", 4)"));
  EXPECT_EQ("String IS1is2IS3is4", with(L"'is.'", L"join(array(...each(" + matches + L")), '')"));
  EXPECT_EQ("Integer 4", with(L"'x*'", L"get(get(r, 'Execute', 'axb'), 'Count')"));
}

TEST_F(VbRegExp, HasThePartsOfAMatch) {
  const std::wstring parts = L"get(ix(get(r, 'Execute', 'dragon@xyzzy.com'), 0), 'SubMatches')";
  const std::wstring pattern = L"'(\\\\w+)@(\\\\w+)\\\\.(\\\\w+)(x)?'";
  EXPECT_EQ("String dragon", with(pattern, L"ix(" + parts + L", 0)"));
  EXPECT_EQ("Integer 4", with(pattern, L"get(" + parts + L", 'Count')"));
  EXPECT_EQ("Empty ", with(pattern, L"ix(" + parts + L", 3)"));
}

TEST_F(VbRegExp, Replaces) {
  EXPECT_EQ("String b a d c", with(L"'(\\\\S+)(\\\\s+)(\\\\S+)'", L"get(r, 'Replace', 'a b c d', '$3$2$1')"));
  EXPECT_EQ("String <a><b>", with(L"'[ab]'", L"get(r, 'Replace', 'ab', '<$&>')"));
  EXPECT_EQ("String [a:0][b:1]",
            with(L"'[ab]'", L"get(r, 'Replace', 'ab', (match, index, whole) => `[${match}:${index}]`)"));
}

TEST_F(VbRegExp, TellsWhatIsWrongInAPattern) {
  EXPECT_EQ("error 5020", with(L"'('", L"get(r, 'Test', '')"));
  EXPECT_EQ("error 5019", with(L"'['", L"get(r, 'Test', '')"));
  EXPECT_EQ("error 5018", with(L"'*'", L"get(r, 'Test', '')"));
  EXPECT_EQ("error 5021", with(L"'[b-a]'", L"get(r, 'Test', '')"));
  EXPECT_EQ("error 5017", with(L"'(?<=a)b'", L"get(r, 'Test', '')"));
}

TEST_F(VbRegExp, IsCreatedByItsName) { EXPECT_EQ("IRegExp2", shown(L"create('VBScript.RegExp')")); }

}  // namespace
}  // namespace test
