// Dates, which are days since 1899-12-30. Before that day the fraction still counts forward within its day.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kDatesSource =
    uR"js(
const kSecondsADay = 86400, kDaysTo1970 = 25569;
const nearest_second = v => {
  const day = trunc(v) + 0, second = Math.round(abs(v - day) * kSecondsADay);
  return second === kSecondsADay ? { day: day + 1, second: 0 } : { day, second };
};
const to_linear = v => trunc(v) + abs(v - trunc(v));
const from_linear = days => {
  const day = floor(days), part = days - day;
  return day >= 0 ? day + part : day - part;
};
// Year, month and date of a day, and back, by the calendar's cycle of 400 years.
const civil = day => {
  const days = day - kDaysTo1970 + 719468, era = floor(days / 146097), of_era = days - era * 146097;
  const year_of_era = floor((of_era - floor(of_era / 1460) + floor(of_era / 36524) - floor(of_era / 146096)) / 365);
  const of_year = of_era - (365 * year_of_era + floor(year_of_era / 4) - floor(year_of_era / 100));
  const shifted = floor((5 * of_year + 2) / 153), month = shifted < 10 ? shifted + 3 : shifted - 9;
  const date = of_year - floor((153 * shifted + 2) / 5) + 1;
  return { year: year_of_era + era * 400 + (month <= 2 ? 1 : 0), month, date };
};
// The month may be any number.
const day_of = (year, month, date) => {
  const months = year * 12 + month - 1, y = floor(months / 12), m = months - y * 12 + 1;
  const shifted = m <= 2 ? y - 1 : y, era = floor(shifted / 400), of_era = shifted - era * 400;
  const of_year = floor((153 * (m > 2 ? m - 3 : m + 9) + 2) / 5) + date - 1;
  const days = of_era * 365 + floor(of_era / 4) - floor(of_era / 100) + of_year;
  return era * 146097 + days - 719468 + kDaysTo1970;
};
const checked_date = n => n > kFirstDay - 1 && n < kDayBeyond ? new Dat(n) : raise(5);
// Of Null it is Null.
const of_date = f => (v, ...rest) => {
  const value = value_of(v);
  if (value === null) return null;
  const n = date_number(value);
  return n > kFirstDay - 1 && n < kDayBeyond ? f(n, ...rest) : raise(typeof value === "string" ? 13 : 6);
};
const whole_year = year => year < 0 || year > 9999 ? raise(5) : year < 30 ? 2000 + year : year < 100 ? 1900 + year : year;

// Sunday is 1, unless another day is the first.
const system_first_day = () => {
  if (locale() === kNeutral) return 1;
  const { weekInfo, getWeekInfo } = new Intl.Locale(locale_name());
  const first = (weekInfo ?? (getWeekInfo && new Intl.Locale(locale_name()).getWeekInfo()))?.firstDay;
  return first === undefined ? 1 : first % 7 + 1;
};
const first_day = v => {
  const n = int(v, 1);
  return n === 0 ? system_first_day() : n >= 1 && n <= 7 ? n : raise(5);
};
const weekday_of = (day, first) => {
  const sunday = ((day - 1) % 7 + 7) % 7;
  return (sunday - (first - 1) + 7) % 7 + 1;
};
// The first week has January 1 (1), four days at least (2), or seven (3).
const kLeastDays = [1, 1, 4, 7];
const week_of = (day, first, rule) => {
  const { year } = civil(day), least = kLeastDays[rule];
  const week_in = of_year => {
    const start = day_of(of_year, 1, 1), passed = weekday_of(start, first) - 1;
    const skipped = 7 - passed >= least ? 0 : 1;
    return floor((day - start + passed) / 7) + 1 - skipped;
  };
  if (rule === 1) return week_in(year);
  if (week_in(year + 1) === 1) return 1;
  const week = week_in(year);
  return week > 0 ? week : week_in(year - 1);
};
const first_week = v => {
  const n = int(v, 1);
  return n >= 0 && n <= 3 ? n || 1 : raise(5);
};

const kIntervals = ["yyyy", "q", "m", "y", "d", "w", "ww", "h", "n", "s"];
const interval_of = v => {
  const name = text(v).toLowerCase();
  return kIntervals.includes(name) ? name : raise(5);
};
const kSecondsOf = { __proto__: null, h: 3600, n: 60, s: 1 };
const part_of = (name, n, first, rule) => {
  const { day, second } = nearest_second(n);
  switch (name) {
    case "h": return floor(second / 3600);
    case "n": return floor(second / 60) % 60;
    case "s": return second % 60;
    case "w": return weekday_of(day, first);
    case "ww": return week_of(day, first, rule);
  }
  const { year, month, date } = civil(day);
  switch (name) {
    case "yyyy": return year;
    case "q": return floor((month + 2) / 3);
    case "m": return month;
    case "d": return date;
    default: return day - day_of(year, 1, 1) + 1;
  }
};
const months_added = (n, months) => {
  const day = trunc(n), { year, month, date } = civil(day);
  const first = day_of(year, month + months, 1), next = day_of(year, month + months + 1, 1);
  const moved = first + (date <= next - first ? date - 1 : next - first - 1);
  return from_linear(moved + abs(n - day));
};
const dateadd = (interval, number, date) => {
  const name = interval_of(interval), count = value_of(number), value = value_of(date);
  if (value === null || count === null) return value === null ? null : raise(94);
  const n = date_number(value), by = round_half_even(number_of(count));
  if (!(n > kFirstDay - 1 && n < kDayBeyond)) return raise(5);
  if (name === "yyyy" || name === "q" || name === "m") {
    return checked_date(months_added(n, by * (name === "yyyy" ? 12 : name === "q" ? 3 : 1)));
  }
  const unit = kSecondsOf[name];
  if (unit === undefined) return checked_date(from_linear(to_linear(n) + by * (name === "ww" ? 7 : 1)));
  const { day, second } = nearest_second(n), moved = second + by * unit, days = floor(moved / kSecondsADay);
  return checked_date(from_linear(day + days + (moved - days * kSecondsADay) / kSecondsADay));
};
const datediff = (interval, from, to, first, rule) => {
  const name = interval_of(interval), a = value_of(from), b = value_of(to);
  if (a === null || b === null) return null;
  const x = nearest_second(date_number(a)), y = nearest_second(date_number(b)), start = first_day(first);
  first_week(rule);
  const unit = kSecondsOf[name];
  if (unit !== undefined) {
    const units = at => floor((at.day * kSecondsADay + at.second) / unit);
    const count = units(y) - units(x);
    return is_int(count) ? count : raise(6);
  }
  if (name === "y" || name === "d") return y.day - x.day;
  if (name === "w") return trunc((y.day - x.day) / 7) + 0;
  if (name === "ww") return (y.day - weekday_of(y.day, start) - x.day + weekday_of(x.day, start)) / 7;
  const c = civil(x.day), d = civil(y.day), months = (d.year - c.year) * 12 + d.month - c.month;
  if (name === "m") return months;
  if (name === "q") return (d.year - c.year) * 4 + floor((d.month - 1) / 3) - floor((c.month - 1) / 3);
  return d.year - c.year;
};

const now = () => new Dat(native.now());
const timer = () => single_of(native.timer());
const date_functions = {
  now, timer, dateadd, datediff,
  date: () => new Dat(floor(native.now())),
  time: () => new Dat(nearest_second(native.now()).second / kSecondsADay),
  datepart: (interval, date, first, rule) => {
    const name = interval_of(interval), start = first_day(first), weeks = first_week(rule);
    return of_date(n => part_of(name, n, start, weeks))(date);
  },
  dateserial: (year, month, date) => {
    const days = day_of(whole_year(int(year)), int(month), 1) + int(date) - 1;
    return checked_date(days);
  },
  timeserial: (hour, minute, second) =>
    checked_date(from_linear((int(hour) * 3600 + int(minute) * 60 + int(second)) / kSecondsADay)),
  datevalue: of_date(n => new Dat(trunc(n) + 0)),
  timevalue: of_date(n => new Dat(abs(n - trunc(n)))),
  year: of_date(n => part_of("yyyy", n)), month: of_date(n => part_of("m", n)), day: of_date(n => part_of("d", n)),
  hour: of_date(n => part_of("h", n)), minute: of_date(n => part_of("n", n)), second: of_date(n => part_of("s", n)),
  weekday: (date, first) => {
    const start = first_day(first);
    return of_date(n => weekday_of(nearest_second(n).day, start))(date);
  },
};
)js";

}  // namespace zelto::script::vbscript
