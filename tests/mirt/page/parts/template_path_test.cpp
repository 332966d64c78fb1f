#include "page/template_path.h"

#include <gtest/gtest.h>

namespace test {
namespace {

TEST(TemplatePath, ComposesFolderNameAndExtension) {
  const struct {
    const wchar_t *current, *folder, *name, *extension, *path;
  } cases[] = {
      {L"", L"C:\\site\\tpl", L"list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl\\", L"list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl", L"/list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl", L"\\list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl", L"//list", L"", L"C:\\site\\tpl\\/list"},
      {L"", L"/site/tpl/", L"list", L".html", L"/site/tpl/\\list.html"},
      {L"", L"", L"list", L".html", L"list.html"},
      {L"", L"", L"", L"", L""},
      {L"", L"d", L"", L"html", L"d\\html"},
      {L"C:\\site\\tpl\\parts\\a.html", L"C:\\site\\tpl", L"b", L".html", L"C:\\site\\tpl\\parts\\b.html"},
      {L"C:\\site\\tpl\\parts\\a.html", L"", L"/b", L".html", L"C:\\site\\tpl\\parts\\b.html"},
      {L"/site/tpl/a.html", L"/site/tpl", L"b", L".html", L"b.html"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(row.path, page::compose_path(row.current, row.folder, row.name, row.extension).view());
}

TEST(TemplatePath, IsPermittedBelowItsBaseInAnyCase) {
  const struct {
    const wchar_t *path, *permitted, *folder;
    bool allowed;
  } cases[] = {
      {L"/nowhere/tpl/a", L"", L"/nowhere/tpl", true},
      {L"/nowhere/TPL/a", L"", L"/Nowhere/tpl", true},
      {L"/nowhere/tpl", L"", L"/nowhere/tpl", false},
      {L"/nowhere/tplx/a", L"", L"/nowhere/tpl", false},
      {L"/nowhere/a", L"", L"/nowhere/tpl", false},
      {L"/nowhere/a", L"/nowhere", L"/nowhere/tpl", true},
      {L"/nowhere/tpl/a", L"/else", L"/nowhere", false},
      {L"/nowhere/a", L"", L"", false},
      {L"", L"", L"/nowhere", false},
      {L"\\nowhere\\a", L"", L"/nowhere\\", true},
      {L"/nowhere/a", L"/", L"", false},
  };
  for (const auto& row : cases)
    EXPECT_EQ(row.allowed, page::CanPathObtain(row.path, row.permitted, row.folder))
        << testing::PrintToString(std::wstring(row.path));
}

TEST(TemplatePath, AppendsTheCanonicalFormAndRefusesANul) {
  CComBSTR out;
  EXPECT_EQ(S_OK, page::ConvertToCanonicalizedPath(L"/", out));
  EXPECT_EQ(L"/", out.view());
  CComBSTR begun(L"path: ");
  EXPECT_EQ(S_OK, page::ConvertToCanonicalizedPath(L"\\.\\", begun));
  EXPECT_EQ(L"path: /", begun.view());
  EXPECT_EQ(E_FAIL, page::ConvertToCanonicalizedPath({L"/\0.html", 7}, out));
  EXPECT_EQ(E_FAIL, page::ConvertToCanonicalizedPath(L"/no such folder/no such file", out));
  EXPECT_EQ(L"/", out.view());
  EXPECT_EQ(E_FAIL, page::ConvertToCanonicalizedPath(std::wstring(5000, L'a'), out));
}

}  // namespace
}  // namespace test
