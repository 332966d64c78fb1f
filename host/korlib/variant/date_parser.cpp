#include "variant/date_parser.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

#include "base/ascii.h"
#include "base/serial_date.h"
#include "variant/number_parser.h"

namespace korlib::variants {

namespace {

using namespace std::string_view_literals;

constexpr int kFirstYear = 100;
constexpr int kHour = 3600;

constexpr std::array kMonths = {"january"sv, "february"sv, "march"sv,     "april"sv,   "may"sv,      "june"sv,
                                "july"sv,    "august"sv,   "september"sv, "october"sv, "november"sv, "december"sv};
constexpr std::array kWeekdays = {"monday"sv, "tuesday"sv,  "wednesday"sv, "thursday"sv,
                                  "friday"sv, "saturday"sv, "sunday"sv};
struct Zone {
  std::string_view name;
  int hours;
  bool is_base;  // an offset may follow
};
constexpr Zone kZones[] = {{"gmt", 0, true},   {"utc", 0, true},   {"ut", 0, true},    {"z", 0, false},
                           {"est", -5, false}, {"edt", -4, false}, {"cst", -6, false}, {"cdt", -5, false},
                           {"mst", -7, false}, {"mdt", -6, false}, {"pst", -8, false}, {"pdt", -7, false}};

// The place, from 1, of the name that `word` is or begins with at least three letters; 0 for none.
template <std::size_t count>
int place_of(const std::array<std::string_view, count>& names, std::string_view word) {
  if (word.size() < 3) return 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (names[i].starts_with(word)) return static_cast<int>(i) + 1;
  }
  return 0;
}

struct Number {
  int value = 0;
  std::size_t digits = 0;
  bool is_short() const { return digits == 1 || digits == 2; }
};

// The year that a number stands for; 0 for none.
int year_of(const Number& number) {
  if (number.digits == 4) return number.value >= kFirstYear ? number.value : 0;
  if (number.digits != 2) return 0;
  return number.value + (number.value < 30 ? 2000 : 1900);
}

std::optional<int> day_of(int year, int month, int day) {
  const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(day)}};
  if (year < kFirstYear || !date.ok()) return std::nullopt;
  return static_cast<int>((std::chrono::sys_days{date} - base::kDayZero).count());
}

struct DateParts {
  std::optional<int> day;     // days since 1899-12-30
  double seconds = 0;         // of the day
  std::optional<int> offset;  // what the text's clock is ahead of UTC, in seconds; none: local time
};

// Reads item after item; once something does not fit it stops.
class DateParser {
 public:
  // `this_year` is the year of a date that names none.
  DateParser(std::wstring_view text, int this_year) : rest_(text), this_year_(this_year) {}

  // Nothing for text that is not a date.
  std::optional<DateParts> parse() {
    while (!rest_.empty()) {
      if (!skip_gaps() || (!rest_.empty() && !read_item())) return std::nullopt;
    }
    if (month_ ? !read_named_date() : loose_count_ != 0) return std::nullopt;
    // A time of an unknown day has no place in another zone.
    if (parts_.offset ? !parts_.day : !parts_.day && !has_time_) return std::nullopt;
    return parts_;
  }

 private:
  enum class Item { none, number, month, date, time, zone, weekday };

  wchar_t at(std::size_t place) const { return place < rest_.size() ? rest_[place] : L'\0'; }

  bool take(wchar_t wanted) {
    if (at(0) != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // Blanks, commas, and what stands in parentheses. False for a parenthesis that is not closed.
  bool skip_gaps() {
    std::size_t depth = 0;
    for (; !rest_.empty(); rest_.remove_prefix(1)) {
      const wchar_t c = at(0);
      if (depth == 0 && c != L'(' && c != L',' && !is_blank(c)) return true;
      if (c == L'(') ++depth;
      if (c == L')') --depth;
    }
    return depth == 0;
  }

  // More digits than a year has are read, to be refused.
  Number read_number() {
    Number number;
    while (base::is_digit(at(0)) && number.digits < 5) {
      number.value = number.value * 10 + static_cast<int>(at(0) - L'0');
      ++number.digits;
      rest_.remove_prefix(1);
    }
    return number;
  }

  // In lower case.
  std::string read_word() {
    std::string word;
    for (; base::is_letter(at(0)); rest_.remove_prefix(1)) word += static_cast<char>(base::ascii_lower(at(0)));
    return word;
  }

  bool read_item() {
    if (base::is_digit(at(0))) return read_from_number();
    const bool follows_time = last_ == Item::time || last_ == Item::zone;
    if (follows_time && (at(0) == L'+' || at(0) == L'-')) return read_offset();
    // "4-Jul-2030": the dash between a day, a month's name and a year.
    if (take(L'-')) return (last_ == Item::number || last_ == Item::month) && at(0) != L'-' && read_item();
    return read_from_word();
  }

  bool read_from_number() {
    const Number number = read_number();
    if (at(0) == L':') return read_time(number);
    const bool has_separator = at(0) == L'/' || (at(0) == L'-' && !month_);
    if (has_separator && base::is_digit(at(1))) return read_date(number);
    if (loose_count_ == loose_.size()) return false;
    loose_[loose_count_++] = number;
    last_ = Item::number;
    return true;
  }

  bool read_from_word() {
    const std::string word = read_word();
    if (word.empty()) return false;
    if (word == "am" || word == "pm") return read_half(word == "pm");
    if (word == "t" && last_ == Item::date) return base::is_digit(at(0));
    if (const int month = place_of(kMonths, word)) return read_month(month);
    if (place_of(kWeekdays, word)) return read_weekday();
    for (const Zone& zone : kZones) {
      if (zone.name == word) return read_zone(zone);
    }
    return false;
  }

  bool read_month(int month) {
    if (month_ || parts_.day) return false;
    month_ = month;
    last_ = Item::month;
    return true;
  }

  // It is not compared with the date: who computes it wrong means the date.
  bool read_weekday() {
    if (has_weekday_) return false;
    has_weekday_ = true;
    last_ = Item::weekday;
    return true;
  }

  // What begins with four digits begins with the year, anything else with the month.
  bool read_date(const Number& first) {
    if (parts_.day || month_) return false;
    const wchar_t separator = at(0);
    take(separator);
    const Number second = read_number();
    const bool has_third = at(0) == separator && base::is_digit(at(1));
    if (has_third) take(separator);
    const Number third = has_third ? read_number() : Number{};
    last_ = Item::date;
    if (first.digits == 4) {
      if (second.is_short() && third.is_short()) parts_.day = day_of(first.value, second.value, third.value);
    } else if (first.is_short() && second.is_short()) {
      // Only a day can be above 12. With a year of two digits it could also be the year.
      const bool is_day_first = first.value > 12 && third.digits == 4;
      const int year = has_third ? year_of(third) : this_year_;
      parts_.day = is_day_first ? day_of(year, second.value, first.value) : day_of(year, first.value, second.value);
    }
    return parts_.day.has_value();
  }

  bool read_time(const Number& hours) {
    if (has_time_ || !hours.is_short() || hours.value > 23) return false;
    take(L':');
    const Number minutes = read_number();
    if (minutes.digits != 2 || minutes.value > 59) return false;
    double seconds = 0;
    if (take(L':')) {
      const Number whole = read_number();
      if (whole.digits != 2 || whole.value > 59) return false;
      seconds = whole.value;
      if (take(L'.') && !read_fraction(&seconds)) return false;
    }
    set_time(hours.value, minutes.value, seconds);
    return true;
  }

  bool read_fraction(double* seconds) {
    if (!base::is_digit(at(0))) return false;
    for (double unit = 0.1; base::is_digit(at(0)); unit /= 10) {
      *seconds += unit * static_cast<double>(at(0) - L'0');
      rest_.remove_prefix(1);
    }
    return true;
  }

  void set_time(int hours, int minutes, double seconds) {
    hours_ = hours;
    parts_.seconds = (hours * 60 + minutes) * 60 + seconds;
    has_time_ = true;
    last_ = Item::time;
  }

  // AM or PM, after a time or after an hour alone.
  bool read_half(bool is_afternoon) {
    if (last_ == Item::number && !has_time_) {
      const Number hours = loose_[--loose_count_];
      if (!hours.is_short()) return false;
      set_time(hours.value, 0, 0);
    }
    if (last_ != Item::time || has_half_ || hours_ > 12) return false;
    has_half_ = true;
    if (hours_ == 12) parts_.seconds -= 12 * kHour;
    if (is_afternoon) parts_.seconds += 12 * kHour;
    return true;
  }

  bool read_zone(const Zone& zone) {
    if (last_ != Item::time) return false;
    parts_.offset = zone.hours * kHour;
    has_offset_ = !zone.is_base;
    last_ = Item::zone;
    return true;
  }

  // "+02:00", "+0200", "+02", after a time or after GMT and its like.
  bool read_offset() {
    if (has_offset_) return false;
    const int sign = take(L'-') ? -1 : 1;
    if (sign > 0) take(L'+');
    Number hours = read_number();
    Number minutes;
    if (hours.digits == 4) {
      minutes.value = hours.value % 100;
      hours = {hours.value / 100, 2};
    } else if (take(L':')) {
      minutes = read_number();
      if (minutes.digits != 2) return false;
    }
    if (hours.digits != 2 || hours.value > 23 || minutes.value > 59) return false;
    parts_.offset = sign * (hours.value * kHour + minutes.value * 60);
    has_offset_ = true;
    last_ = Item::zone;
    return true;
  }

  // A month's name with a day, a year or both beside it.
  bool read_named_date() {
    const Number* day = nullptr;
    const Number* year = nullptr;
    for (std::size_t i = 0; i < loose_count_; ++i) {
      const bool is_year = loose_[i].digits == 4 || (day && !year);
      const Number*& role = is_year ? year : day;
      if (role) return false;
      role = &loose_[i];
    }
    if ((!day && !year) || (day && !day->is_short())) return false;
    parts_.day = day_of(year ? year_of(*year) : this_year_, *month_, day ? day->value : 1);
    return parts_.day.has_value();
  }

  std::wstring_view rest_;
  const int this_year_;
  DateParts parts_;
  Item last_ = Item::none;
  std::optional<int> month_;
  std::array<Number, 3> loose_{};  // day and year beside a month's name, and an hour whose PM is still to come
  std::size_t loose_count_ = 0;
  int hours_ = 0;
  bool has_time_ = false;
  bool has_half_ = false;
  bool has_offset_ = false;
  bool has_weekday_ = false;
};

DATE date_at(std::int64_t day, double seconds) {
  return base::join({static_cast<double>(day), seconds / base::kSecondsPerDay});
}

// A moment by the clock of UTC, by the local one. Counted in whole seconds, so that a time of day is exact.
DATE local_date(std::chrono::sys_seconds utc, double fraction) {
  // Not by to_time_t, whose clock counts in nanoseconds: those of the year 3000 do not fit.
  const std::time_t moment = utc.time_since_epoch().count();
  std::tm parts{};
  localtime_r(&moment, &parts);
  const auto local = utc + std::chrono::seconds{parts.tm_gmtoff};
  const auto day = std::chrono::floor<std::chrono::days>(local);
  return date_at((day - base::kDayZero).count(), static_cast<double>((local - day).count()) + fraction);
}

}  // namespace

HRESULT parse_date(std::wstring_view text, DATE* date) {
  *date = 0;
  const auto today = static_cast<std::int64_t>(base::local_date(std::time(nullptr)));
  const int this_year = static_cast<int>(base::calendar_day(today).year());
  const std::optional<DateParts> parts = DateParser(text, this_year).parse();
  if (!parts) return DISP_E_TYPEMISMATCH;
  const int day = parts->day.value_or(0);
  DATE read = date_at(day, parts->seconds);
  if (parts->offset) {
    const double whole = std::floor(parts->seconds);
    const auto seconds = std::chrono::seconds{static_cast<std::int64_t>(whole) - *parts->offset};
    read = local_date(base::kDayZero + std::chrono::days{day} + seconds, parts->seconds - whole);
  }
  if (!base::is_date(read)) return DISP_E_TYPEMISMATCH;
  *date = read;
  return S_OK;
}

}  // namespace korlib::variants
