// Text as a locale writes it: dates, and the decimal mark of numbers. Scripts name a locale by its LCID,
// 1041 for Japanese in Japan.
#pragma once

#include <korlib/types.h>

#include <memory>
#include <string>
#include <string_view>

namespace zelto {

// The neutral form, 2001-02-03 04:05:06 and 1.5: what sessions and pages start with. The numbers 1024 (the user's
// default) and 127 (invariant) ask for it as well.
inline constexpr LONG kNeutralLocale = 2048;

// Whether the number is one of those three or that of a locale that ICU knows.
bool is_locale(LONG lcid);
// What the web calls it, "de-DE"; English for the neutral form, and nothing for an unknown number. And back: 0 where
// there is none.
std::string locale_tag(LONG lcid);
LONG locale_number(const std::string& tag);
// Fails with a message that names the number, for a member of `source` that is given another.
HRESULT check_locale(std::wstring_view source, LONG lcid);

// Of one locale. Belongs to its thread.
class LocaleText {
 public:
  // Null for the neutral form and for an unknown number. The answer is valid until the thread asks for another
  // locale; making one is expensive.
  static const LocaleText* of(LONG lcid);

  explicit LocaleText(const char* name);
  ~LocaleText();
  LocaleText(const LocaleText&) = delete;
  LocaleText& operator=(const LocaleText&) = delete;

  // A DATE as the locale's short date with all digits of the year, and its time to the second: without the
  // time at midnight, without the day on day zero. In the locale's calendar; of the Gregorian one no day
  // is ever Julian.
  std::wstring date(double date) const;

  // A number in its neutral form, with the locale's decimal mark. Digits are not grouped.
  std::wstring number(std::wstring_view neutral) const;

 private:
  struct Formats;
  std::unique_ptr<Formats> formats_;
};

}  // namespace zelto
