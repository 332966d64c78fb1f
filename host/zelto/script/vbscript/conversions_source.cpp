// From one kind of value to another.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kConversionsSource =
    uR"js(
const kind_of = v => {
  switch (typeof v) {
    case "undefined": return kEmpty;
    case "number": return kind_of_number(v);
    case "string": return kString;
    case "boolean": return kBoolean;
    case "bigint": return kDouble;
    case "object":
      if (v === null) return kNull;
      if (v instanceof Num) return v.kind;
      if (v instanceof VbArray) return kVariantArray;
      if (v instanceof ByteString) return kString;
      if (v === missing) return kError;
      if (v instanceof Uint8Array) return kByteArray;
      if (is_array(v)) return kVariantArray;
  }
  return kObject;
};
const is_object = v => kind_of(v) === kObject;

// What a value is where no object may be: that of its default member, and an array for itself.
const value_of = v => {
  if (typeof v === "object" ? v === null || v instanceof Num : typeof v !== "function") {
    return typeof v === "bigint" ? double_of(Number(v)) : v;
  }
  return value_of_object(v);
};
const value_of_object = v => {
  if (!is_object(v)) return v;
  for (let i = 0; i < 8; i++) {
    v = default_value(v);
    if (!is_object(v)) return value_of(v);
  }
  return raise(13);
};
// What Let assigns: an array is copied.
const val = v => {
  if (typeof v === "object" ? v === null || v instanceof Num : typeof v !== "function") return v;
  const value = value_of(v);
  return value instanceof VbArray ? copy_of_array(value) : value;
};
const setv = v => is_object(v) ? v : raise(424);

// A text of digits, a sign and a point, which most are, is read here; undefined for any other.
const plain_number = text => {
  const { length } = text;
  if (length === 0 || length > 15) return undefined;
  let at = text.charCodeAt(0) === 45 ? 1 : 0, digits = 0, points = 0;
  for (; at < length; at++) {
    const code = text.charCodeAt(at);
    if (code >= 48 && code <= 57) digits++;
    else if (code !== 46 || ++points > 1) return undefined;
  }
  return digits > 0 ? +text : undefined;
};
// Undefined where it is none, Infinity where it is too large.
const number_in = text => plain_number(text) ?? native.parse_number(text, locale());
const number_of_text = text => {
  const n = number_in(text);
  return n === undefined ? raise(13) : n === Infinity ? raise(6) : n;
};
const is_number_text = text => {
  const n = number_in(text);
  return n !== undefined && n !== Infinity;
};
// Of a value that is no object.
const number_of = v => {
  switch (typeof v) {
    case "number": return v;
    case "boolean": return v ? -1 : 0;
    case "undefined": return 0;
    case "string": return number_of_text(v);
  }
  if (v instanceof Num) return v.v;
  if (v instanceof ByteString) return number_of_text(text_of(v));
  return raise(v === null ? 94 : 13);
};
const num = v => typeof v === "number" ? v : number_of(value_of(v));
// As a Long, which most functions take; an omitted one has that value.
const int = (v, otherwise) => {
  if (typeof v === "number" && (v | 0) === v) return v | 0;
  return v === undefined || v === missing ? given_or(v, otherwise) : to_long(num(v));
};
const given_or = (v, otherwise) => v === missing && otherwise === undefined ? raise(450) : otherwise ?? 0;
const is_given = v => v !== undefined && v !== missing;
const optional = (v, otherwise) => is_given(v) ? v : otherwise;
// As a text; Null is none.
const text = v => {
  if (typeof v === "string") return v;
  const value = value_of(v);
  return value === null ? raise(94) : text_of(value);
};

// Currency is read from text with all its digits.
const amount_of_number = n => {
  const scaled = n * 10000;
  return scaled - scaled === 0 ? BigInt(round_half_even(scaled)) : raise(6);
};
const amount_of = v => {
  if (v instanceof Cur) return v.n;
  if (typeof v === "string") {
    const digits = native.parse_currency(v, locale());
    return digits === undefined ? raise(13) : BigInt(digits);
  }
  return amount_of_number(number_of(v));
};
const date_in = text => native.parse_date(text, locale());
const date_number = v => {
  if (v instanceof Dat) return v.v;
  const value = value_of(v);
  if (typeof value !== "string") return number_of(value);
  return date_in(value) ?? number_in(value) ?? raise(13);
};
const boolean_of = v => {
  switch (typeof v) {
    case "boolean": return v;
    case "number": return v !== 0;
    case "undefined": return false;
    case "string": {
      const small = v.toLowerCase();
      if (small === "true" || small === "#true#") return true;
      if (small === "false" || small === "#false#") return false;
      return number_of_text(v) !== 0;
    }
  }
  return number_of(v) !== 0;
};
const boolean = v => typeof v === "boolean" ? v : boolean_of(value_of(v));
// Of an If or a loop: Null is False.
const cond = v => {
  if (typeof v === "boolean") return v;
  const value = value_of(v);
  return value !== null && boolean_of(value);
};

const converted = v => {
  const value = value_of(v);
  return value === null ? raise(94) : value;
};
const conversions = {
  cbool: v => boolean_of(converted(v)),
  cbyte: v => {
    const n = round_half_even(number_of(converted(v)));
    return n >= 0 && n <= 255 ? new Byt(n) : raise(6);
  },
  cint: v => {
    if (typeof v === "number" && (v | 0) === v && is_short(v)) return v;
    const n = round_half_even(number_of(converted(v)));
    return is_short(n) ? n : raise(6);
  },
  clng: v => long_of(to_long(number_of(converted(v)))),
  csng: v => single_of(number_of(converted(v))),
  cdbl: v => double_of(number_of(converted(v))),
  ccur: v => {
    const value = converted(v);
    return value instanceof Cur ? value : currency_of(amount_of(value));
  },
  cdate: v => {
    const value = converted(v);
    return value instanceof Dat ? value : date_of(date_number(value));
  },
  cstr: v => typeof v === "string" ? v : text_of(converted(v)),
};

const kNames = {
  __proto__: null, 0: "Empty", 1: "Null", 2: "Integer", 3: "Long", 4: "Single", 5: "Double", 6: "Currency", 7: "Date",
  8: "String", 10: "Error", 11: "Boolean", 17: "Byte", 8204: "Variant()", 8209: "Byte()",
};
const inspections = {
  vartype: v => {
    const kind = kind_of(v);
    if (kind !== kObject || v === nothing) return kind;
    try {
      const value = default_value(v);
      return is_object(value) ? kObject : kind_of(value);
    } catch (error) {
      native.check();
      return kObject;
    }
  },
  typename: v => {
    const kind = kind_of(v);
    return kind === kObject ? object_name(v) : kNames[kind];
  },
  isarray: v => kind_of(v) >= kArray,
  isdate: v => {
    if (v instanceof Dat) return true;
    if (is_object(v) && !has_default(v)) return false;
    const value = value_of(v);
    return value instanceof Dat || (typeof value === "string" && date_in(value) !== undefined);
  },
  isempty: v => v === undefined || (is_host(v) && value_of(v) === undefined),
  isnull: v => v === null || (is_host(v) && is_null_host(v)),
  isnumeric: v => {
    if (typeof v === "number" || typeof v === "boolean" || v === undefined) return true;
    if (is_object(v) && !has_default(v)) return false;
    const value = value_of(v);
    if (typeof value === "string") return is_number_text(value);
    return value !== null && (typeof value !== "object" || (value instanceof Num && !(value instanceof Dat)));
  },
  isobject: is_object,
};
)js";

}  // namespace zelto::script::vbscript
