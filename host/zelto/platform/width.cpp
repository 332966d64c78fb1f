// LCMapStringW: text between half-width and full-width forms.
//
// What the forms are is taken from Unicode's own data: a character of the block "Halfwidth and Fullwidth
// Forms" names the ordinary one, which is the full form of a narrow character and the half form of a wide
// one. Everything else has one form only and stays as it is, also code units that are not characters.
#include <korlib/winapi.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

#include <array>
#include <climits>
#include <cwchar>
#include <string_view>

namespace {

// Both are full-width: the first is what the component asks for, the second what the platform documents.
constexpr unsigned int kFullWidthFlags = 0x80000000u | LCMAP_FULLWIDTH;

constexpr wchar_t kIdeographicSpace = 0x3000;  // the wide form of the space, in a block of its own
constexpr wchar_t kFirstForm = 0xFF01;
constexpr wchar_t kLastForm = 0xFFEE;
constexpr wchar_t kFirstKatakana = 0x30A0;
constexpr wchar_t kLastKatakana = 0x30FF;
constexpr wchar_t kNarrowVoicedMark = 0xFF9E;
constexpr wchar_t kNarrowSemiVoicedMark = 0xFF9F;
constexpr wchar_t kVoicedMark = 0x3099;
constexpr wchar_t kSemiVoicedMark = 0x309A;

constexpr std::size_t code_of(wchar_t c) { return static_cast<std::make_unsigned_t<wchar_t>>(c); }

// Each character's other form; 0 for none. All of them lie in the first plane.
struct Forms {
  std::array<char16_t, 0x10000> full{};
  std::array<char16_t, 0x10000> half{};
  const icu::Normalizer2* canonical = nullptr;
  bool is_complete = false;

  Forms() {
    UErrorCode status = U_ZERO_ERROR;
    canonical = icu::Normalizer2::getNFCInstance(status);
    const icu::Normalizer2* const compatible = icu::Normalizer2::getNFKCInstance(status);
    if (U_FAILURE(status)) return;
    add(*compatible, kIdeographicSpace);
    for (wchar_t form = kFirstForm; form <= kLastForm; ++form) add(*compatible, form);
    is_complete = true;
  }

 private:
  void add(const icu::Normalizer2& compatible, wchar_t form) {
    icu::UnicodeString ordinary;
    if (!compatible.getRawDecomposition(form, ordinary) || ordinary.length() != 1) return;
    const bool is_narrow = u_getIntPropertyValue(form, UCHAR_DECOMPOSITION_TYPE) == U_DT_NARROW;
    auto& to_form = is_narrow ? half : full;
    auto& to_ordinary = is_narrow ? full : half;
    to_form[ordinary[0]] = static_cast<char16_t>(form);
    to_ordinary[code_of(form)] = ordinary[0];
  }
};

wchar_t in(const std::array<char16_t, 0x10000>& forms, wchar_t c) {
  const std::size_t code = code_of(c);
  return code < forms.size() && forms[code] ? forms[code] : c;
}

// Counts what is put, and writes as much of it as there is room for.
class Target {
 public:
  Target(wchar_t* room, std::size_t capacity) : room_(room), capacity_(capacity) {}
  void put(wchar_t c) {
    if (size_ < capacity_) room_[size_] = c;
    ++size_;
  }
  std::size_t size() const { return size_; }

 private:
  wchar_t* room_;
  std::size_t capacity_;
  std::size_t size_ = 0;
};

// A mark after a kana that has a voiced form becomes one character with it.
void put_full(const Forms& forms, std::wstring_view text, Target& target) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t full = in(forms.full, text[i]);
    const wchar_t next = i + 1 < text.size() ? text[i + 1] : 0;
    if (next == kNarrowVoicedMark || next == kNarrowSemiVoicedMark) {
      const UChar32 voiced = forms.canonical->composePair(full, in(forms.full, next));
      if (voiced >= 0) {
        target.put(static_cast<wchar_t>(voiced));
        ++i;
        continue;
      }
    }
    target.put(full);
  }
}

// A voiced kana becomes two characters when its unvoiced one has a half form.
void put_half(const Forms& forms, std::wstring_view text, Target& target) {
  icu::UnicodeString parts;
  for (const wchar_t c : text) {
    const wchar_t half = in(forms.half, c);
    const bool may_be_voiced = half == c && c >= kFirstKatakana && c <= kLastKatakana;
    if (may_be_voiced && forms.canonical->getRawDecomposition(c, parts) && parts.length() == 2) {
      const auto unvoiced = static_cast<wchar_t>(parts[0]);
      const auto mark = static_cast<wchar_t>(parts[1]);
      const wchar_t half_unvoiced = in(forms.half, unvoiced);
      if (half_unvoiced != unvoiced && (mark == kVoicedMark || mark == kSemiVoicedMark)) {
        target.put(half_unvoiced);
        target.put(in(forms.half, mark));
        continue;
      }
    }
    target.put(half);
  }
}

}  // namespace

extern "C" int LCMapStringW(unsigned int, unsigned int flags, const wchar_t* source, int source_length, wchar_t* target,
                            int target_length) {
  static_assert(sizeof(wchar_t) == sizeof(UChar32));
  if (!source) return 0;
  const std::size_t length = source_length < 0 ? std::wcslen(source) : static_cast<std::size_t>(source_length);
  if (length > INT_MAX / 2) return 0;
  static const Forms forms;
  if (!forms.is_complete || !(flags & (kFullWidthFlags | LCMAP_HALFWIDTH))) return 0;

  const bool is_query = !target || target_length < 1;
  Target mapped(target, is_query ? 0 : static_cast<std::size_t>(target_length));
  const auto put = flags & kFullWidthFlags ? put_full : put_half;
  put(forms, {source, length}, mapped);
  const bool fits = is_query || mapped.size() <= static_cast<std::size_t>(target_length);
  return fits ? static_cast<int>(mapped.size()) : 0;
}
