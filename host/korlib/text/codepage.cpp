// Windows code pages over ICU.
#include <korlib/text.h>

#include <unicode/ucnv_cb.h>
#include <unicode/utf16.h>

#include <array>
#include <string>
#include <vector>

#include "base/converter.h"

namespace {

struct NamedPage {
  UINT number;
  const char* converter;
};

// The numbers whose converter is not called "windows-" or "ibm-" and the number.
constexpr NamedPage kNamedPages[] = {
    {932, "ibm-943_P15A-2003"}, {936, "windows-936-2000"}, {1200, "UTF-16LE"},     {1201, "UTF-16BE"},
    {10000, "macintosh"},       {12000, "UTF-32LE"},       {12001, "UTF-32BE"},    {20127, "US-ASCII"},
    {20866, "KOI8-R"},          {20932, "EUC-JP"},         {21866, "KOI8-U"},      {50220, "ISO-2022-JP"},
    {50221, "ISO-2022-JP"},     {50222, "ISO-2022-JP"},    {50225, "ISO-2022-KR"}, {51932, "EUC-JP"},
    {51936, "GB2312"},          {51949, "EUC-KR"},         {52936, "HZ-GB-2312"},  {54936, "GB18030"},
    {65000, "UTF-7"},
};
constexpr UINT kUtf8 = 65001;
constexpr UINT kLatinFirst = 28591;  // ISO-8859-1
constexpr UINT kLatinLast = 28605;   // ISO-8859-15

using base::Converter;

// ICU would write a control character for some pages' undefined bytes.
void replace_undefined(const void*, UConverterToUnicodeArgs* arguments, const char*, std::int32_t,
                       UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;  // a reset or the end, and no bytes
  constexpr UChar kReplacement = 0xFFFD;
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(arguments, &kReplacement, 1, 0, status);
}

Converter open_named(const std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &status));
  if (U_FAILURE(status)) return nullptr;
  ucnv_setToUCallBack(converter.get(), replace_undefined, nullptr, nullptr, nullptr, &status);
  return converter;
}

Converter open_page(UINT code_page) {
  for (const NamedPage& page : kNamedPages) {
    if (page.number == code_page) return open_named(page.converter);
  }
  const std::string number = std::to_string(code_page);
  if (code_page >= kLatinFirst && code_page <= kLatinLast) {
    return open_named("ISO-8859-" + std::to_string(code_page - kLatinFirst + 1));
  }
  if (Converter windows = open_named("windows-" + number)) return windows;
  return open_named("ibm-" + number);
}

// Opening a converter costs far more than using it, and one is not for two threads at a time.
UConverter* converter_for(UINT code_page) {
  struct Entry {
    UINT code_page;
    Converter converter;
  };
  constexpr std::size_t kKept = 8;
  thread_local std::vector<Entry> kept;
  for (const Entry& entry : kept) {
    if (entry.code_page == code_page) return entry.converter.get();
  }
  Converter converter = open_page(code_page);
  if (!converter) return nullptr;
  if (kept.size() == kKept) kept.erase(kept.begin());
  kept.push_back({code_page, std::move(converter)});
  return kept.back().converter.get();
}

// Collects UTF-16 units into characters; a pair may arrive in two pieces.
class Utf32Writer {
 public:
  Utf32Writer(wchar_t* out, std::size_t capacity) : out_(out), capacity_(capacity) {}

  void unit(UChar u) {
    if (lead_ && U16_IS_TRAIL(u)) {
      put(static_cast<char32_t>(U16_GET_SUPPLEMENTARY(lead_, u)));
      lead_ = 0;
      return;
    }
    flush();
    if (U16_IS_LEAD(u)) {
      lead_ = u;
    } else {
      put(U16_IS_TRAIL(u) ? U'\xFFFD' : char32_t{u});
    }
  }
  void flush() {
    if (lead_) put(U'\xFFFD');
    lead_ = 0;
  }
  std::size_t needed() const { return needed_; }

 private:
  void put(char32_t character) {
    if (needed_ < capacity_) out_[needed_] = static_cast<wchar_t>(character);
    ++needed_;
  }

  wchar_t* out_;
  std::size_t capacity_;
  std::size_t needed_ = 0;
  UChar lead_ = 0;
};

}  // namespace

std::size_t codepage_utf32(UINT code_page, const char* bytes, std::size_t length, wchar_t* out,
                           std::size_t capacity) try {
  if (code_page == kUtf8) return utf8_utf32(bytes, length, out, capacity);
  UConverter* const converter = converter_for(code_page);
  if (!converter) return kUnknownCodePage;
  ucnv_resetToUnicode(converter);

  Utf32Writer writer(out, capacity);
  std::array<UChar, 1024> units;
  const char* at = bytes;
  const char* const end = bytes + length;
  UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
  while (status == U_BUFFER_OVERFLOW_ERROR) {
    status = U_ZERO_ERROR;
    UChar* filled = units.data();
    ucnv_toUnicode(converter, &filled, units.data() + units.size(), &at, end, nullptr, /*flush=*/true, &status);
    for (const UChar* unit = units.data(); unit != filled; ++unit) writer.unit(*unit);
  }
  writer.flush();
  return writer.needed();
} catch (...) {
  return kUnknownCodePage;
}
