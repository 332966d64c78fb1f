#include "text/charset.h"

#include <korlib/text.h>
#include <korlib_host/errors.h>

#include <algorithm>
#include <array>
#include <new>

#include "base/converter.h"

namespace zelto {

namespace {

struct CodePage {
  LONG number;
  const char* charset;
};

// The code pages whose web name is not "windows-" and their number.
constexpr std::array kCodePages{
    CodePage{65001, "utf-8"},       CodePage{932, "shift_jis"},     CodePage{936, "gb2312"},
    CodePage{949, "euc-kr"},        CodePage{950, "big5"},          CodePage{20127, "us-ascii"},
    CodePage{28591, "iso-8859-1"},  CodePage{28592, "iso-8859-2"},  CodePage{28605, "iso-8859-15"},
    CodePage{51932, "euc-jp"},      CodePage{50220, "iso-2022-jp"}, CodePage{54936, "gb18030"},
    CodePage{20866, "koi8-r"},      CodePage{1250, "windows-1250"}, CodePage{1251, "windows-1251"},
    CodePage{1252, "windows-1252"}, CodePage{1253, "windows-1253"}, CodePage{1254, "windows-1254"},
    CodePage{1255, "windows-1255"}, CodePage{1256, "windows-1256"}, CodePage{1257, "windows-1257"},
    CodePage{1258, "windows-1258"}, CodePage{874, "windows-874"},
};

// A converter keeps state, so each thread has its own; opening one is expensive.
UConverter* converter_for(LONG code_page) {
  thread_local LONG open_page = 0;
  thread_local base::Converter converter;
  if (open_page != code_page) {
    const auto charset = charset_of(code_page);
    converter = charset ? base::open_converter(*charset) : nullptr;
    open_page = code_page;
  }
  return converter.get();
}

}  // namespace

std::optional<std::string> charset_of(LONG code_page) {
  const auto row = std::ranges::find(kCodePages, code_page, &CodePage::number);
  if (row == kCodePages.end()) return std::nullopt;
  return row->charset;
}

HRESULT check_code_page(std::wstring_view source, LONG code_page) {
  return charset_of(code_page) ? S_OK : korlib::raise(E_INVALIDARG, source, L"CodePage: no such code page.");
}

std::wstring decode(LONG code_page, std::string_view bytes) {
  if (code_page == kUtf8CodePage) return to_wide(bytes);
  const auto page = static_cast<UINT>(code_page);
  const std::size_t length = codepage_utf32(page, bytes.data(), bytes.size(), nullptr, 0);
  if (length == kUnknownCodePage && charset_of(code_page)) throw std::bad_alloc();  // its converter could not be had
  if (length == kUnknownCodePage) return to_wide(bytes);
  std::wstring out(length, L'\0');
  codepage_utf32(page, bytes.data(), bytes.size(), out.data(), out.size());
  return out;
}

std::string encode(LONG code_page, std::wstring_view text) {
  if (code_page == kUtf8CodePage) return to_utf8(text);
  UConverter* converter = converter_for(code_page);
  if (!converter) return to_utf8(text);
  const std::u16string units = korlib::to_utf16(text);
  UErrorCode status = U_ZERO_ERROR;
  const auto length = static_cast<int32_t>(units.size());
  const int32_t size = ucnv_fromUChars(converter, nullptr, 0, units.data(), length, &status);
  base::check_memory(status);
  std::string out(static_cast<std::size_t>(size), '\0');
  status = U_ZERO_ERROR;
  ucnv_fromUChars(converter, out.data(), size, units.data(), length, &status);
  base::check_memory(status);
  return out;
}

bool encodes(LONG code_page, wchar_t character) {
  if (code_page == kUtf8CodePage || character < 0x80) return true;
  const std::wstring_view one(&character, 1);
  return decode(code_page, encode(code_page, one)) == one;
}

}  // namespace zelto
