#include "script/world/prelude.h"

namespace zelto::script {
namespace {

constexpr std::u16string_view kSource =
    uR"js((function (native, prototypes, state) {
"use strict";
const define = (target, name, value) =>
  Object.defineProperty(target, name, { value, writable: true, configurable: true });
// What the page may replace later.
const { Error, Object, String, Symbol, TypeError, RangeError, ReferenceError, Array } = globalThis;
const { getPrototypeOf, hasOwn } = Object;
const { apply } = Reflect;
const { stringify } = JSON;
const root = Object.prototype;
const prototype = prototypes[0];

// The values of a collection, an array or anything else that can be stepped through, as an array.
const items = collection =>
  collection === null || collection === undefined ? [] : native.items(collection) || Array.from(collection);

// State lives in closures: the engine keeps the symbols of #private names for good.
function Enumerator(collection) {
  if (!new.target) return new Enumerator(collection);
  const list = items(collection);
  let at = 0;
  define(this, "atEnd", () => at >= list.length);
  define(this, "item", () => list[at]);
  define(this, "moveFirst", () => { at = 0; });
  define(this, "moveNext", () => { if (at < list.length) at++; });
}

// Arrays cross by value, one dimension inside the other; the first index is the outermost.
function VBArray(array) {
  if (!new.target) return new VBArray(array);
  const is_array = value => Array.isArray(value) || value instanceof Uint8Array;
  if (!is_array(array)) throw new TypeError("VBArray expected");
  const shape = [];
  for (let a = array; is_array(a); a = a[0]) shape.push(a.length);
  const out_of_range = () => new RangeError("Subscript out of range");
  const at = indices => indices.reduce((a, index) => {
    if (!(index >= 0 && index < a.length)) throw out_of_range();
    return a[Math.floor(index)];
  }, array);
  const ubound = (dimension = 1) => {
    if (!(dimension >= 1 && dimension <= shape.length)) throw out_of_range();
    return shape[Math.floor(dimension) - 1] - 1;
  };
  define(this, "dimensions", () => shape.length);
  define(this, "ubound", ubound);
  define(this, "lbound", dimension => { ubound(dimension); return 0; });
  define(this, "getItem", (...indices) => {
    if (indices.length !== shape.length) throw out_of_range();
    return at(indices);
  });
  // One flat array, the first index varying fastest.
  define(this, "toArray", () => {
    const total = shape.reduce((product, length) => product * length, 1);
    return Array.from({ length: total }, (_, n) => at(shape.map(length => {
      const index = n % length;
      n = (n - index) / length;
      return index;
    })));
  });
}

// The arrays that objects give are arrays of the language: they have what a VBArray has as well.
for (const name of ["dimensions", "ubound", "lbound", "getItem", "toArray"]) {
  define(Array.prototype, name, function (...given) { return new VBArray(this)[name](...given); });
}

// What errors and dates have in the older dialect. A year of the twentieth century has two digits there.
Object.defineProperty(Error.prototype, "description", {
  get() { return this.message; }, set(value) { define(this, "description", value); }, configurable: true });
define(Date.prototype, "getVarDate", function () { return new Date(this.getTime()); });
define(Date.prototype, "getYear", function () {
  const year = this.getFullYear();
  return year >= 1900 && year <= 1999 ? year - 1900 : year;
});
define(globalThis, "ScriptEngine", () => "JScript");
define(globalThis, "ScriptEngineMajorVersion", () => 5);
define(globalThis, "ScriptEngineMinorVersion", () => 8);
define(globalThis, "ScriptEngineBuildVersion", () => 0);
// Of such functions no page has the words: function_text.h.
define(globalThis, "CollectGarbage", () => void native);

// console writes to the host's log: texts as they are, other values so that they can be told apart.
const log_text = value => {
  try {
    if (typeof value === "string") return value;
    if (value instanceof Error) return `${value.name}: ${value.message}`;
    const is_plain = value !== null && typeof value === "object" &&
      (Array.isArray(value) || getPrototypeOf(value) === root);
    return is_plain ? stringify(value) : String(value);
  } catch {
    return "[object]";
  }
};
// Made when a page first asks for it: few do, and every page would wait for it.
const make_console = () => {
  const made = {};
  for (const level of ["log", "info", "warn", "error", "debug"]) {
    define(made, level, (...values) => { native.log(level, values.map(log_text).join(" ")); });
  }
  for (const name of ["assert", "clear", "count", "dir", "group", "groupEnd", "table", "time", "timeEnd", "trace"]) {
    define(made, name, () => void native);
  }
  return made;
};
Object.defineProperty(globalThis, "console", {
  get() { define(globalThis, "console", make_console()); return console; },
  set(value) { define(globalThis, "console", value); }, configurable: true });

// The messages are the engine's own.
const need_object = (object, callee) => {
  if (object === null || object === undefined) throw new TypeError(`${object} is not an object (evaluating '${callee}')`);
};
const not_a_function = (callee, parameters, member) => {
  const value = typeof member === "object" && member !== null ? "an object" : String(member);
  return new TypeError(`${callee} is not a function. (In '${callee}${parameters}', '${callee}' is ${value})`);
};

// object.Name(): a method is called, and a property of an automation object is read, as `rs.EOF()` means it.
const call = (object, name, receiver = "(…)") => {
  const member = owner(object, name, receiver)[name];
  if (typeof member === "function") return apply(member, object, []);
  if (native.has(object, name)) return member;
  throw not_a_function(`${receiver}.${name}`, "()", member);
};

// The methods that a page calls again and again, of a few objects: the host tells them, because asking it for one takes
// as long as a short call. Each is bound to its object, whatever it is called on.
let first, second, third, of_first, of_second, of_third, place = 0;
const methods_of = object =>
  object === first ? of_first : object === second ? of_second : object === third ? of_third : undefined;
const forget_methods = () => { first = second = third = of_first = of_second = of_third = undefined; };
const keep_method = (object, name, method) => {
  let methods = methods_of(object);
  if (methods === undefined) {
    methods = { __proto__: null };
    place = (place + 1) % 3;
    if (place === 0) { first = object; of_first = methods; }
    else if (place === 1) { second = object; of_second = methods; }
    else { third = object; of_third = methods; }
  }
  methods[name] = method;
};
// object.Name(…)
const owner = (object, name, receiver) => {
  need_object(object, `${receiver}.${name}`);
  const methods = methods_of(object);
  return methods !== undefined && methods[name] !== undefined ? methods : object;
};

// The global object is handed to an object: one of the script finds more there than the host's objects do.
const world = globalThis;
const given = (value, object) => {
  if (value === world) native.hand_global(object);
  return value;
};

// What a page caught: an error of the engine gets what an older page looks at. In the language, so that a page whose
// time is up ends here as well. Nothing that the error itself does may show.
const caught = error => {
  try {
    if (typeof error !== "object" || error === null || "number" in error) return;
    const { name, message } = error;
    if (typeof name !== "string" || typeof message !== "string" || name.length + message.length > 10000) return;
    const known = native.known(name, message);
    if (known[1] !== message) error.message = known[1];
    if (known[0] !== 0) define(error, "number", known[0]);
  } catch { }
};

// new Error(number, description); every other pair of arguments is the language's own.
const make = (constructor, number, description, ...rest) => {
  if (constructor !== Error || typeof number !== "number" || typeof description === "object" || rest.length > 0) {
    return new constructor(number, description, ...rest);
  }
  const error = new Error(description);
  define(error, "number", number);
  return error;
};

// Page text is collected here, and handed over in one piece before anything else may write, or once it is long: a call
// of the host for each piece takes longer than most pieces. state[0] tells the host that there is some, state[1] how
// long it may get: nothing where all is to go out at once; state[2] that the page has left more than text here.
let text = "", literals = { __proto__: null }, response, server;
const put = piece => {
  text += piece;
  state[0] = 1;
  if (text.length > state[1]) native.hand_over();
};
const put_value = value => {
  if (typeof value === "string") put(value);
  else if (typeof value === "number" && (value | 0) === value) put(`${value | 0}`);
  else if (typeof value === "boolean") put(value ? "True" : "False");
  else if (value !== undefined && value !== null) native.out(value);
};
const put_literal = number => {
  let piece = literals[number];
  if (piece === undefined) piece = literals[number] = native.literal(number);
  if (piece !== undefined) put(piece);
};
// What the script would have called.
const method_of = (object, receiver, name) => {
  const callee = `${receiver}.${name}`;
  need_object(object, callee);
  const member = object[name];
  if (typeof member === "function") return member;
  throw not_a_function(callee, "(…)", member);
};
// Response.Write(value)
const write = (object, ...values) => {
  if (object === response && values.length === 1) {
    const value = values[0];
    if (typeof value === "string" || typeof value === "number") return put_value(value);
  }
  return apply(method_of(object, "Response", "Write"), object, values);
};
const char_code_at = String.prototype.charCodeAt, slice = String.prototype.slice;
const is_untouched = value => typeof value === "string" && value.charCodeAt === char_code_at && value.slice === slice;
// The text with what stands for some of its characters; undefined for one that is not all ASCII, and of more the host
// knows. Most texts stay as they are.
const encoded = (value, text_of) => {
  let made = "", from = 0;
  for (let i = 0; i < value.length; i++) {
    const code = value.charCodeAt(i);
    if (code > 127) return undefined;
    const instead = text_of(code);
    if (instead === undefined) continue;
    made += value.slice(from, i) + instead;
    from = i + 1;
  }
  return from === 0 ? value : made + value.slice(from);
};
const html_of = code =>
  code === 38 ? "&amp;" : code === 60 ? "&lt;" : code === 62 ? "&gt;" : code === 34 ? "&quot;" : undefined;
const digits = "0123456789ABCDEF";
const url_of = code => {
  if ((code >= 97 && code <= 122) || (code >= 48 && code <= 57) || (code >= 65 && code <= 90)) return undefined;
  if (code === 45 || code === 46 || code === 95) return undefined;
  return code === 32 ? "+" : "%" + digits[code >> 4] + digits[code & 15];
};
// Server.HTMLEncode(value), Server.URLEncode(value)
const encoder = (name, text_of) => (object, ...values) => {
  if (object === server && values.length === 1 && is_untouched(values[0])) {
    const made = encoded(values[0], text_of);
    if (made !== undefined) return made;
  }
  return apply(method_of(object, "Server", name), object, values);
};
// Symbol.for(key) and Symbol.keyFor(symbol): the engine keeps what it has made for them for good, and a page may take
// the keys from its visitors. Here they last as long as the page.
let symbols, keys;
const forget_symbols = () => { symbols = keys = undefined; };
const { for: shared_symbol, keyFor: key_of_symbol } = {
  for(key) {
    const text = `${key}`;
    symbols ??= { __proto__: null };
    state[2] = 1;
    if (symbols[text] !== undefined) return symbols[text];
    const symbol = Symbol(text);
    keys ??= { __proto__: null };
    keys[symbol] = text;
    return symbols[text] = symbol;
  },
  keyFor(symbol) {
    if (typeof symbol !== "symbol") throw new TypeError("Symbol.keyFor requires that the first argument be a symbol");
    return keys === undefined ? undefined : keys[symbol];
  },
};
define(Symbol, "for", shared_symbol);
define(Symbol, "keyFor", key_of_symbol);

const begin = (new_response, new_server, new_literals) => {
  response = new_response;
  server = new_server;
  text = "";
  state[2] = 0;
  if (begin_library !== undefined) begin_library();
  forget_symbols();
  forget_methods();
  if (new_literals !== undefined) literals = new_literals ?? { __proto__: null };
};
const take = () => {
  const taken = text;
  text = "";
  return taken;
};

// What compiled VBScript calls, made when something of it is first needed in this world. state[3] tells that this page
// is in VBScript.
let library, begin_library;
const make_library = () => {
  if (library !== undefined) return;
  const create = name => native.create(name);
  [library, begin_library] = native.library({ put, create, response: () => response }, prototype);
};
const give_library = () => {
  state[3] = 1;
  make_library();
  return library;
};
Object.defineProperty(globalThis, "$zelto_vb", { get: give_library });
define(globalThis, "Enumerator", Enumerator);
define(globalThis, "VBArray", VBArray);
function ActiveXObject(name) { return native.create(name); }
define(globalThis, "ActiveXObject", ActiveXObject);
// The engine notes in a prototype that an object has it: that is not the page's change (built_ins.h).
for (const made of [Enumerator, VBArray, ActiveXObject]) Object.create(made.prototype);
const define_fixed = (name, value) => Object.defineProperty(globalThis, name, { value });
define_fixed("$zelto_value", (value, is_statement) =>
  typeof value === "function" || (is_statement && value === undefined) ? native.read(value, is_statement) : value);
define_fixed("$zelto_call", call);
define_fixed("$zelto_of", owner);
define_fixed("$zelto_given", given);
define_fixed("$zelto_error", make);
define_fixed("$zelto_caught", caught);
define_fixed("$zelto_never", false);
define_fixed("$zelto_html", put_literal);
define_fixed("$zelto_out", put_value);
define_fixed("$zelto_write", write);
define_fixed("$zelto_html_encode", encoder("HTMLEncode", html_of));
define_fixed("$zelto_url_encode", encoder("URLEncode", url_of));
define_fixed("$zelto_objects", prototypes);  // so that all that a page can reach is reached from the global object
define(prototype, Symbol.iterator, function () { return items(this)[Symbol.iterator](); });

// A name of the object's own or of its class; a class's "constructor" is the language's.
const is_root = object => object === root || (getPrototypeOf(object) === null && hasOwn(object, "hasOwnProperty"));
const has_name = (object, name) => {
  if (hasOwn(object, name)) return true;
  for (let o = getPrototypeOf(object); o !== null && !is_root(o); o = getPrototypeOf(o)) {
    if (name !== "constructor" && hasOwn(o, name)) return true;
  }
  return false;
};

const { toString: engine_text_of } = Function.prototype;
define(Function.prototype, "toString", native.toString);

const kinds = [Error, RangeError, TypeError, ReferenceError];
return [(kind, message) => new kinds[kind](message), collection => Array.from(collection), has_name, root, begin, take,
  keep_method, engine_text_of, make_library];
}))js";

}  // namespace

std::u16string_view Prelude::source() { return kSource; }

}  // namespace zelto::script
