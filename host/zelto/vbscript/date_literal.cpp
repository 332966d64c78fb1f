#include "vbscript/date_literal.h"

#include <array>
#include <chrono>
#include <ctime>
#include <string>
#include <vector>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "base/serial_date.h"

namespace zelto::vbscript {
namespace {

constexpr auto kMonths =
    std::to_array<std::wstring_view>({L"january", L"february", L"march", L"april", L"may", L"june", L"july", L"august",
                                      L"september", L"october", L"november", L"december"});

struct Part {
  enum Kind { number, month, am, pm, colon } kind = number;
  int value = 0;
  std::size_t digits = 0;
};

constexpr int kMostDigits = 4;

// Without blanks, commas, slashes and dashes.
std::optional<std::vector<Part>> parts_of(std::wstring_view text) {
  std::vector<Part> parts;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    if (base::is_digit(text[at])) {
      Part part;
      for (; at < text.size() && base::is_digit(text[at]); ++at) part.value = part.value * 10 + (text[at] - L'0');
      part.digits = at - begin;
      if (part.digits > kMostDigits) return std::nullopt;
      parts.push_back(part);
    } else if (base::is_letter(text[at])) {
      while (at < text.size() && base::is_letter(text[at])) ++at;
      const std::wstring word = base::ascii_lowered(text.substr(begin, at - begin));
      if (word == L"am" || word == L"pm") {
        parts.push_back({word == L"am" ? Part::am : Part::pm});
        continue;
      }
      int month = 0;
      while (month < 12 && (word.size() < 3 || !kMonths[static_cast<std::size_t>(month)].starts_with(word))) ++month;
      if (month == 12) return std::nullopt;
      parts.push_back({Part::month, month + 1});
    } else if (text[at] == L':') {
      parts.push_back({Part::colon});
      ++at;
    } else if (std::wstring_view(L" \t,/-.").find(text[at]) != std::wstring_view::npos) {
      ++at;
    } else {
      return std::nullopt;
    }
  }
  return parts;
}

class Reader {
 public:
  explicit Reader(std::vector<Part> parts) : parts_(std::move(parts)) {}

  std::optional<double> read() {
    if (parts_.empty() || !take_time()) return std::nullopt;
    if (parts_.empty()) return has_time_ ? std::optional(time_) : std::nullopt;
    const auto day = take_day();
    if (!day) return std::nullopt;
    return base::join({static_cast<double>((std::chrono::sys_days(*day) - base::kDayZero).count()), time_});
  }

 private:
  // What stands around the first colon, or in front of AM or PM, is the time; it is taken out.
  bool take_time() {
    std::size_t first = parts_.size();
    for (std::size_t i = 0; i < parts_.size() && first == parts_.size(); ++i) {
      if (parts_[i].kind == Part::colon || parts_[i].kind == Part::am || parts_[i].kind == Part::pm) first = i;
    }
    if (first == parts_.size()) return true;
    if (first-- == 0) return false;
    std::size_t at = first;
    int units[3] = {};
    for (int& unit : units) {
      if (at >= parts_.size() || parts_[at].kind != Part::number) return false;
      unit = parts_[at++].value;
      if (at >= parts_.size() || parts_[at].kind != Part::colon) break;
      ++at;
    }
    if (at < parts_.size() && (parts_[at].kind == Part::am || parts_[at].kind == Part::pm)) {
      if (units[0] < 1 || units[0] > 12) return false;
      units[0] = units[0] % 12 + (parts_[at].kind == Part::pm ? 12 : 0);
      ++at;
    }
    if (units[0] > 23 || units[1] > 59 || units[2] > 59) return false;
    time_ = (units[0] * 3600 + units[1] * 60 + units[2]) / static_cast<double>(base::kSecondsPerDay);
    has_time_ = true;
    parts_.erase(parts_.begin() + static_cast<std::ptrdiff_t>(first), parts_.begin() + static_cast<std::ptrdiff_t>(at));
    return true;
  }

  static int full_year(const Part& part) {
    if (part.digits > 2) return part.value;
    return part.value + (part.value < 30 ? 2000 : 1900);
  }

  // Month first, unless a year or a month's name says otherwise. Without a year it is this one.
  std::optional<std::chrono::year_month_day> take_day() const {
    int month = 0;
    std::vector<Part> numbers;
    for (const Part& part : parts_) {
      if (part.kind == Part::month && month == 0) {
        month = part.value;
      } else if (part.kind == Part::number) {
        numbers.push_back(part);
      } else {
        return std::nullopt;
      }
    }
    const bool has_name = month != 0;
    if (numbers.size() < (has_name ? 1U : 2U) || numbers.size() > (has_name ? 2U : 3U)) return std::nullopt;
    const bool is_year_first = numbers[0].digits > 2;
    int year = this_year();
    if (is_year_first) {
      year = full_year(numbers[0]);
      numbers.erase(numbers.begin());
    } else if (numbers.size() == (has_name ? 2U : 3U)) {
      year = full_year(numbers.back());
      numbers.pop_back();
    }
    if (numbers.size() != (has_name ? 1U : 2U)) return std::nullopt;
    if (!has_name) month = numbers[0].value;
    int day = numbers.back().value;
    if (!has_name && !is_year_first && month > 12) std::swap(month, day);
    const std::chrono::year_month_day result{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                             std::chrono::day(static_cast<unsigned>(day))};
    return year >= 100 && result.ok() ? std::optional(result) : std::nullopt;
  }

  static int this_year() {
    const double today = base::local_date(std::time(nullptr));
    return static_cast<int>(base::calendar_day(static_cast<std::int64_t>(today)).year());
  }

  std::vector<Part> parts_;
  double time_ = 0;
  bool has_time_ = false;
};

}  // namespace

std::optional<double> read_date_literal(std::wstring_view text) {
  auto parts = parts_of(text);
  return parts ? Reader(std::move(*parts)).read() : std::nullopt;
}

}  // namespace zelto::vbscript
