// Dates by the clock on the wall, both ways.
#include <cstdlib>
#include <optional>

#include "zelto/script/values_fixture.h"

namespace test {
namespace {

using DateValues = ValuesTest;

TEST_F(DateValues, KeepTheirLocalTime) {
  // 2001-02-03 04:05:06.789 by the calendar of automation.
  const double date = 36925 + (((4 * 60 + 5) * 60 + 6) * 1000 + 789) / 86400000.0;
  probe->kept = made_double(VT_DATE, date);
  EXPECT_EQ("2001,1,3,4,5,6,789",
            text(L"(d => [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours(), d.getMinutes(), d.getSeconds(), "
                 L"d.getMilliseconds()])(o.Give())"));
  must_run(L"o.Keep(new Date(2001, 1, 3, 4, 5, 6, 789))");
  EXPECT_NEAR(probe->kept.date, date, 1e-9);
  // Before the calendar's day 0 the time of day still counts forwards: -1.25 is six in the morning.
  probe->kept = made_double(VT_DATE, -1.25);
  EXPECT_EQ("1899,11,29,6", text(L"(d => [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()])(o.Give())"));
  must_run(L"o.Keep(new Date(1899, 11, 29, 6))");
  EXPECT_DOUBLE_EQ(probe->kept.date, -1.25);
  EXPECT_EQ("TypeError: An invalid date has no value outside of the script at /site/page.asp:1",
            error_of(L"o.Keep(new Date(NaN))"));
}

class LocalTime : public ValuesTest {
 protected:
  void SetUp() override {
    if (const char* zone = std::getenv("TZ")) before_ = zone;
  }
  void TearDown() override {
    realm.reset();
    if (before_) {
      ::setenv("TZ", before_->c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
  }
  // What the script gives with that time zone, which an engine reads once.
  std::string text_in(const char* zone, std::wstring_view expression) {
    ::setenv("TZ", zone, 1);
    zelto::script::Engine there;
    zelto::script::Realm local(there);
    local.set_object(L"o", probe.get());
    local.set_object(L"Response", page.get());
    local.set_output(page.get());
    page->text.clear();
    local.run(zelto::language::compile(L"$zelto_out(" + std::wstring(expression) + L")", "/site/page.asp"));
    probe->kept.reset();
    return narrow(page->text);
  }

 private:
  std::optional<std::string> before_;
};

TEST_F(LocalTime, ComesBackFromEveryZoneAndSeason) {
  for (const char* zone : {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Pacific/Chatham"}) {
    for (const wchar_t* date : {L"2024, 0, 15, 12, 30, 15, 250", L"2024, 6, 15, 12, 30, 15, 250", L"2024, 2, 31, 3, 0",
                                L"2024, 2, 10, 1, 59", L"2024, 9, 27, 3, 0", L"1969, 11, 31, 23, 59, 59, 999",
                                L"1900, 0, 1", L"1899, 11, 30, 6", L"9999, 11, 31", L"100, 0, 1"}) {
      EXPECT_EQ("0",
                text_in(zone, L"(d => { o.Keep(d); return +o.Give() - d })(new Date(" + std::wstring(date) + L"))"))
          << zone << ' ' << narrow(date);
    }
  }
}

TEST_F(LocalTime, IsWhatTheClockOnTheWallSays) {
  // Noon in winter and in summer is noon.
  for (const wchar_t* month : {L"0", L"6"}) {
    const std::wstring noon = L"(o.Keep(new Date(2024, " + std::wstring(month) + L", 15, 12)), ";
    EXPECT_EQ("12", text_in("Europe/Berlin", noon + L"o.Give().getHours())"));
  }
  ::setenv("TZ", "Europe/Berlin", 1);
  zelto::script::Engine there;
  zelto::script::Realm local(there);
  local.set_object(L"o", probe.get());
  local.run(zelto::language::compile(L"o.Keep(new Date(Date.UTC(2024, 6, 15, 10)))", "/site/page.asp"));
  EXPECT_EQ(VT_DATE, probe->kept.vt);
  EXPECT_DOUBLE_EQ(probe->kept.date, 45488.5);  // 2024-07-15 12:00
  local.run(zelto::language::compile(L"o.Keep(new Date(Date.UTC(2024, 0, 15, 11)))", "/site/page.asp"));
  EXPECT_DOUBLE_EQ(probe->kept.date, 45306.5);  // 2024-01-15 12:00
  // An hour that the clock skips is the next one.
  probe->kept = made_double(VT_DATE, 45382 + 2.5 / 24);  // 2024-03-31 02:30
  EXPECT_EQ("3:30", text_in("Europe/Berlin", L"(d => d.getHours() + ':' + d.getMinutes())(o.Give())"));
  // A zone whose clocks were half a minute off.
  EXPECT_EQ("0", text_in("Africa/Monrovia", L"(d => { o.Keep(d); return +o.Give() - d })(new Date(1960, 6, 1))"));
}

}  // namespace
}  // namespace test
