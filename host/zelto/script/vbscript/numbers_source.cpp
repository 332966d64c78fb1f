// Functions of numbers.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kNumbersSource =
    uR"js(
// Of a value that may be Null, which is the answer then.
const of_number = f => v => {
  if (typeof v === "number") return f(v);
  const value = value_of(v);
  return value === null ? null : f(number_of(value), value);
};
const to_double = f => of_number(n => double_of(f(n)));
// Abs, Int and Fix answer what they are given.
const same_kind = f => of_number((n, value) => {
  if (value instanceof Cur) return currency_of(amount_of_number(f(n)));
  const kind = value === undefined ? kind_of_number(n) : arithmetic_kind(value);
  return number_of_kind(kind, f(n));
});
const digits_in = (base, width) => of_number((n, value) => {
  const whole = to_long(n), is_wide = whole < -32768 || (value !== undefined && value.kind === kLong);
  const bits = whole >= 0 ? whole : is_wide ? whole + 4294967296 : whole + 65536;
  return bits.toString(base).toUpperCase();
});

// The generator that is documented: the next number is made of the last one, 24 bits of it.
const kFirstSeed = 0x50000;
let seed = kFirstSeed;
const next_seed = () => { seed = (Math.imul(seed, 0x43FD43FD) + 0xC39EC3) & 0xFFFFFF; };
const bits_of_single = n => {
  const view = new DataView(new ArrayBuffer(4));
  view.setFloat32(0, n);
  return view.getUint32(0);
};
const words_of_double = n => {
  const view = new DataView(new ArrayBuffer(8));
  view.setFloat64(0, n);
  return [view.getUint32(0), view.getUint32(4)];
};
const rnd = v => {
  const n = is_given(v) ? num(v) : 1;
  if (n < 0) {
    const bits = bits_of_single(n);
    seed = (bits + (bits >>> 24)) & 0xFFFFFF;
  }
  if (n !== 0) next_seed();
  return new Sng(seed / 16777216);
};
// The two middle bytes of the seed come from the number.
const randomize = v => {
  const n = is_given(v) ? num(v) : timer().v, [high] = words_of_double(n);
  const bits = (high & 0xFFFF) ^ (high >>> 16);
  seed = (seed & 255) | (bits << 8);
};

const round = (v, places) => {
  const value = value_of(v), digits = int(places, 0);
  if (value === null) return null;
  if (digits < 0) return raise(5);
  const n = number_of(value);
  if (value instanceof Cur) return currency_of(rounded_amount(value.n, digits));
  const kind = arithmetic_kind(value);
  if (kind === kInteger || kind === kLong || kind === kByte) return value === undefined ? 0 : number_of_kind(kind, n);
  return number_of_kind(kind === kDate ? kDouble : kind, round_to(n, digits));
};
// By the decimal digits that the number shows, half to the even one.
const round_to = (n, digits) => {
  if (digits > 22) return n;
  const scaled = digits === 0 ? n : +`${n}e${digits}`;
  if (scaled !== scaled || abs(scaled) > 4503599627370496) return n;
  const rounded = round_half_even(scaled);
  return digits === 0 ? rounded : +`${rounded}e-${digits}`;
};
const rounded_amount = (n, digits) => {
  if (digits >= 4) return n;
  const unit = 10n ** BigInt(4 - digits), low = n / unit, twice = 2n * (n < 0n ? -(n % unit) : n % unit);
  const up = twice > unit || (twice === unit && low % 2n !== 0n);
  return (up ? low + (n < 0n ? -1n : 1n) : low) * unit;
};

const number_functions = {
  abs: same_kind(abs), int: same_kind(floor), fix: same_kind(n => trunc(n) + 0),
  sgn: of_number(n => n > 0 ? 1 : n < 0 ? -1 : 0),
  atn: to_double(Math.atan), cos: to_double(Math.cos), sin: to_double(Math.sin), tan: to_double(Math.tan),
  exp: to_double(Math.exp),
  log: to_double(n => n > 0 ? Math.log(n) : raise(5)),
  sqr: to_double(n => n >= 0 ? Math.sqrt(n) : raise(5)),
  hex: digits_in(16), oct: digits_in(8),
  rnd, randomize, round,
  rgb: (red, green, blue) => {
    const part = v => {
      const n = int(v);
      return n < 0 ? raise(5) : n > 255 ? 255 : n;
    };
    return part(red) + part(green) * 256 + part(blue) * 65536;
  },
};
)js";

}  // namespace zelto::script::vbscript
