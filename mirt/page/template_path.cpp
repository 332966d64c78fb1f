#include "page/template_path.h"

#include <algorithm>
#include <array>
#include <string>

#include <korlib/winapi.h>

#include "page/text.h"

namespace page {
namespace {

// A host may fill MAX_PATH characters and put the NUL after them.
constexpr std::size_t kPathCapacity = 4 * MAX_PATH;

bool is_separator(wchar_t c) { return c == L'\\' || c == L'/'; }

std::wstring_view directory_of(std::wstring_view path) {
  const std::size_t at = path.rfind(L'\\');
  return at == std::wstring_view::npos ? std::wstring_view() : path.substr(0, at + 1);
}

}  // namespace

CComBSTR compose_path(std::wstring_view current, std::wstring_view folder, std::wstring_view name,
                      std::wstring_view extension) {
  if (!name.empty() && is_separator(name.front())) name.remove_prefix(1);
  if (!current.empty()) return join({directory_of(current), name, extension});
  const bool needs_separator = !folder.empty() && folder.back() != L'\\';
  return join({folder, needs_separator ? L"\\" : L"", name, extension});
}

HRESULT ConvertToCanonicalizedPath(std::wstring_view path, CComBSTR& out) {
  // The file system would end the path at a NUL, and the extension after it would be lost.
  if (path.find(L'\0') != std::wstring_view::npos) return E_FAIL;
  std::wstring source(path);
  std::replace(source.begin(), source.end(), L'/', L'\\');
  std::array<wchar_t, kPathCapacity> target{};
  if (!PathCanonicalizeW(target.data(), source.c_str())) return E_FAIL;
  target.back() = L'\0';
  out = join({out.view(), target.data()});
  return out ? S_OK : E_OUTOFMEMORY;
}

bool CanPathObtain(std::wstring_view path, std::wstring_view permitted, std::wstring_view folder) {
  const std::wstring_view base = permitted.empty() ? folder : permitted;
  if (base.empty()) return false;
  CComBSTR canonical;
  std::wstring prefix(SUCCEEDED(ConvertToCanonicalizedPath(base, canonical)) && !canonical.empty() ? canonical.view()
                                                                                                   : base);
  if (prefix.back() != L'\\') prefix += L'\\';
  if (path.size() < prefix.size()) return false;
  return _wcsnicmp(std::wstring(path).c_str(), prefix.c_str(), prefix.size()) == 0;
}

}  // namespace page
