// Arrays, and what parentheses behind a value mean.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kArraysSource =
    uR"js(
const kMostElements = 1 << 27, kMostDimensions = 60, kMostAtOnce = 65536;
const bounds_of = upper => {
  if (upper.length > kMostDimensions) return raise(9);
  const bounds = [];
  let total = 1;
  for (let i = 0; i < upper.length; i++) {
    const bound = to_long(num(upper[i]));
    if (bound < -1) return raise(9);
    bounds.push(bound);
    total *= bound + 1;
    if (total > kMostElements) return raise(7);
  }
  return bounds;
};
const elements_of = bounds => {
  let total = bounds.length === 0 ? 0 : 1;
  for (let i = 0; i < bounds.length; i++) total *= bounds[i] + 1;
  // The engine takes a larger one for sparse.
  const begun = total < kMostAtOnce ? total : kMostAtOnce, d = new Array(begun).fill(undefined);
  for (let i = begun; i < total; i++) d.push(undefined);
  return d;
};
// Without bounds it has no elements yet: `Dim a()`.
// The elements from there on are no longer in it.
const none = freeze([]);
const cut_off = (d, from) => {
  if (is_counting && from < d.length) return d.splice(from);
  if (from < d.length) d.length = from;
  return none;
};
const new_array = (d, b, fixed) => born(new VbArray(d, b, fixed));
const dim = (fixed, ...upper) => {
  const b = bounds_of(upper);
  return new_array(elements_of(b), b, fixed && b.length > 0);
};
const made_array = d => new_array(d, [d.length - 1], false);
const redim = (old, preserve, ...upper) => {
  const b = bounds_of(upper);
  if (!(old instanceof VbArray)) {
    return preserve && old !== undefined ? raise(13) : new_array(elements_of(b), b, false);
  }
  if (old.fixed) return raise(10);
  const had = old.d;
  if (preserve && old.b.length > 0) {
    resize(old, b);
  } else {
    shape(old, elements_of(b), b);
    if (is_counting) drop_all(cut_off(had, 0));
  }
  return old;
};
// Only the last bound may be another one: the elements stay where they are.
const resize = (array, b) => {
  if (b.length !== array.b.length) raise(9);
  let step = 1;
  for (let i = 0; i < b.length - 1; i++) {
    if (b[i] !== array.b[i]) raise(9);
    step *= b[i] + 1;
  }
  const total = step * (b[b.length - 1] + 1), d = array.d;
  const gone = cut_off(d, total);
  while (d.length < total) d.push(undefined);
  shape(array, d, b);
  drop_all(gone);
};
const erase = a => {
  if (!(a instanceof VbArray)) return raise(13);
  const had = a.d;
  if (a.fixed) {
    const gone = is_counting ? had.slice() : none;
    for (let i = 0; i < had.length; i++) had[i] = undefined;
    drop_all(gone);
  } else {
    shape(a, [], []);
    if (is_counting) drop_all(cut_off(had, 0));
  }
  return a;
};
const copy_of_array = a => {
  const d = a.d.slice();
  for (let i = 0; i < d.length; i++) if (d[i] instanceof VbArray) d[i] = copy_of_array(d[i]);
  return new_array(d, a.b.slice(), false);
};

// Where an element is.
const place_in = (a, indices) => {
  const { b } = a;
  if (indices.length !== b.length) return raise(9);
  let at = 0, step = 1;
  for (let i = 0; i < b.length; i++) {
    const index = to_long(num(indices[i]));
    if (index < 0 || index > b[i]) return raise(9);
    at += index * step;
    step *= b[i] + 1;
  }
  return at;
};
const place1 = (a, i) => {
  if (a.b.length !== 1) return raise(9);
  const index = to_long(num(i));
  return index >= 0 && index < a.d.length ? index : raise(9);
};
// What the engine can tell without a walk along the prototypes.
const is_vb_array = a => typeof a === "object" && a !== null && a.constructor === VbArray;
const ix1 = (a, i) => {
  if (!is_vb_array(a)) return indexed(a, [i]);
  if (typeof i === "number" && (i | 0) === i && i >= 0 && i < a.n) return a.d[i];
  const at = place1(a, i);  // the default member of an index may change the array
  return a.d[at];
};
const put1 = (a, v, i) => {
  const value = typeof v === "number" || typeof v === "string" ? v : val(v);
  if (!is_vb_array(a)) put_indexed(a, value, [i], false);
  else if (typeof i === "number" && (i | 0) === i && i >= 0 && i < a.n) store(a.d, i, value);
  else store(a.d, place1(a, i), value);
};
const ix = (a, ...indices) => {
  if (!(a instanceof VbArray)) return indexed(a, indices);
  const at = place_in(a, indices);
  return a.d[at];
};
const putix = (a, v, ...indices) => {
  if (a instanceof VbArray) store(a.d, place_in(a, indices), val(v));
  else put_indexed(a, val(v), indices, false);
};
const setix = (a, v, ...indices) => {
  if (a instanceof VbArray) store(a.d, place_in(a, indices), setv(v));
  else put_indexed(a, setv(v), indices, true);
};
const key_of = i => {
  const value = value_of(i);
  return typeof value === "string" ? value : text_of(value);
};
const byte_index = (a, indices) => {
  const index = indices.length === 1 ? to_long(num(indices[0])) : -1;
  return index >= 0 && index < a.length ? index : raise(9);
};
// What is no array of VBScript.
const indexed = (a, indices) => {
  if (a instanceof Uint8Array) return new Byt(a[byte_index(a, indices)]);
  if (!is_object(a) && !is_array(a)) return raise(13);
  if (is_host(a)) return native.invoke(a, undefined, ...plain_arguments(indices));
  if (a === nothing) return raise(91);
  if (a instanceof Instance) return default_of(a, indices);
  if (typeof a === "function") return invoke_value(a, undefined, indices);
  return indices.length === 1 ? a[key_of(indices[0])] : raise(450);
};
const put_indexed = (a, v, indices, is_set) => {
  if (a instanceof Uint8Array) a[byte_index(a, indices)] = conversions.cbyte(v).v;
  else if (is_host(a)) native.put(a, undefined, v, ...plain_arguments(indices));
  else if (a === nothing) raise(91);
  else if (a instanceof Instance) put_member(a, a[" default"] ?? raise(438), v, indices, is_set);
  else if (!is_object(a) && !is_array(a)) raise(13);
  else if (typeof a === "function") raise(438);
  else if (indices.length !== 1) raise(450);
  else a[key_of(indices[0])] = pin(v);
};
// What is stepped through, as For Each reads an array: its length before each step, then the element. Only then the
// next step is made.
class Steps {
  constructor(iterator) {
    this.iterator = iterator;
    this.at = 0;
  }
  get length() {
    const { done, value } = this.iterator.next();
    if (done) return 0;
    delete this[this.at - 1];
    this[this.at++] = value;
    return this.at;
  }
}
// Of an array the elements as they are stored. What is written meanwhile is seen.
const each = v => {
  if (v instanceof VbArray) return v.d;
  if (v === nothing || v === undefined) return raise(v === nothing ? 91 : 424);
  if (v instanceof Uint8Array) return Array.from(v, b => new Byt(b));
  if (!is_object(v) && !is_array(v)) return raise(451);
  if (is_host(v)) return native.items(v);
  if (v instanceof Instance) return v[state]?.items ?? raise(451);
  if (is_array(v)) return v;
  return typeof v[Symbol.iterator] === "function" ? new Steps(v[Symbol.iterator]()) : raise(451);
};

const array_functions = {
  array: (...values) => made_array(values.map(val)),
  lbound: (a, dimension) => {
    ubound(a, dimension);
    return 0;
  },
  ubound: (a, dimension) => ubound(a, dimension),
  join: (a, separator) => {
    const array = list_of(a), between = is_given(separator) ? text(separator) : " ";
    return array.map(v => text_of(value_of(v))).join(between);
  },
  filter: (a, wanted, include, mode) => {
    const array = list_of(a), part = text(wanted), keeps = !is_given(include) || boolean(include);
    const fold = folding(mode), sought = fold(part);
    return made_array(array.filter(v => fold(text_of(value_of(v))).includes(sought) === keeps).map(text));
  },
};
const ubound = (a, dimension) => {
  const n = int(dimension, 1);
  if (a instanceof Uint8Array || is_array(a)) return n === 1 ? a.length - 1 : raise(9);
  if (!(a instanceof VbArray)) return raise(13);
  return n >= 1 && n <= a.b.length ? a.b[n - 1] : raise(9);
};
const list_of = a => {
  const value = value_of(a);
  if (is_array(value)) return value;
  if (!(value instanceof VbArray)) return raise(13);
  return value.b.length === 1 ? value.d : raise(value.b.length === 0 ? 9 : 13);
};
)js";

}  // namespace zelto::script::vbscript
