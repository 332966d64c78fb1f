// Dates in words, by the locale that the page or the script has chosen.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kDateTextSource =
    uR"js(
// The neutral locale has its words in English.
const locale_name = () => {
  const known = locale_of();
  return known.name ??= native.locale_name(known.lcid);
};
const kMillisecondsADay = kSecondsADay * 1000;
const in_words = (key, options, days) => {
  const known = locale_of();
  const format = known[key] ??= new Intl.DateTimeFormat(locale_name(), { ...options, timeZone: "UTC" });
  return format.format((days - kDaysTo1970) * kMillisecondsADay);
};
const kSunday = 1;  // as a date
const kJanuary = 366;  // of 1901

const setlocale = v => {
  const before = locale(), value = value_of(v);
  let lcid = kNeutral;
  if (value === null) return raise(94);
  if (typeof value === "string") lcid = value === "" ? 0 : native.locale_number(value) || raise(447);
  else if (value !== undefined && value !== missing) lcid = to_long(number_of(value));
  if (lcid !== 0 && native.locale_name(lcid) === "") return raise(447);
  chosen_locale = lcid;
  return before;
};

const date_texts = {
  setlocale,
  getlocale: () => locale(),
  monthname: (month, short) => {
    const n = int(month), is_short = is_given(short) && boolean(short);
    if (n < 1 || n > 12) return raise(5);
    const day = day_of(1901, n, 1);
    return is_short ? in_words("short_month", { month: "short" }, day) : in_words("month", { month: "long" }, day);
  },
  weekdayname: (weekday, short, first) => {
    const n = int(weekday), is_short = is_given(short) && boolean(short), start = first_day(optional(first, 0));
    if (n < 1 || n > 7) return raise(5);
    const day = kSunday + start - 1 + n - 1;
    return is_short ? in_words("short_day", { weekday: "short" }, day) : in_words("day", { weekday: "long" }, day);
  },
  formatdatetime: of_date((n, format) => {
    const { day, second } = nearest_second(n);
    switch (int(format, 0)) {
      case 0: return date_text(n);
      case 1: return in_words("long", { dateStyle: "full" }, day);
      case 2: return day === 0 ? in_words("zero", { dateStyle: "short" }, day) : date_text(day);
      case 3: return date_text(second / kSecondsADay);
      case 4: return `${pad2(floor(second / 3600))}:${pad2(floor(second / 60) % 60)}`;
      default: return raise(5);
    }
  }),
};
)js";

}  // namespace zelto::script::vbscript
