// FormatNumber and its like, by the locale that the page or the script has chosen.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kFormatsSource =
    uR"js(
// What a locale writes around digits. It is asked once, for a large negative amount and a large positive one.
const kCurrencies = {
  __proto__: null, JP: "JPY", US: "USD", GB: "GBP", CN: "CNY", TW: "TWD", KR: "KRW", CH: "CHF", SE: "SEK", NO: "NOK",
  DK: "DKK", PL: "PLN", CZ: "CZK", HU: "HUF", RU: "RUB", BR: "BRL", MX: "MXN", CA: "CAD", AU: "AUD", NZ: "NZD",
  IN: "INR", TH: "THB", TR: "TRY", IL: "ILS", ZA: "ZAR", HK: "HKD", SG: "SGD", AR: "ARS", UA: "UAH", RO: "RON",
  BG: "BGN", ID: "IDR", MY: "MYR", PH: "PHP", VN: "VND", SA: "SAR", AE: "AED", EG: "EGP", CL: "CLP", CO: "COP",
};
const currency_code = () => {
  const { region } = new Intl.Locale(locale_name()).maximize();
  return kCurrencies[region] ?? "EUR";
};
const part_in = (parts, type, otherwise) => {
  for (const part of parts) if (part.type === type) return part.value;
  return otherwise;
};
const numbers_of = known => {
  const name = locale_name();
  const parts = new Intl.NumberFormat(name, { minimumFractionDigits: 1, useGrouping: true }).formatToParts(-1234567.5);
  const style = { style: "currency", currency: currency_code(), currencyDisplay: "narrowSymbol" };
  const money = new Intl.NumberFormat(name, style).formatToParts(1234567.5);
  const groups = parts.filter(part => part.type === "integer").map(part => part.value.length);
  const places = money.map(part => part.type), at = places.indexOf("currency"), first = places.indexOf("integer");
  const literals = money.filter(part => part.type === "literal").map(part => part.value);
  return known.numbers = {
    mark: part_in(parts, "decimal", "."), group: part_in(parts, "group", ","), minus: part_in(parts, "minusSign", "-"),
    first_group: groups[groups.length - 1] ?? 3, other_groups: groups[groups.length - 2] ?? 3,
    symbol: part_in(money, "currency", "$"), is_symbol_first: at < first, gap: literals[0] === undefined ? "" : "\xA0",
    places: part_in(money, "fraction", "").length,
  };
};
const numbers = () => {
  const known = locale_of();
  return known.numbers ?? numbers_of(known);
};
const grouped = (whole, { group, first_group, other_groups }) => {
  if (whole.length <= first_group) return whole;
  let made = whole.slice(-first_group), rest = whole.slice(0, -first_group);
  while (rest.length > other_groups) {
    made = rest.slice(-other_groups) + group + made;
    rest = rest.slice(0, -other_groups);
  }
  return rest + group + made;
};
// TristateTrue, TristateFalse, TristateUseDefault.
const tristate = (v, otherwise) => {
  const n = int(v, -2);
  return n === -2 ? otherwise : n === 0 ? false : n === -1 ? true : raise(5);
};
// The whole digits and the decimal ones of n times ten to the power of `shift`: half away from zero, by the digits that
// the number shows.
const fixed_digits = (n, places, shift) => {
  const plain = `${abs(n)}`, mark = plain.indexOf(".") < 0 ? plain.length : plain.indexOf(".");
  // Most have no more digits than are wanted.
  if (shift === 0 && plain.length - mark - 1 <= places && !plain.includes("e")) {
    return [plain.slice(0, mark), plain.slice(mark + 1).padEnd(places, "0")];
  }
  const [shown, power] = abs(n).toExponential().split("e"), digits = shown.replace(".", "");
  const cut = +power + 1 + shift + places;
  const kept = cut > 0 ? digits.slice(0, cut).padEnd(cut, "0") : "0", up = cut >= 0 && digits[cut] >= "5" ? 1n : 0n;
  const made = `${BigInt(kept) + up}`.padStart(places + 1, "0"), point = made.length - places;
  return [made.slice(0, point), made.slice(point)];
};
const formatted = (v, places, leading, parentheses, grouping, around, shift) => {
  const value = value_of(v), style = numbers(), count = int(optional(places, -1), -1);
  if (value === null) return raise(94);
  if (count < -1 || count > 255) return raise(5);
  const n = number_of(value);
  const shown = count === -1 ? (around === in_currency ? style.places : 2) : count;
  let [whole, rest] = fixed_digits(n, shown, shift);
  const is_negative = n < 0 && /[1-9]/.test(whole + rest);
  if (whole === "0" && rest !== "" && !tristate(leading, true)) whole = "";
  if (tristate(grouping, true)) whole = grouped(whole, style);
  const body = rest === "" ? whole : whole + style.mark + rest;
  return around(body, is_negative, tristate(parentheses, undefined), style);
};
const signed = (body, is_negative, parentheses, style) =>
  !is_negative ? body : parentheses ? `(${body})` : style.minus + body;
const in_percent = (body, ...rest) => signed(body + "%", ...rest);
// A negative amount stands in parentheses where dollars are meant, and no other word is given.
const in_currency = (body, is_negative, parentheses, style) => {
  const { symbol, gap, is_symbol_first } = style, made = is_symbol_first ? symbol + gap + body : body + gap + symbol;
  return signed(made, is_negative, parentheses ?? symbol === "$", style);
};
const formats = {
  formatnumber: (v, places, leading, parentheses, grouping) =>
    formatted(v, places, leading, parentheses, grouping, signed, 0),
  formatpercent: (v, places, leading, parentheses, grouping) =>
    formatted(v, places, leading, parentheses, grouping, in_percent, 2),
  formatcurrency: (v, places, leading, parentheses, grouping) =>
    formatted(v, places, leading, parentheses, grouping, in_currency, 0),
};
)js";

}  // namespace zelto::script::vbscript
