// Members of objects, looked up by name when they are used, and instances of classes.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kMembersSource =
    uR"js(
// Wrappers of automation objects can be called, and are functions to the language.
const is_host = v => typeof v === "function" && getPrototypeOf(v) === host_prototype;

class Instance { }
delete Instance.prototype.constructor;
setPrototypeOf(Instance.prototype, null);

// The keys of a name, by the name as it is written.
let keys_by_name = { __proto__: null }, key_count = 0;
const kMostKeys = 4096;
const keys_of = name => keys_by_name[name] ?? add_keys(name);
const add_keys = name => {
  const key = name.toLowerCase();
  if (++key_count > kMostKeys) {  // names that a page makes
    keys_by_name = { __proto__: null };
    key_count = 0;
  }
  return keys_by_name[name] = { name, key, get: `get ${key}`, let: `let ${key}`, set: `set ${key}` };
};

// Members of a class a second time: each key with that of its other name.
const again = (prototype, ...keys) => {
  for (let i = 0; i < keys.length; i += 2) defineProperty(prototype, keys[i + 1], { value: prototype[keys[i]] });
};
const is_reference = v => v instanceof Ref || v instanceof Temp;
const plain = v => is_reference(v) ? v.v : v;
const plain_arguments = given => {
  for (let i = 0; i < given.length; i++) if (is_reference(given[i])) return given.map(plain);
  return given;
};
const byref = (f, places) => {
  defineProperty(f, " refs", { value: places });
  return f;
};
// A procedure gets references where it assigns to its parameter, and values where it does not.
const invoke = (f, self, given) => {
  const places = f[" refs"];
  if (places === undefined) return apply(f, self, plain_arguments(given));
  return apply(f, self, given.map((v, i) => {
    if (!places.includes(i)) return plain(v);
    return is_reference(v) ? v : temp(v);
  }));
};
// What stands in a variable. What GetRef gives of a procedure takes as many arguments as that has, a function of
// JavaScript any number.
const invoke_value = (f, self, given) =>
  f[" exact"] === undefined || given.length === f.length ? invoke(f, self, given) : raise(450);
const invoke_method = (f, self, given) =>
  given.length === f.length || f[" any"] !== undefined ? invoke(f, self, given) : raise(450);

const is_method = (o, key, member) =>
  typeof member === "function" && !hasOwn(o, key) && (key !== "constructor" || member.prototype === undefined);
const get_member = (o, names, given) => {
  const member = o[names.key];
  if (member !== undefined && is_method(o, names.key, member)) return invoke_method(member, o, given);
  if (hasOwn(o, names.key)) return given.length === 0 ? member : ix(member, ...plain_arguments(given));
  const getter = o[names.get];
  if (getter === undefined) return no_member(o, names);
  if (getter.length === 0 && given.length > 0) return ix(apply(getter, o, []), ...plain_arguments(given));
  return invoke_method(getter, o, given);
};
const no_member = (o, names) =>
  raise(o[names.let] === undefined && o[names.set] === undefined ? 438 : 450, names.name);
const put_member = (o, name, v, given, is_set) => {
  const names = keys_of(name), setter = is_set ? o[names.set] : o[names.let];
  if (setter !== undefined) return void invoke_method(setter, o, [...given, v]);
  if (!hasOwn(o, names.key)) return raise(438, name);
  if (given.length === 0) store(o, names.key, v);
  else if (is_set) setix(o[names.key], v, ...plain_arguments(given));
  else putix(o[names.key], v, ...plain_arguments(given));
};
const default_of = (o, given) => {
  const key = o[" default"];
  return key === undefined ? raise(438) : get_member(o, keys_of(key), given);
};

// An object of JavaScript: the name as it is written, or in any other letters.
const name_in = (o, name) => {
  if (name in o) return name;
  const key = name.toLowerCase();
  for (let at = o; at !== null; at = getPrototypeOf(at)) {
    for (const own of Reflect.ownKeys(at)) {
      if (typeof own === "string" && own.toLowerCase() === key) return own;
    }
  }
  return undefined;
};
const get_of_script = (o, name, given) => {
  const own = name_in(o, name);
  if (own === undefined) return raise(438, name);
  const member = o[own];
  if (typeof member === "function" && !is_host(member)) return invoke_value(member, o, given);
  return given.length === 0 ? member : ix(member, ...plain_arguments(given));
};
const need_object = o => o === nothing ? raise(91) : raise(424);
// The bytes of a text go out as such.
const is_binary_write = (name, given) =>
  name.length === 11 && typeof given[0] === "string" && name.toLowerCase() === "binarywrite";
const is_regexp_name = given => typeof given[0] === "string" && given[0].toLowerCase() === "vbscript.regexp";
const get = (o, name, ...given) => {
  if (o instanceof Instance) return get_member(o, keys_of(name), given);
  if (is_host(o)) {
    if (name.length === 5 && o === prelude.response() && given.length === 1 && name.toLowerCase() === "write") {
      return write(plain(given[0]));
    }
    if (name.length === 12 && name.toLowerCase() === "createobject" && is_regexp_name(given)) return regexp();
    if (is_binary_write(name, given)) return native.invoke(o, name, Uint8Array.from(bytes_of(given[0]), byte_in));
    return native.invoke(o, name, ...plain_arguments(given));
  }
  return is_object(o) && o !== nothing ? get_of_script(o, name, given) : need_object(o);
};
// What an object of the host has assigned to its arguments, by their numbers. It is taken right behind the call.
const answers = [];
const answer = (place, old) => hasOwn(answers, place) ? answers[place] : old;
const kMostPlaces = 31;
const ask_host = (o, name, variables, given, plain) => {
  let places = variables;
  for (let i = 0; i < given.length && i < kMostPlaces; i++) if (is_reference(given[i])) places |= 1 << i;
  const result = native.ask(o, name, places, answers, ...plain);
  for (let i = 0; i < answers.length; i++) {
    if (is_reference(given[i]) && hasOwn(answers, i)) given[i].v = answers[i];
  }
  if (variables === 0) answers.length = 0;
  return result;
};
// With arguments that are references, or variables, whose places are bits. The program assigns the answers to these
// afterwards.
const ask = (o, name, variables, ...given) => {
  if (!is_host(o) || name.length === 12 && name.toLowerCase() === "createobject" || is_binary_write(name, given)) {
    return get(o, name, ...given);
  }
  const plain = plain_arguments(given);
  return plain === given ? native.ask(o, name, variables, answers, ...given) : ask_host(o, name, variables, given, plain);
};
const call = get;
const put = (o, name, v, given, is_set) => {
  if (o instanceof Instance) put_member(o, name, v, given, is_set);
  else if (is_host(o)) native.put(o, name, v, ...plain_arguments(given));
  else if (!is_object(o) || o === nothing) need_object(o);
  else put_in_script(o, name, v, given, is_set);
};
const put_in_script = (o, name, v, given, is_set) => {
  if (given.length > 0) put_indexed(get_of_script(o, name, []), v, plain_arguments(given), is_set);
  else o[name_in(o, name) ?? name] = pin(v);
};
const let_ = (o, name, v, ...given) => put(o, name, val(v), given, false);
const set = (o, name, v, ...given) => put(o, name, setv(v), given, true);

const default_value = o => {
  if (o === nothing) return raise(91);
  if (o instanceof Instance) return default_of(o, []);
  if (is_host(o)) return native.default_value(o);
  if (typeof o === "function") return invoke_value(o, undefined, []);
  if (o instanceof Date) return date_of(native.date_of(o));
  const value = typeof o.valueOf === "function" ? o.valueOf() : o;
  return typeof value === "object" || typeof value === "function" ? String(value) : value;
};
const has_default = o => {
  if (o === nothing) return false;
  if (o instanceof Instance) return o[" default"] !== undefined;
  return !is_host(o) || native.has_default(o);
};
const is_null_host = o => native.has_default(o) && value_of(o) === null;
const object_name = o => {
  if (o === nothing) return "Nothing";
  if (o instanceof Instance) return o[" name"] ?? "Object";
  if (is_host(o)) return native.kind_name(o);
  return typeof o === "function" ? "Object" : "JScriptTypeInfo";
};

// No class of that name, or one that cannot be made.
const kNoClass = [0x800401F3 | 0, 0x80040154 | 0];
const create = name => {
  const wanted = text(name);
  if (wanted.toLowerCase() === "vbscript.regexp") return regexp();
  try {
    return prelude.create(wanted);
  } catch (error) {
    native.check();
    if (kNoClass.includes(error.number)) return raise(429, wanted);
    throw error;
  }
};
const getref = f => typeof f === "function" && !is_host(f) ? f : raise(5);
const exact = f => f[" exact"] === undefined ? defineProperty(f, " exact", { value: true }) : f;
)js";

}  // namespace zelto::script::vbscript
