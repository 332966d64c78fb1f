#include "variant/date_text.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "variant/decimal.h"

namespace korlib::variants {

namespace {

constexpr DATE kFirst = -657434.0;   // 0100-01-01
constexpr DATE kBeyond = 2958466.0;  // 10000-01-01
constexpr int kSecondsOfDay = 86400;
constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;

// Reads numbers and the characters between them; once something is missing it stays failed.
class Reader {
 public:
  explicit Reader(std::wstring_view text) : rest_(text) {}

  int number(std::size_t least, std::size_t most) {
    int value = 0;
    std::size_t count = 0;
    for (; count < most && !rest_.empty() && rest_[0] >= L'0' && rest_[0] <= L'9'; ++count) {
      value = value * 10 + static_cast<int>(rest_[0] - L'0');
      rest_.remove_prefix(1);
    }
    if (count < least) has_failed_ = true;
    return value;
  }
  bool take(wchar_t wanted) {
    if (rest_.empty() || rest_[0] != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }
  void expect(wchar_t wanted) {
    if (!take(wanted)) has_failed_ = true;
  }
  // The digits behind a decimal point, as part of one.
  double fraction() {
    double value = 0;
    double unit = 1;
    const std::size_t before = rest_.size();
    while (!rest_.empty() && rest_[0] >= L'0' && rest_[0] <= L'9') {
      unit /= 10;
      value += unit * static_cast<double>(rest_[0] - L'0');
      rest_.remove_prefix(1);
    }
    if (rest_.size() == before) has_failed_ = true;
    return value;
  }
  bool at_end() const { return rest_.empty(); }
  bool has_failed() const { return has_failed_; }

 private:
  std::wstring_view rest_;
  bool has_failed_ = false;
};

// Days since day zero.
bool read_day(Reader& reader, DATE* day) {
  const int year = reader.number(4, 4);
  const wchar_t separator = reader.take(L'/') ? L'/' : L'-';
  if (separator == L'-') reader.expect(L'-');
  const int month = reader.number(1, 2);
  reader.expect(separator);
  const int number = reader.number(1, 2);
  const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(number)}};
  if (reader.has_failed() || year < 100 || !date.ok()) return false;
  *day = static_cast<DATE>((std::chrono::sys_days{date} - kDayZero).count());
  return true;
}

// As part of a day.
bool read_time(Reader& reader, double* part) {
  const int hours = reader.number(1, 2);
  reader.expect(L':');
  const int minutes = reader.number(2, 2);
  double seconds = 0;
  if (reader.take(L':')) {
    seconds = reader.number(2, 2);
    if (reader.take(L'.')) seconds += reader.fraction();
  }
  if (reader.has_failed() || hours > 23 || minutes > 59 || seconds >= 60) return false;
  *part = ((hours * 60 + minutes) * 60 + seconds) / kSecondsOfDay;
  return true;
}

}  // namespace

bool is_date(DATE date) { return date > kFirst - 1 && date < kBeyond; }

HRESULT date_text(DATE date, std::string* text) {
  if (!is_date(date)) return DISP_E_OVERFLOW;
  // The fraction counts forward within the day, before day zero as well.
  DATE day = std::trunc(date);
  auto seconds = static_cast<int>(std::lround(std::abs(date - day) * kSecondsOfDay));
  if (seconds == kSecondsOfDay) {
    seconds = 0;
    day += 1;
  }
  if (day >= kBeyond) return DISP_E_OVERFLOW;

  char buffer[64];
  text->clear();
  if (day != 0) {
    const std::chrono::year_month_day ymd{kDayZero + std::chrono::days{static_cast<int>(day)}};
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
    *text = buffer;
    if (seconds == 0) return S_OK;
    *text += ' ';
  }
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  *text += buffer;
  return S_OK;
}

HRESULT parse_date(std::wstring_view text, DATE* date) {
  *date = 0;
  const std::wstring_view rest = trimmed(text);
  Reader reader(rest);
  DATE day = 0;
  double part = 0;
  const bool has_day = rest.size() > 4 && (rest[4] == L'-' || rest[4] == L'/');
  if (has_day && !read_day(reader, &day)) return DISP_E_TYPEMISMATCH;
  const bool has_time = !has_day || reader.take(L' ') || reader.take(L'T');
  if (has_time && !read_time(reader, &part)) return DISP_E_TYPEMISMATCH;
  if (!reader.at_end()) return DISP_E_TYPEMISMATCH;
  *date = day < 0 ? day - part : day + part;
  return S_OK;
}

}  // namespace korlib::variants
