// Instances of classes, and when they end.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

// In a program that has a Class_Terminate, whatever may lead to an instance is counted: instances, arrays and what
// stands for a parameter by reference. `count` is how many variables, fields, elements and statements have it. What is
// made belongs to the statement that runs, as what it reads does: both are in `pool` until the statement has ended, so
// that nothing ends under its hands. What goes where nobody counts, as into objects of the host, is never counted down
// again. So an end may come too late, never too early.
const std::u16string_view kLifetimesSource =
    uR"js(
const count = Symbol("count");
const pool = [];
let is_counting = false;
const count_references = () => { is_counting = true; };
// Those that have yet to do what their class has them do at their end, in the order in which they were made.
const living = new Map();
const forget_references = () => {
  is_counting = false;
  pool.length = 0;
  living.clear();
};

const is_counted = v => typeof v === "object" && v !== null && v[count] !== undefined;
const hold = v => {
  if (is_counted(v)) v[count]++;
  return v;
};
const drop = v => {
  if (is_counted(v) && --v[count] === 0) finish(v);
};
// What is read while the statement goes on.
const keep = v => {
  if (is_counted(v)) {
    v[count]++;
    pool.push(v);
  }
  return v;
};
// Made by the statement, with all that it already leads to.
const born = v => {
  if (is_counting) {
    for (const part of parts_of(v)) hold(part);
    v[count] = 1;
    pool.push(v);
  }
  return v;
};
// From now on somebody has it who does not count.
const pin = v => {
  if (!is_counted(v) || v[count] === Infinity) return v;
  v[count] = Infinity;
  if (v instanceof VbArray) v.d.forEach(pin);
  return v;
};
// Of an assignment, whose new value is in its place already: `swap(x = hold(…), old, …)`.
const swap = (_, old) => { drop(old); };
const store = (target, key, v) => {
  if (!is_counting) {
    target[key] = v;
    return;
  }
  const old = target[key];
  target[key] = hold(v);
  drop(old);
};

const parts_of = v => {
  if (v instanceof VbArray) return v.d;
  return v instanceof Instance ? Object.keys(v).map(key => v[key]) : [v.held];
};
// All are dropped, whatever fails; the answer is the first failure. But a page that has ended runs nothing more.
const drop_each = (all, failed) => {
  for (let i = 0; i < all.length; i++) {
    if (!is_counted(all[i])) continue;
    try {
      drop(all[i]);
    } catch (error) {
      native.check();
      failed ??= { error };
    }
  }
  return failed;
};
const drop_all = all => { if (all.length > 0) fail_as(drop_each(all, undefined)); };
const fail_as = failed => { if (failed !== undefined) throw failed.error; };
// Nobody has it any more. Its own end comes first, then those of its parts. A list is as long as a page makes it, so
// this does not call itself.
const finish = first => {
  const going = [];
  let failed;
  for (let v = first; v !== undefined; v = next_of(going)) {
    if (living.delete(v)) {
      v[count] = 1;
      try {
        v.class_terminate();
      } catch (error) {
        native.check();
        failed ??= { error };
      }
      if (--v[count] > 0) continue;
    }
    v[count] = Infinity;
    const parts = parts_of(v);
    if (v instanceof VbArray) shape(v, [], []);  // whose index may still be asked for
    for (let i = parts.length - 1; i >= 0; i--) if (is_counted(parts[i])) going.push(parts[i]);
  }
  fail_as(failed);
};
const next_of = going => {
  while (going.length > 0) {
    const v = going.pop();
    if (--v[count] === 0) return v;
  }
  return undefined;
};

// What the statement had goes, down to what was there before its procedure began.
const drain = base => { drop_all(pool.splice(base)); };
const after = (base, v) => {
  if (pool.length > base) drain(base);
  return v;
};
// The same of a statement that has failed with an error which the procedure goes on from.
const settle = base => {
  native.check();
  drop_each(pool.splice(base), undefined);
};
// The end of a procedure, which may have failed with an error: its result belongs to its caller's statement.
const leave = (base, result, variables, failure) => {
  let failed = failure;
  if (failed !== undefined) native.check();
  if (pool.length > base) failed = drop_each(pool.splice(base), failed);
  failed = drop_each(variables, failed);
  if (is_counted(result)) pool.push(result);
  fail_as(failed);
};

// What stands for a parameter by reference where the caller has no variable.
class CountedTemp extends Temp {
  constructor(v) {
    super(v);
    this[count] = 1;
    pool.push(this);
  }
  get v() { return this.held; }
  set v(v) { store(this, "held", v); }
}
const temp = v => is_counting ? new CountedTemp(v) : new Temp(v);

const make = made => {
  const o = born(new made());
  if (o.class_terminate !== undefined) living.set(o, true);
  if (o.class_initialize !== undefined) o.class_initialize();
  return o;
};
const terminate = () => {
  for (const [o] of living) {
    living.delete(o);
    o.class_terminate();
  }
};
)js";

}  // namespace zelto::script::vbscript
