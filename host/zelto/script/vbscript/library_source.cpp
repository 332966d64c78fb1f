// All parts put together, and what the host and compiled programs get of them.
#include "script/vbscript/library.h"
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kLibrarySource =
    uR"js(
const forn = (from, to, step) => {
  const start = value_of(from), at = num(start), last = num(to), by = num(step ?? 1);
  const kind = start === undefined ? kInteger : arithmetic_kind(start);
  const is_plain = kind === kInteger || kind === kLong || typeof start === "number";
  const is_fraction = is_int(at) && !is_int(by);
  if (is_plain && !is_fraction) return { at, to: last, step: by, box: undefined };
  const counted = is_plain ? kDouble : kind;
  return { at, to: last, step: by, box: n => number_of_kind(counted, n) };
};
// What Next makes of a counter that the loop's statements have changed.
const next = (v, by) => {
  const value = value_of(v);
  return value === null ? raise(94) : add(value, by);
};
const ref = (get, set) => new Ref(get, set);
const refix = (a, ...indices) =>
  new Ref(() => ix(a, ...indices), v => { is_object(v) ? setix(a, v, ...indices) : putix(a, v, ...indices); });
// A parameter that is assigned to, by reference and by value.
const arg = v => is_reference(v) ? v : temp(v);
const own = v => {
  const given = plain(v);
  return given instanceof VbArray ? copy_of_array(given) : given;
};

// What ExecuteGlobal has declared: as code that is compiled later reads it, and by the folded name what it is called.
let declared_names = "", declared = { __proto__: null };
const declare = names => {
  declared_names += names;
  for (const line of names.split("\n")) {
    const [, folded, name] = line.split("\t");
    if (name !== undefined) declared[folded] = name;
  }
};
const forget_declared = () => {
  declared_names = "";
  declared = { __proto__: null };
};
const made = name => {
  const known = declared[text_of(value_of(name)).toLowerCase()], found = known && globalThis[known];
  return typeof found === "function" ? exact(found) : undefined;
};
// Under Option Explicit: a name that may have been declared since.
const unknown = name => declared[name.toLowerCase()] === undefined ? raise(500, name) : undefined;
// Of Eval, Execute and ExecuteGlobal.
const compile = (code, kind, names) => {
  const made = native.compile(text_of(value_of(code)), kind, declared_names + names, is_counting);
  if (typeof made === "string") return made;
  throw new VbError(made, native.compile_words(made), "Microsoft VBScript compilation error");
};

const page_text = v => {
  if (typeof v === "string") return v;
  const value = value_of(v);
  return value === null ? "" : text_of(value);
};
const write = v => { prelude.put(page_text(v)); };

const refused = (number, name) => () => raise(number, name);
const fn = {
  __proto__: null, ...conversions, ...inspections, ...array_functions, ...string_functions, ...byte_functions,
  ...number_functions, ...date_functions, ...date_texts, ...formats,
  createobject: create, getobject: refused(429), getref,
  msgbox: refused(70, "MsgBox"), inputbox: refused(70, "InputBox"), loadpicture: refused(70, "LoadPicture"),
  scriptengine: () => "VBScript", scriptenginemajorversion: () => 5, scriptengineminorversion: () => 8,
  scriptenginebuildversion: () => 0,
};
const vb = {
  __proto__: null, nothing, missing, add, sub, mul, div, idiv, mod, pow, neg, cat, not, and, or, xor, eqv, imp, is, eq,
  ne, lt, gt, le, ge, cond, num, forn, next, val, setv, ref, temp, refix, arg, own, byref, dim, redim, erase, ix, putix, setix, ix1, put1, each,
  get, call, ask, answer, answers, let: let_, set, create, Instance, VbArray, Double: Dbl, make, terminate,
  count: count_references, hold, drop, keep, swap, pool, drain, after, settle, leave,
  raise, caught, not_begun, once, err, clear, fn, getref, exact, again,
  regexp, write, out: write, text: page_text,
  compile, declare, made, unknown,
  // Of plain numbers.
  cos: n => Math.cos(n), log: n => Math.log(n), sin: n => Math.sin(n), sqrt: n => Math.sqrt(n), tan: n => Math.tan(n),
  // Literals that no plain number can stand for.
  date: v => new Dat(v), double: v => new Dbl(v), long: v => new Lng(v),
};

// --- for the host

const begin = () => {
  seed = kFirstSeed;
  chosen_locale = 0;
  clear();
  forget_references();
  answers.length = 0;
  forget_declared();
};
// What has a type of its own outside of the script: [type, value …]; undefined for anything else.
const pack = v => {
  if (v instanceof Instance) return void pin(v);
  if (v instanceof Cur) return [kCurrency, `${v.n}`];
  if (v instanceof Num) return [v.kind, v.v];
  if (v instanceof VbArray) return [kVariantArray, v.b, v.d];
  if (v === nothing) return [kObject];
  if (v === missing) return [kError];
  if (v instanceof ByteString) return [kByteArray, Uint8Array.from(v.b, byte_in)];
  return is_reference(v) ? [-1, v.v] : undefined;
};
// A number of the host's of that type, an amount as text.
const box = (kind, n) => {
  switch (kind) {
    case kCurrency: return new Cur(BigInt(n));
    case kDate: return new Dat(n);
    case kSingle: return new Sng(n);
    case kByte: return new Byt(n);
    case kLong: return new Lng(n);
    default: return new Dbl(n);
  }
};
// An instance as components see it: 0 is no member of that name, 1 a method, 2 something that is read; undefined for
// what is no instance.
const member_kind = (o, name) => {
  if (!(o instanceof Instance)) return undefined;
  const names = keys_of(name), member = o[names.key];
  if (member !== undefined && is_method(o, names.key, member)) return 1;
  const is_there = hasOwn(o, names.key) || o[names.get] !== undefined || o[names.let] !== undefined ||
    o[names.set] !== undefined;
  return is_there ? 2 : 0;
};
// Without a name, the default member. Components give their functions more than some of them take, as to a procedure
// outside of classes.
const get_from_host = (o, name, ...given) => {
  if (name === undefined) return default_of(o, given);
  const names = keys_of(name), member = o[names.key];
  const is_called = member !== undefined && is_method(o, names.key, member);
  return is_called ? invoke(member, o, given) : get_member(o, names, given);
};
const put_from_host = (o, name, is_set, v, ...given) => {
  put_member(o, name ?? o[" default"] ?? raise(438), is_set ? setv(v) : val(v), given, is_set);
};
const invoke_from_host = (f, self, ...given) => invoke(f, self, given);
// An argument that its caller wants back.
const lent = v => {
  const made = temp(v);
  made.given = v;
  return made;
};
const array = (bounds, elements) => new_array(elements, bounds, false);

for (const made of [Num, Lng, Dbl, Byt, Sng, Cur, Dat, ByteString, VbArray, Ref, Temp, CountedTemp, Singular, VbError,
  Instance, ErrObject, Items, Matches, SubMatches, Match, RegExpObject, Steps]) {
  for (const key of Reflect.ownKeys(made.prototype)) {
    const { value } = Object.getOwnPropertyDescriptor(made.prototype, key);
    if (typeof value === "function") freeze(value);
  }
  freeze(made.prototype);
  freeze(made);
}
for (const part of [fn, vb]) {
  for (const key in part) if (typeof part[key] === "function") freeze(part[key]);
  freeze(part);
}
return [vb, begin, pack, box, array, nothing, missing, member_kind, get_from_host, put_from_host, invoke_from_host,
  lent, regexp_from_host];
)js";

std::u16string library_source() {
  std::u16string source = u"(function (native, prelude, host_prototype) { \"use strict\";";
  for (const std::u16string_view part :
       {kValuesSource, kConversionsSource, kTextSource, kArithmeticSource, kLogicSource, kArraysSource, kMembersSource,
        kErrorsSource, kStringsSource, kBytesSource, kNumbersSource, kDatesSource, kDateTextSource, kFormatsSource,
        kRegExpSource, kLifetimesSource, kLibrarySource}) {
    source += part;
  }
  return source + u"})";
}

}  // namespace zelto::script::vbscript
