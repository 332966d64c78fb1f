// LCMapStringW: text between half-width and full-width forms.
#include <korlib/winapi.h>
#include <unicode/translit.h>

#include <climits>
#include <memory>
#include <string>
#include <string_view>

namespace {

// Both are full-width: the first is what the component asks for, the second what the platform documents.
constexpr unsigned int kFullWidthFlags = 0x80000000u | LCMAP_FULLWIDTH;

using Mapping = std::unique_ptr<icu::Transliterator>;

Mapping open_mapping(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  return Mapping(icu::Transliterator::createInstance(name, UTRANS_FORWARD, status));  // null on failure
}

// A transliterator keeps state while it works, so each thread has its own.
const icu::Transliterator* mapping_for(unsigned int flags) {
  if (flags & kFullWidthFlags) {
    thread_local const Mapping full = open_mapping("Halfwidth-Fullwidth");
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): it lives as long as the thread
    return full.get();
  }
  if (flags & LCMAP_HALFWIDTH) {
    thread_local const Mapping half = open_mapping("Fullwidth-Halfwidth");
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): it lives as long as the thread
    return half.get();
  }
  return nullptr;
}

std::wstring to_wide_text(const icu::UnicodeString& text) {
  std::wstring wide;
  wide.reserve(static_cast<std::size_t>(text.length()));
  for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) wide += static_cast<wchar_t>(text.char32At(i));
  return wide;
}

}  // namespace

extern "C" int LCMapStringW(unsigned int, unsigned int flags, const wchar_t* source, int source_length, wchar_t* target,
                            int target_length) {
  static_assert(sizeof(wchar_t) == sizeof(UChar32));
  if (!source) return 0;
  const std::size_t length = source_length < 0 ? std::wcslen(source) : static_cast<std::size_t>(source_length);
  if (length > INT_MAX / 2) return 0;
  const icu::Transliterator* mapping = mapping_for(flags);
  if (!mapping) return 0;
  icu::UnicodeString text =
      icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(source), static_cast<int32_t>(length));
  mapping->transliterate(text);
  const std::wstring mapped = to_wide_text(text);
  const int size = static_cast<int>(mapped.size());
  if (!target || target_length < 1) return size;
  if (target_length < size) return 0;
  mapped.copy(target, mapped.size());
  return size;
}
