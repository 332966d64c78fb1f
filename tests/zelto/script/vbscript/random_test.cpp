// Numbers, dates and texts at random, judged by the standard library.
#include <array>
#include <chrono>
#include <cstdint>
#include <random>

#include "base/serial_date.h"
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

class VbRandom : public VbLibraryTest {
 protected:
  static constexpr int kRounds = 200;

  // All at once: a program for each would take most of the time.
  void add(const std::wstring& expression, std::string expected) {
    expressions_ += (expressions_.empty() ? L"" : L", ") + expression;
    expected_ += (expected_.empty() ? "" : "|") + expected;
  }
  void judge() { EXPECT_EQ("Variant() " + expected_, shown(L"array(" + expressions_ + L")")); }

  std::int32_t number() {
    // As many small ones as large ones.
    const int bits = std::uniform_int_distribution<int>(1, 31)(random_);
    return std::uniform_int_distribution<std::int32_t>(-(1 << (bits - 1)), (1 << (bits - 1)) - 1)(random_);
  }
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  static std::wstring call(const wchar_t* name, std::int32_t a, std::int32_t b) {
    return std::wstring(name) + L"(" + std::to_wstring(a) + L", " + std::to_wstring(b) + L")";
  }

  std::mt19937 random_{20261121};

 private:
  std::wstring expressions_;
  std::string expected_;
};

TEST_F(VbRandom, WholeNumbersAreDividedAndCombined) {
  for (int i = 0; i < kRounds; ++i) {
    const std::int32_t a = number(), b = number();
    if (b != 0) {
      add(call(L"idiv", a, b), std::to_string(a / b));
      add(call(L"mod", a, b), std::to_string(a % b));
    }
    add(call(L"and", a, b), std::to_string(a & b));
    add(call(L"or", a, b), std::to_string(a | b));
    add(call(L"xor", a, b), std::to_string(a ^ b));
    add(call(L"eqv", a, b), std::to_string(~(a ^ b)));
    add(call(L"imp", a, b), std::to_string(~a | b));
    add(call(L"add", a, b), std::to_string(std::int64_t{a} + b));
    add(call(L"sub", a, b), std::to_string(std::int64_t{a} - b));
  }
  judge();
}

TEST_F(VbRandom, AmountsAreExact) {
  for (int i = 0; i < kRounds; ++i) {
    const std::int64_t a = std::int64_t{number()} * 10000, b = std::int64_t{number()} * 10000;
    const auto amount = [](std::int64_t n) { return L"ccur('" + std::to_wstring(n) + L"')"; };
    add(L"add(" + amount(a) + L", " + amount(b) + L")", std::to_string(a + b));
    add(L"mul(" + amount(a / 10000) + L", " + amount(b / 100000000) + L")",
        std::to_string(a / 10000 * (b / 100000000)));
  }
  judge();
}

TEST_F(VbRandom, DaysAreThoseOfTheCalendar) {
  using namespace std::chrono;
  constexpr int kDays = static_cast<int>(base::kDayBeyond - base::kFirstDay);
  for (int i = 0; i < kRounds; ++i) {
    const int serial = static_cast<int>(base::kFirstDay) + below(kDays);
    const sys_days day = base::kDayZero + days{serial};
    const year_month_day date(day);
    const std::wstring text = std::to_wstring(serial);
    add(L"year(" + text + L")", std::to_string(static_cast<int>(date.year())));
    add(L"month(" + text + L")", std::to_string(static_cast<unsigned>(date.month())));
    add(L"day(" + text + L")", std::to_string(static_cast<unsigned>(date.day())));
    add(L"weekday(" + text + L")", std::to_string(weekday(day).c_encoding() + 1));
    add(L"datepart('y', " + text + L")", std::to_string((day - sys_days(date.year() / January / 1)).count() + 1));
    // The week of a Thursday, the first one being that of the year's first Thursday.
    const sys_days thursday = day - days{static_cast<int>(weekday(day).iso_encoding()) - 4};
    const year of = year_month_day(thursday).year();
    add(L"datepart('ww', " + text + L", 2, 2)",
        std::to_string((thursday - sys_days(of / January / 1)).count() / 7 + 1));
    const int months = below(400) - 200;
    year_month_day moved = date + std::chrono::months{months};
    if (!moved.ok()) moved = moved.year() / moved.month() / last;
    if (moved.year() < year{100} || moved.year() > year{9999}) continue;
    const auto serial_of = [](sys_days one) { return std::to_string((one - base::kDayZero).count()); };
    add(L"cdbl(dateadd('m', " + std::to_wstring(months) + L", " + text + L"))", serial_of(sys_days(moved)));
    add(L"datediff('m', " + text + L", dateadd('m', " + std::to_wstring(months) + L", " + text + L"))",
        std::to_string(months));
  }
  judge();
}

TEST_F(VbRandom, TextsAreFoundAndCut) {
  for (int i = 0; i < kRounds; ++i) {
    std::wstring whole, part;
    for (int n = below(12) + 1; n > 0; --n) whole += static_cast<wchar_t>(L'a' + below(2));
    for (int n = below(3) + 1; n > 0; --n) part += static_cast<wchar_t>(L'a' + below(2));
    const auto place = [](std::size_t at) { return std::to_string(at == std::wstring::npos ? 0 : at + 1); };
    const std::wstring both = L"'" + whole + L"', '" + part + L"')";
    add(L"instr(" + both, place(whole.find(part)));
    add(L"instrrev(" + both, place(whole.rfind(part)));
    const auto start = static_cast<std::size_t>(below(12)), count = static_cast<std::size_t>(below(5));
    add(L"mid('" + whole + L"', " + std::to_wstring(start + 1) + L", " + std::to_wstring(count) + L")",
        narrow(start < whole.size() ? whole.substr(start, count) : L""));
    std::wstring replaced;
    std::size_t at = 0, found = 0;
    int pieces = 1;
    for (; (found = whole.find(part, at)) != std::wstring::npos; at = found + part.size(), ++pieces) {
      replaced += whole.substr(at, found - at) + L"-";
    }
    add(L"replace('" + whole + L"', '" + part + L"', '-')", narrow(replaced + whole.substr(at)));
    add(L"add(ubound(split(" + both + L"), 1)", std::to_string(pieces));
  }
  judge();
}

}  // namespace
}  // namespace test
