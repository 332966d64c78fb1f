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

class Enumerator {
  #items;
  #at = 0;
  constructor(collection) { this.#items = items(collection); }
  atEnd() { return this.#at >= this.#items.length; }
  item() { return this.#items[this.#at]; }
  moveFirst() { this.#at = 0; }
  moveNext() { if (this.#at < this.#items.length) this.#at++; }
}

// Arrays cross by value, one dimension inside the other; the first index is the outermost.
class VBArray {
  #array;
  #dimensions = 0;
  constructor(array) {
    if (!Array.isArray(array) && !(array instanceof Uint8Array)) throw new TypeError("VBArray expected");
    this.#array = array;
    for (let a = array; Array.isArray(a) || a instanceof Uint8Array; a = a[0]) {
      this.#dimensions++;
      if (!native.nests(a)) break;
    }
  }
  dimensions() { return this.#dimensions; }
  lbound(dimension = 1) { this.ubound(dimension); return 0; }
  ubound(dimension = 1) {
    if (!(dimension >= 1 && dimension <= this.#dimensions)) throw new RangeError("Subscript out of range");
    let a = this.#array;
    for (let i = 1; i < dimension; i++) a = a[0];
    return a.length - 1;
  }
  getItem(...indices) {
    let a = this.#array;
    if (indices.length !== this.#dimensions) throw new RangeError("Subscript out of range");
    for (const index of indices) {
      if (!(index >= 0 && index < a.length)) throw new RangeError("Subscript out of range");
      a = a[Math.floor(index)];
    }
    return a;
  }
  // One flat array, the first index varying fastest.
  toArray() {
    if (this.#dimensions <= 1) return [...this.#array];
    const out = [];
    const shape = [];
    for (let a = this.#array, i = 0; i < this.#dimensions; i++, a = a[0]) shape.push(a.length);
    const total = shape.reduce((product, length) => product * length, 1);
    for (let n = 0; n < total; n++) {
      let rest = n;
      let a = this.#array;
      for (const length of shape) {
        a = a[rest % length];
        rest = Math.floor(rest / length);
      }
      out.push(a);
    }
    return out;
  }
}

define(globalThis, "Enumerator", Enumerator);
define(globalThis, "VBArray", VBArray);
define(globalThis, "ActiveXObject", function ActiveXObject(name) { return native.create(name); });
Object.defineProperty(globalThis, "$zelto_value", {
  value: (value, is_statement) => typeof value === "function" ? native.read(value, is_statement) : value });
define(prototype, Symbol.iterator, function () { return items(this)[Symbol.iterator](); });

const kinds = [Error, RangeError, TypeError, ReferenceError];
return [(kind, message) => new kinds[kind](message), collection => Array.from(collection)];
}))js";

}  // namespace zelto::script
