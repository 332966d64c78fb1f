#include "text/locale.h"

#include <korlib_host/errors.h>
#include <korlib_host/unicode.h>
#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <array>
#include <new>
#include <optional>

#include "base/serial_date.h"

namespace zelto {

namespace {

constexpr LONG kInvariantLocale = 127;
constexpr LONG kUserLocale = 1024;
constexpr double kBeforeAllDates = -1e17;  // milliseconds

using LocaleName = std::array<char, ULOC_FULLNAME_CAPACITY>;
using Units = std::array<UChar, 128>;

bool is_neutral(LONG lcid) { return lcid == kNeutralLocale || lcid == kInvariantLocale || lcid == kUserLocale; }

// ICU reads a number that it does not know as its low bits, the language: only one that comes back is known.
bool find_name(LONG lcid, LocaleName& name) {
  if (lcid <= 0) return false;
  const auto number = static_cast<uint32_t>(lcid);
  UErrorCode status = U_ZERO_ERROR;
  uloc_getLocaleForLCID(number, name.data(), static_cast<int32_t>(name.size()), &status);
  return U_SUCCESS(status) && uloc_getLCID(name.data()) == number;
}

struct CloseDateFormat {
  void operator()(UDateFormat* format) const { udat_close(format); }
};
using DateFormat = std::unique_ptr<UDateFormat, CloseDateFormat>;

// A DATE is local time already, which this zone leaves alone.
DateFormat open_format(const char* name, UDateFormatStyle time, UDateFormatStyle date) {
  UErrorCode status = U_ZERO_ERROR;
  DateFormat format(udat_open(time, date, name, u"UTC", -1, nullptr, 0, &status));
  if (U_FAILURE(status)) throw std::bad_alloc();
  return format;
}

// "M/d/yy" becomes "M/d/yyyy".
std::u16string with_whole_year(std::u16string_view pattern) {
  std::u16string out;
  bool is_quoted = false;
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    if (pattern[at] == u'\'') is_quoted = !is_quoted;
    if (is_quoted || pattern[at] != u'y') {
      out += pattern[at];
      continue;
    }
    while (at + 1 < pattern.size() && pattern[at + 1] == u'y') ++at;
    out += u"yyyy";
  }
  return out;
}

DateFormat open_day(const char* name) {
  DateFormat day = open_format(name, UDAT_NONE, UDAT_SHORT);
  Units units;
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length = udat_toPattern(day.get(), false, units.data(), units.size(), &status);
  if (U_FAILURE(status)) return day;
  const std::u16string pattern = with_whole_year({units.data(), static_cast<std::size_t>(length)});
  udat_applyPattern(day.get(), false, pattern.data(), static_cast<int32_t>(pattern.size()));
  if (UCalendar* calendar = ucal_clone(udat_getCalendar(day.get()), &status)) {
    ucal_setGregorianChange(calendar, kBeforeAllDates, &status);
    if (U_SUCCESS(status)) udat_setCalendar(day.get(), calendar);
    ucal_close(calendar);
  }
  return day;
}

std::u16string decimal_mark(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  UNumberFormat* format = unum_open(UNUM_DECIMAL, nullptr, 0, name, nullptr, &status);
  Units units;
  const int32_t length = unum_getSymbol(format, UNUM_DECIMAL_SEPARATOR_SYMBOL, units.data(), units.size(), &status);
  unum_close(format);
  if (U_FAILURE(status)) return u".";
  return {units.data(), static_cast<std::size_t>(length)};
}

void append_formatted(const UDateFormat* format, double milliseconds, std::wstring& text) {
  Units units;
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length = udat_format(format, milliseconds, units.data(), units.size(), nullptr, &status);
  if (U_FAILURE(status)) return;
  for (UChar& unit : units) {
    if (unit == u'\u202F') unit = u' ';  // between time and "AM"; few code pages have it
  }
  korlib::append_utf16(text, {units.data(), static_cast<std::size_t>(length)});
}

}  // namespace

struct LocaleText::Formats {
  explicit Formats(const char* name) : day(open_day(name)), time(open_format(name, UDAT_MEDIUM, UDAT_NONE)) {
    korlib::append_utf16(mark, decimal_mark(name));
  }
  DateFormat day;
  DateFormat time;
  std::wstring mark;
};

bool is_locale(LONG lcid) {
  LocaleName name;
  return is_neutral(lcid) || find_name(lcid, name);
}

std::string locale_tag(LONG lcid) {
  LocaleName name;
  if (is_neutral(lcid)) return "en-US";
  if (!find_name(lcid, name)) return {};
  LocaleName tag;
  UErrorCode status = U_ZERO_ERROR;
  uloc_toLanguageTag(name.data(), tag.data(), static_cast<int32_t>(tag.size()), false, &status);
  return U_SUCCESS(status) ? std::string(tag.data()) : std::string();
}

LONG locale_number(const std::string& tag) {
  LocaleName name;
  UErrorCode status = U_ZERO_ERROR;
  uloc_forLanguageTag(tag.c_str(), name.data(), static_cast<int32_t>(name.size()), nullptr, &status);
  return U_SUCCESS(status) ? static_cast<LONG>(uloc_getLCID(name.data())) : 0;
}

HRESULT check_locale(std::wstring_view source, LONG lcid) {
  if (is_locale(lcid)) return S_OK;
  return korlib::raise(
      E_INVALIDARG, source,
      L"LCID: " + std::to_wstring(lcid) + L" is not a locale that this host knows; 2048 is the neutral form.");
}

const LocaleText* LocaleText::of(LONG lcid) {
  thread_local LONG current = kNeutralLocale;
  thread_local std::optional<LocaleText> text;
  if (current != lcid) {
    LocaleName name;
    text.reset();
    current = kNeutralLocale;  // in case what follows throws
    if (!is_neutral(lcid) && find_name(lcid, name)) text.emplace(name.data());
    current = lcid;
  }
  return text ? &*text : nullptr;
}

LocaleText::LocaleText(const char* name) : formats_(std::make_unique<Formats>(name)) {}
LocaleText::~LocaleText() = default;

std::wstring LocaleText::date(double date) const {
  const auto [day, second] = base::nearest_second(date);
  const double milliseconds = ((static_cast<double>(day) - base::kDaysTo1970) * base::kSecondsPerDay + second) * 1000;
  std::wstring text;
  if (day != 0) append_formatted(formats_->day.get(), milliseconds, text);
  if (day != 0 && second != 0) text += L' ';
  if (day == 0 || second != 0) append_formatted(formats_->time.get(), milliseconds, text);
  return text;
}

std::wstring LocaleText::number(std::wstring_view neutral) const {
  std::wstring text(neutral);
  if (const std::size_t point = text.find(L'.'); point != std::wstring::npos) text.replace(point, 1, formats_->mark);
  return text;
}

}  // namespace zelto
