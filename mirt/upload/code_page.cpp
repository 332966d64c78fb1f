#include "upload/code_page.h"

#include <algorithm>

#include <korlib/hresult.h>
#include <korlib/text.h>

#include "frame/host.h"

namespace {

constexpr UINT kUtf8 = 65001;

using Convert = decltype(codepage_utf32);

bool is_ascii(std::string_view bytes) {
  return std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::size_t convert(UINT code_page, std::string_view bytes, wchar_t* out, std::size_t capacity) {
  static Convert* const of_host = mirt::host_function<Convert>("codepage_utf32");
  if (code_page == kUtf8 || (!of_host && is_ascii(bytes))) {
    return utf8_utf32(bytes.data(), bytes.size(), out, capacity);
  }
  return of_host ? of_host(code_page, bytes.data(), bytes.size(), out, capacity) : kUnknownCodePage;
}

}  // namespace

HRESULT bytes_to_text(std::string_view bytes, UINT code_page, CComBSTR* text) {
  bytes = bytes.substr(0, bytes.find('\0'));
  const std::size_t length = convert(code_page, bytes, nullptr, 0);
  if (length == kUnknownCodePage) return E_FAIL;
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return E_OUTOFMEMORY;
  text->attach(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
  if (!text->get()) return E_OUTOFMEMORY;
  convert(code_page, bytes, text->get(), length);
  return S_OK;
}
