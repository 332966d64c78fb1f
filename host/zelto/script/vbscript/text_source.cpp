// Values as text, and texts of bytes.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kTextSource =
    uR"js(
// Beyond its digits a number is laid out with an exponent of two digits: 1E+15, 3.33333333333333E-02.
const laid_out = (n, most) => {
  const exponential = abs(n).toExponential(most - 1), e = exponential.indexOf("e");
  const exponent = +exponential.slice(e + 1);
  let digits = exponential[0] + exponential.slice(2, e), count = digits.length;
  while (count > 1 && digits.charCodeAt(count - 1) === 48) count--;
  digits = digits.slice(0, count);
  const sign = n < 0 ? "-" : "";
  if (exponent >= 0 && exponent < most) {
    if (count <= exponent + 1) return sign + digits.padEnd(exponent + 1, "0");
    return `${sign}${digits.slice(0, exponent + 1)}.${digits.slice(exponent + 1)}`;
  }
  if (exponent < 0 && count - 1 - exponent <= most) return `${sign}0.${"0".repeat(-1 - exponent)}${digits}`;
  const power = `${abs(exponent)}`.padStart(2, "0");
  return `${sign}${digits[0]}${count > 1 ? "." + digits.slice(1) : ""}E${exponent < 0 ? "-" : "+"}${power}`;
};
const kMostShort = 16;
const double_text = n => {
  if ((n | 0) === n) return `${n | 0}`;
  if (n - n !== 0) return n !== n ? "-1.#IND" : n > 0 ? "1.#INF" : "-1.#INF";
  const short = `${n}`;
  const is_short = short.length <= kMostShort && n < 1e15 && n > -1e15 && !short.includes("e");
  const made = is_short ? short : laid_out(n, 15);
  return with_mark(made);
};
const currency_text = n => {
  const digits = `${n < 0n ? -n : n}`.padStart(5, "0"), point = digits.length - 4;
  let end = digits.length;
  while (end > point && digits.charCodeAt(end - 1) === 48) end--;
  const whole = digits.slice(0, point), rest = digits.slice(point, end);
  return with_mark(`${n < 0n ? "-" : ""}${whole}${rest === "" ? "" : "." + rest}`);
};
const with_mark = made => {
  if (!made.includes(".")) return made;
  const mark = locale_of().mark;
  return mark === "." ? made : made.replace(".", mark);
};

// What texts depend on: that of the page, unless the script has chosen one. Its number is asked for each time.
const kNeutral = 2048;
let chosen_locale = 0, known_locale = { lcid: kNeutral, mark: "." };
const locale = () => chosen_locale !== 0 ? chosen_locale : native.locale();
const locale_of = () => {
  const lcid = locale();
  if (known_locale.lcid !== lcid) known_locale = { lcid, mark: native.decimal_mark(lcid) };
  return known_locale;
};

const text_of = v => {
  switch (typeof v) {
    case "string": return v;
    case "number": return (v | 0) === v ? `${v | 0}` : double_text(v);
    case "boolean": return v ? "True" : "False";
    case "undefined": return "";
    case "bigint": return `${v}`;
  }
  if (v === null) return "";
  if (v instanceof Dat) return date_text(v.v);
  if (v instanceof Cur) return currency_text(v.n);
  if (v instanceof Sng) return with_mark(laid_out(v.v, 7));
  if (v instanceof Num) return double_text(v.v);
  if (v instanceof ByteString) return text_of_bytes(v.b);
  if (v instanceof Uint8Array) return text_of_bytes(bytes_of(v));
  return raise(13);
};

const pad2 = n => n < 10 ? `0${n}` : `${n}`;
const date_text = v => {
  const lcid = locale();
  if (lcid !== kNeutral) return native.date_text(v, lcid);
  const { day, second } = nearest_second(v);
  const time = `${pad2(floor(second / 3600))}:${pad2(floor(second / 60) % 60)}:${pad2(second % 60)}`;
  if (day === 0) return time;
  const { year, month, date } = civil(day);
  const written = `${`${year}`.padStart(4, "0")}-${pad2(month)}-${pad2(date)}`;
  return second === 0 ? written : `${written} ${time}`;
};

// --- bytes: of a string the low byte of each unit comes first

const text_of_bytes = b => {
  let made = "";
  for (let i = 0; i + 1 < b.length; i += 2) made += fromCharCode(b.charCodeAt(i) | b.charCodeAt(i + 1) << 8);
  return b.length % 2 === 0 ? made : made + fromCharCode(b.charCodeAt(b.length - 1));
};
const kChunk = 4096;
const bytes_of = v => {
  let made = "";
  if (v instanceof ByteString) return v.b;
  if (v instanceof Uint8Array) {
    for (let i = 0; i < v.length; i += kChunk) made += apply(fromCharCode, null, v.subarray(i, i + kChunk));
    return made;
  }
  const units = text(v);
  for (let i = 0; i < units.length; i++) {
    const unit = units.charCodeAt(i);
    made += fromCharCode(unit & 255, unit >> 8);
  }
  return made;
};
const byte_in = c => c.charCodeAt(0);
const of_bytes = b => b.length % 2 === 0 ? text_of_bytes(b) : new ByteString(b);
// A byte of what byte_source_of has given.
const byte_source_of = v => {
  if (typeof v === "string" || v instanceof ByteString || v instanceof Uint8Array) return v;
  return text(v);
};
const byte_length = v => typeof v === "string" ? v.length * 2 : v instanceof ByteString ? v.b.length : v.length;
const byte_at = (v, at) => {
  if (typeof v === "string") return at & 1 ? v.charCodeAt(at >> 1) >> 8 : v.charCodeAt(at >> 1) & 255;
  return v instanceof ByteString ? v.b.charCodeAt(at) : v[at];
};
// From `from` up to `to`.
const byte_slice = (v, from, to) => {
  if (typeof v === "string" && from % 2 === 0 && to % 2 === 0) return v.slice(from / 2, to / 2);
  let made = "";
  if ((to - from) % 2 !== 0) {
    for (let i = from; i < to; i++) made += fromCharCode(byte_at(v, i));
    return new ByteString(made);
  }
  for (let i = from; i < to; i += 2) made += fromCharCode(byte_at(v, i) | byte_at(v, i + 1) << 8);
  return made;
};
)js";

}  // namespace zelto::script::vbscript
