#include "script/prelude.h"

namespace zelto::script {

const std::u16string_view kPrelude =
    uR"js((function (native, prototype) {
"use strict";
const define = (target, name, value) =>
  Object.defineProperty(target, name, { value, writable: true, configurable: true });

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

define(globalThis, "Enumerator", Enumerator);
define(globalThis, "VBArray", VBArray);
define(globalThis, "ActiveXObject", function ActiveXObject(name) { return native.create(name); });
Object.defineProperty(globalThis, "$zelto_value", {
  value: (value, is_statement) => typeof value === "function" ? native.read(value, is_statement) : value });
define(prototype, Symbol.iterator, function () { return items(this)[Symbol.iterator](); });

// A name of the object's own or of its class; a class's "constructor" is the language's.
const { getPrototypeOf, hasOwn } = Object;
const root = Object.prototype;
const is_root = object => object === root || (getPrototypeOf(object) === null && hasOwn(object, "hasOwnProperty"));
const has_name = (object, name) => {
  if (hasOwn(object, name)) return true;
  for (let o = getPrototypeOf(object); o !== null && !is_root(o); o = getPrototypeOf(o)) {
    if (name !== "constructor" && hasOwn(o, name)) return true;
  }
  return false;
};

const kinds = [Error, RangeError, TypeError, ReferenceError];
return [(kind, message) => new kinds[kind](message), collection => Array.from(collection), has_name, root];
}))js";

}  // namespace zelto::script
