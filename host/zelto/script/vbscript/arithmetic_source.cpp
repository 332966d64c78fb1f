// + - * / \ Mod ^ and &. Two plain numbers are done with at once; all other values take the long way.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kArithmeticSource =
    uR"js(
// A sum of two integers is one, or a Double. A sum of others that happens to be integral is a Double all the same. In this
// order of questions the engine makes of it what it makes of a + b.
const add = (a, b) => {
  if (typeof a === "number" && typeof b === "number") {
    const r = a + b;
    return (r | 0) !== r && r - r === 0 ? r : (a | 0) === a && (b | 0) === b ? r : double_of(r);
  }
  return typeof a === "string" && typeof b === "string" ? a + b : add_others(a, b);
};
const sub = (a, b) => {
  if (typeof a === "number" && typeof b === "number") {
    const r = a - b;
    return (r | 0) !== r && r - r === 0 ? r : (a | 0) === a && (b | 0) === b ? r : double_of(r);
  }
  return sub_others(a, b);
};
const mul = (a, b) => {
  if (typeof a === "number" && typeof b === "number") {
    const r = a * b;
    return (r | 0) !== r && r - r === 0 ? r : (a | 0) === a && (b | 0) === b ? r : double_of(r);
  }
  return mul_others(a, b);
};
const div = (a, b) => {
  if (typeof a === "number" && typeof b === "number" && b !== 0) {
    const r = a / b;
    return (r | 0) !== r && r - r === 0 ? r : double_of(r);
  }
  return div_others(a, b);
};
const idiv = (a, b) => {
  if (typeof a === "number" && (a | 0) === a && typeof b === "number" && (b | 0) === b && b !== 0) {
    const r = trunc(a / b);
    return (r | 0) === r ? r | 0 : raise(6);
  }
  return idiv_others(a, b);
};
const mod = (a, b) => {
  if (typeof a === "number" && (a | 0) === a && typeof b === "number" && (b | 0) === b && b !== 0) return (a % b) | 0;
  return mod_others(a, b);
};
const pow = (a, b) => {
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const base = number_of(x), exponent = number_of(y), r = base ** exponent;
  if (r !== r || (base === 0 && exponent < 0)) return raise(5);
  return double_of(r);
};
const neg = a => {
  if (typeof a === "number") return a === 0 ? 0 : -a;
  const x = value_of(a);
  if (x === null) return null;
  if (x instanceof Cur) return currency_of(-x.n);
  const kind = arithmetic_kind(x);
  return number_of_kind(kind === kByte ? kInteger : kind, 0 - number_of(x));
};

// An operand's kind: text is read as a Double, Empty is 0, True is -1.
const arithmetic_kind = x => {
  const kind = kind_of(x);
  return kind === kString ? kDouble : kind === kEmpty || kind === kBoolean ? kInteger : kind;
};
// The wider one of two kinds, in this order; a Long does not fit into a Single.
const kOrder = { __proto__: null, 17: 0, 2: 1, 3: 2, 4: 3, 5: 4, 6: 5, 7: 6 };
const wider = (a, b) => {
  if (a === b) return a;
  if ((a === kSingle && b === kLong) || (a === kLong && b === kSingle)) return kDouble;
  const x = kOrder[a], y = kOrder[b];
  return x === undefined || y === undefined ? raise(13) : x > y ? a : b;
};
// Of a plain number or a Double; NaN for anything else.
const real_of = v =>
  typeof v === "number" ? v : typeof v === "object" && v !== null && v.constructor === Dbl ? v.v : NaN;
const add_others = (a, b) => {
  const m = real_of(a), n = real_of(b);
  if (m === m && n === n) return double_of(m + n);
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const kx = kind_of(x), ky = kind_of(y);
  if (kx === kString && (ky === kString || ky === kEmpty)) return ky === kEmpty ? x : cat(x, y);
  if (ky === kString && kx === kEmpty) return y;
  const kind = wider(arithmetic_kind(x), arithmetic_kind(y));
  if (kind === kCurrency) return currency_of(amount_of(x) + amount_of(y));
  return number_of_kind(kind, number_of(x) + number_of(y));
};
const sub_others = (a, b) => {
  const m = real_of(a), n = real_of(b);
  if (m === m && n === n) return double_of(m - n);
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const kx = arithmetic_kind(x), ky = arithmetic_kind(y), kind = wider(kx, ky);
  if (kind === kCurrency) return currency_of(amount_of(x) - amount_of(y));
  const r = number_of(x) - number_of(y);
  return kx === kDate && ky === kDate ? double_of(r) : number_of_kind(kind, r);
};
const mul_others = (a, b) => {
  const m = real_of(a), n = real_of(b);
  if (m === m && n === n) return double_of(m * n);
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const kx = arithmetic_kind(x), ky = arithmetic_kind(y), kind = wider(kx, ky);
  // A Double has the wider range here.
  if (kind === kCurrency && kx !== kDouble && ky !== kDouble) return currency_of(scaled(amount_of(x) * amount_of(y)));
  return number_of_kind(kind === kDate || kind === kCurrency ? kDouble : kind, number_of(x) * number_of(y));
};
// A product of two amounts, back in ten-thousandths.
const scaled = product => {
  const low = product / 10000n, rest = product % 10000n, twice = rest < 0n ? -2n * rest : 2n * rest;
  if (twice < 10000n || (twice === 10000n && low % 2n === 0n)) return low;
  return product < 0n ? low - 1n : low + 1n;
};
const div_others = (a, b) => {
  const m = real_of(a), n = real_of(b);
  if (m === m && n === n && n !== 0) return double_of(m / n);
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const kind = wider(arithmetic_kind(x), arithmetic_kind(y)), divided = number_of(x), by = number_of(y);
  if (by === 0) return raise(divided === 0 ? 6 : 11);
  return kind === kSingle ? single_of(divided / by) : double_of(divided / by);
};
const integer_kind = (x, y) => {
  const kind = wider(arithmetic_kind(x), arithmetic_kind(y));
  return kind === kByte || kind === kInteger ? kind : kLong;
};
const idiv_others = (a, b) => {
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const divided = to_long(number_of(x)), by = to_long(number_of(y));
  if (by === 0) return raise(11);
  const r = trunc(divided / by) + 0;
  return (r | 0) === r ? number_of_kind(integer_kind(x, y), r) : raise(6);
};
const mod_others = (a, b) => {
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const divided = to_long(number_of(x)), by = to_long(number_of(y));
  return by === 0 ? raise(11) : number_of_kind(integer_kind(x, y), (divided % by) | 0);
};

const cat = (a, b) => {
  if (typeof a === "string") {
    if (typeof b === "string") return a + b;
    if (typeof b === "number" && (b | 0) === b) return a + (b | 0);
  }
  return cat_others(a, b);
};
const is_bytes = v => v instanceof ByteString || v instanceof Uint8Array;
const cat_others = (a, b) => {
  const x = value_of(a), y = value_of(b);
  if (x === null && y === null) return null;
  if (is_bytes(x) || is_bytes(y)) return of_bytes(bytes_of(x ?? "") + bytes_of(y ?? ""));
  return text_of(x) + text_of(y);
};
)js";

}  // namespace zelto::script::vbscript
