// Comparisons, and what is done to bits.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kLogicSource =
    uR"js(
// Less than, equal to, or greater than 0; null where one is Null. A number is less than any text, unless one of them is
// written down in the program: then the other one is taken for a value of that kind.
const compare = (a, b, written) => {
  const r = real_of(a), s = real_of(b);
  if (r === r && s === s) return r < s ? -1 : r > s ? 1 : 0;
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const kx = kind_of(x), ky = kind_of(y);
  if (kx === kString || ky === kString) return compare_text(x, kx, y, ky, written);
  if (kx === kCurrency && ky === kCurrency) return x.n < y.n ? -1 : x.n > y.n ? 1 : 0;
  const m = number_of(x), n = number_of(y);
  return m < n ? -1 : m > n ? 1 : 0;
};
const compare_text = (x, kx, y, ky, written) => {
  const is_text = (kx === kString || kx === kEmpty) && (ky === kString || ky === kEmpty);
  if (is_text || written === 2) {
    const s = text_of(x), t = text_of(y);
    return s < t ? -1 : s > t ? 1 : 0;
  }
  if (kx >= kArray || ky >= kArray) return raise(13);
  if (written !== 1) return kx === kString ? 1 : -1;
  const is_date = kx === kDate || ky === kDate;
  const m = is_date ? date_number(x) : number_of(x), n = is_date ? date_number(y) : number_of(y);
  return m < n ? -1 : m > n ? 1 : 0;
};
const eq = (a, b, written) => {
  if (typeof a === typeof b && (typeof a === "number" || typeof a === "string")) return a === b;
  const order = compare(a, b, written);
  return order === null ? null : order === 0;
};
const ne = (a, b, written) => {
  if (typeof a === typeof b && (typeof a === "number" || typeof a === "string")) return a !== b;
  const order = compare(a, b, written);
  return order === null ? null : order !== 0;
};
const lt = (a, b, written) => {
  if (typeof a === typeof b && (typeof a === "number" || typeof a === "string")) return a < b;
  const order = compare(a, b, written);
  return order === null ? null : order < 0;
};
const le = (a, b, written) => {
  if (typeof a === typeof b && (typeof a === "number" || typeof a === "string")) return a <= b;
  const order = compare(a, b, written);
  return order === null ? null : order <= 0;
};
const gt = (a, b, written) => {
  if (typeof a === typeof b && (typeof a === "number" || typeof a === "string")) return a > b;
  const order = compare(a, b, written);
  return order === null ? null : order > 0;
};
const ge = (a, b, written) => {
  if (typeof a === typeof b && (typeof a === "number" || typeof a === "string")) return a >= b;
  const order = compare(a, b, written);
  return order === null ? null : order >= 0;
};
const is = (a, b) => is_object(a) && is_object(b) ? a === b : raise(424);

// A boolean, an integer or Null.
const bits_of = v => {
  const value = value_of(v);
  if (value === null || typeof value === "boolean") return value;
  if (typeof value !== "string") return to_long(number_of(value));
  const n = number_in(value);
  return n === undefined ? boolean_of(value) : to_long(n);
};
const int_of = bits => typeof bits === "boolean" ? (bits ? -1 : 0) : bits;
// Two Bytes make a Byte, two of the narrow kinds an Integer, all others a Long.
const kNarrow = [kEmpty, kNull, kInteger, kBoolean, kByte];
const bits_in = (a, b, bits) => {
  const ka = kind_of(value_of(a)), kb = kind_of(value_of(b));
  if (ka === kByte && kb === kByte) return byte_of(bits & 255);
  return kNarrow.includes(ka) && kNarrow.includes(kb) ? bits : long_of(bits);
};
const not = a => {
  if (typeof a === "boolean") return !a;
  const x = bits_of(a);
  return x === null ? null : typeof x === "boolean" ? !x : bits_in(a, a, ~x);
};
const and = (a, b) => {
  if (typeof a === "boolean" && typeof b === "boolean") return a && b;
  if (typeof a === "number" && (a | 0) === a && typeof b === "number" && (b | 0) === b) return a & b;
  const x = bits_of(a), y = bits_of(b);
  if (x === null || y === null) return (x ?? y) === 0 ? 0 : (x ?? y) === false ? false : null;
  return typeof x === "boolean" && typeof y === "boolean" ? x && y : bits_in(a, b, int_of(x) & int_of(y));
};
const or = (a, b) => {
  if (typeof a === "boolean" && typeof b === "boolean") return a || b;
  if (typeof a === "number" && (a | 0) === a && typeof b === "number" && (b | 0) === b) return a | b;
  const x = bits_of(a), y = bits_of(b);
  if (x === null || y === null) return (x ?? y) === -1 ? -1 : (x ?? y) === true ? true : null;
  return typeof x === "boolean" && typeof y === "boolean" ? x || y : bits_in(a, b, int_of(x) | int_of(y));
};
const xor = (a, b) => {
  if (typeof a === "number" && (a | 0) === a && typeof b === "number" && (b | 0) === b) return a ^ b;
  const x = bits_of(a), y = bits_of(b);
  if (x === null || y === null) return null;
  return typeof x === "boolean" && typeof y === "boolean" ? x !== y : bits_in(a, b, int_of(x) ^ int_of(y));
};
const eqv = (a, b) => not(xor(a, b));
const imp = (a, b) => or(not(a), b);
)js";

}  // namespace zelto::script::vbscript
