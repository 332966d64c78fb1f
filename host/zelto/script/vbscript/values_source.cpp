// Kinds of values that JavaScript does not have, and errors.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kValuesSource =
    uR"js(
const { Array, BigInt, Error, Function, Map, Math, Number, Object, Reflect, RegExp, String, Uint8Array } = globalThis;
const { create: create_object, defineProperty, freeze, getPrototypeOf, hasOwn, setPrototypeOf } = Object;
const { apply, construct } = Reflect;
const { abs, floor, fround, trunc } = Math;
const { fromCharCode } = String;
const { isFinite, isInteger } = Number;
const is_array = Array.isArray;

// Kinds have the numbers of VarType.
const kEmpty = 0, kNull = 1, kInteger = 2, kLong = 3, kSingle = 4, kDouble = 5, kCurrency = 6, kDate = 7, kString = 8,
  kObject = 9, kError = 10, kBoolean = 11, kByte = 17, kArray = 8192, kVariantArray = 8204, kByteArray = 8209;

// Not frozen, which takes longer than all else that is done with one: no name of VBScript's leads into it.
class Num {
  constructor(v) { this.v = v; }
  valueOf() { return this.v; }
  toString() { return text_of(this); }
  toJSON() { return this.v; }
}
// Those that sums make have a constructor of their own, which takes less time than one that calls another.
class Lng { constructor(v) { this.v = v; } }
class Dbl { constructor(v) { this.v = v; } }
for (const made of [Lng, Dbl]) setPrototypeOf(made.prototype, Num.prototype);
class Byt extends Num { }
class Sng extends Num { }
class Cur extends Num {
  constructor(n) {
    super(Number(n) / 10000);
    this.n = n;
  }
}
class Dat extends Num {
  toJSON() { return text_of(this); }
}
for (const [made, kind] of [[Lng, kLong], [Dbl, kDouble], [Byt, kByte], [Sng, kSingle], [Cur, kCurrency], [Dat, kDate]]) {
  defineProperty(made.prototype, "kind", { value: kind });
}
class ByteString {
  constructor(b) { this.b = b; }
  toString() { return text_of_bytes(this.b); }
}
// `n` is how many elements one index finds, `m` and `h` how many two do; 0 where there are other dimensions, or none yet.
const shape = (array, d, b) => {
  array.d = d;
  array.b = b;
  array.n = b.length === 1 ? d.length : 0;
  array.m = b.length === 2 ? b[0] + 1 : 0;
  array.h = b.length === 2 ? b[1] + 1 : 0;
};
class VbArray {
  constructor(d, b, fixed) {
    shape(this, d, b);
    this.fixed = fixed;
  }
  get length() { return this.d.length; }
  [Symbol.iterator]() { return this.d[Symbol.iterator](); }
}
class Ref {
  constructor(get, set) { this.get = get; this.set = set; }
  get v() { return this.get(); }
  set v(value) { this.set(value); }
}
class Temp {
  constructor(v) { this.v = v; }
}
class Singular {
  constructor(name) { this.name = name; freeze(this); }
}
const nothing = new Singular("Nothing"), missing = new Singular("Missing");

// --- errors

const kRuntime = "Microsoft VBScript runtime error";
const kWords = {
  __proto__: null,
  5: "Invalid procedure call or argument", 6: "Overflow", 7: "Out of memory", 9: "Subscript out of range",
  10: "This array is fixed or temporarily locked", 11: "Division by zero", 13: "Type mismatch",
  14: "Out of string space", 17: "Can't perform requested operation", 28: "Out of stack space",
  35: "Sub or Function not defined", 48: "Error in loading DLL", 51: "Internal error", 52: "Bad file name or number",
  53: "File not found", 54: "Bad file mode", 55: "File already open", 57: "Device I/O error",
  58: "File already exists", 61: "Disk full", 62: "Input past end of file", 67: "Too many files",
  68: "Device unavailable", 70: "Permission denied", 71: "Disk not ready", 74: "Can't rename with different drive",
  75: "Path/File access error", 76: "Path not found", 91: "Object variable not set", 92: "For loop not initialized",
  94: "Invalid use of Null", 322: "Can't create necessary temporary file", 424: "Object required",
  429: "ActiveX component can't create object", 430: "Class doesn't support Automation",
  432: "File name or class name not found during Automation operation",
  438: "Object doesn't support this property or method", 440: "Automation error",
  445: "Object doesn't support this action", 446: "Object doesn't support named arguments",
  447: "Object doesn't support current locale setting", 448: "Named argument not found", 449: "Argument not optional",
  450: "Wrong number of arguments or invalid property assignment", 451: "Object not a collection",
  453: "Specified DLL function not found", 455: "Code resource lock error",
  457: "This key is already associated with an element of this collection",
  458: "Variable uses an Automation type not supported in VBScript",
  462: "The remote server machine does not exist or is unavailable", 481: "Invalid picture",
  500: "Variable is undefined", 501: "Illegal assignment", 502: "Object not safe for scripting",
  503: "Object not safe for initializing", 504: "Object not safe for creating",
  505: "Invalid or unqualified reference", 506: "Class not defined", 507: "An exception occurred",
  5008: "Illegal assignment", 5016: "Regular Expression object expected", 5017: "Syntax error in regular expression",
  5018: "Unexpected quantifier", 5019: "Expected ']' in regular expression",
  5020: "Expected ')' in regular expression", 5021: "Invalid range in character set",
  32811: "Element not found", 32812: "The specified date is not available in the current locale's calendar",
};
// Also those of what does not compile.
const words_of = number => kWords[number] ?? (native.compile_words(number) || "Unknown runtime error");
// Facility "control", in which scripts count their errors: what is told of 13 is 800A000D.
const result_of = number => number >= 0 && number <= 65535 ? (0x800A0000 | number) : number | 0;
class VbError extends Error {
  constructor(number, description, source = kRuntime) {
    super(description);
    defineProperty(this, "name", { value: "VBScriptError" });
    defineProperty(this, "number", { value: result_of(number) });
    defineProperty(this, "source", { value: source });
  }
}
const raise = (number, detail) => {
  throw new VbError(number, detail === undefined ? words_of(number) : `${words_of(number)}: '${detail}'`);
};

// --- numbers by their kind, which gives way to a wider one

const is_int = n => (n | 0) === n;
const is_short = n => n >= -32768 && n <= 32767;
const double_of = n => (n | 0) === n ? new Dbl(n) : n - n === 0 ? n : raise(6);
const long_of = n => {
  if ((n | 0) !== n) return double_of(n);
  return is_short(n) ? new Lng(n) : n;
};
const single_of = n => {
  const v = fround(n);
  return v - v === 0 ? new Sng(v) : raise(6);
};
const kMostAmount = 2n ** 63n;
const currency_of = n => n >= -kMostAmount && n < kMostAmount ? new Cur(n) : raise(6);
const kFirstDay = -657434, kDayBeyond = 2958466;
const date_of = n => n > kFirstDay - 1 && n < kDayBeyond ? new Dat(n) : raise(6);
const byte_of = n => (n & 255) === n ? new Byt(n) : n | 0;
const kind_of_number = n => (n | 0) !== n ? kDouble : is_short(n) ? kInteger : kLong;
const number_of_kind = (kind, n) => {
  switch (kind) {
    case kInteger: return (n | 0) === n ? n : double_of(n);
    case kLong: return long_of(n);
    case kByte: return (n | 0) === n ? byte_of(n) : double_of(n);
    case kSingle: return single_of(n);
    case kDate: return date_of(n);
    case kCurrency: return currency_of(amount_of_number(n));
    default: return double_of(n);
  }
};
// Half to the even neighbour.
const round_half_even = n => {
  const low = floor(n), rest = n - low;
  const up = rest > 0.5 || (rest === 0.5 && low % 2 !== 0);
  return (up ? low + 1 : low) + 0;
};
const to_long = n => {
  const rounded = round_half_even(n);
  return (rounded | 0) === rounded ? rounded | 0 : raise(6);
};
)js";

}  // namespace zelto::script::vbscript
