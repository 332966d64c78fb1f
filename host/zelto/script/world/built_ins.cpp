#include "script/world/built_ins.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <string>

#include "script/rooted_values.h"
#include "script/text.h"

namespace zelto::script {
namespace {

// Writes straight-line code: it runs in each new world, cold, and a loop with a look at each descriptor would take
// milliseconds there. console, which is made when it is first asked for, is there before anything else. It goes through
// all that can be reached from the global object, and from what only the syntax makes. Its answer: the objects, the
// global one first; the values; of each value the number of its object; of each object how many keys it has; and what
// makes a function that compares the values of those numbers.
constexpr std::u16string_view kWalk =
    uR"js((function () {
"use strict";
console;
const hidden = ["function* () {}", "async function () {}", "async function* () {}", "() => 0"];
const made = ["[][Symbol.iterator]()", "new Map()[Symbol.iterator]()", "new Set()[Symbol.iterator]()",
  "''[Symbol.iterator]()", "/a/[Symbol.matchAll]('a')", "(function* () {})()", "(async function* () {})()",
  "Int8Array", "(function () { return arguments; })()", "[].values().map(x => x)",
  "Iterator.from({ next() { return { done: true }; } })", "new Intl.Segmenter('en').segment('a')",
  "new Intl.Segmenter('en').segment('a')[Symbol.iterator]()"];
const exists = text => { try { (0, eval)(text); return true; } catch { return false; } };
const roots = hidden.map(text => `(${text})`).concat(made.filter(exists));
const objects = [], places = [], of = new Map();
const add = (object, place) => {
  if ((typeof object !== "object" && typeof object !== "function") || object === null || of.has(object)) return;
  of.set(object, objects.length);
  objects.push(object);
  places.push(place);
};
const key_text = key => typeof key === "string" ? JSON.stringify(key) : `Symbol.${key.description.slice(7)}`;
const is_known = key => typeof key === "string" ||
  (key.description !== undefined && key.description.startsWith("Symbol.") && Symbol[key.description.slice(7)] === key);
add(globalThis, "globalThis");
for (const root of roots) {
  let place = root;
  for (let o = Object.getPrototypeOf((0, eval)(root)); o !== null; o = Object.getPrototypeOf(o)) {
    place = `proto(${place})`;
    add(o, place);
  }
}
const all = [], counts = [];
for (let i = 0; i < objects.length; i++) {
  const object = objects[i], keys = Reflect.ownKeys(object);
  add(Object.getPrototypeOf(object), `proto(o[${i}])`);
  counts.push(keys.length);
  for (const key of keys) {
    if (!is_known(key)) continue;
    const d = Object.getOwnPropertyDescriptor(object, key), k = key_text(key);
    if (d === undefined) continue;
    if (!("value" in d)) {
      add(d.get, `desc(o[${i}], ${k}).get`);
      add(d.set, `desc(o[${i}], ${k}).set`);
      continue;
    }
    add(d.value, `o[${i}][${k}]`);
    // What the last match of any page was is forgotten, not compared.
    const is_match = object === RegExp && typeof d.value !== "function";
    if (!is_match && d.value === d.value && (d.writable || d.configurable)) all.push([i, k]);
  }
}
let source = "(function () {\"use strict\";console;const proto = Object.getPrototypeOf," +
  " desc = Object.getOwnPropertyDescriptor, o = [];\n";
places.forEach((place, i) => { source += `o[${i}] = ${place};\n`; });
source += `const v = [${all.map(([i, k]) => `o[${i}][${k}]`).join(",\n")}];\n`;
source += `const k = [${all.map(([, k]) => k).join(",\n")}];\n`;
source += `const at = new Int32Array([${all.map(([i]) => i)}]), counts = new Int32Array([${counts}]);\n`;
return source + `const check = numbers => {
  const list = [], count = numbers.length;
  for (let i = 0; i < count; i++) {
    const n = numbers[i];
    list[i] = { object: o[at[n]], key: k[n], value: v[n] };
  }
  return () => {
    for (let i = 0; i < count; i++) if (list[i].object[list[i].key] !== list[i].value) return false;
    return true;
  };
};
return [o, v, at, counts, check];
})()`;
})())js";

// Whether these are noticed, one after the other, in an object that the language has.
constexpr std::u16string_view kChanges[] = {
    u"Map.prototype.$one = 1",
    u"delete Map.prototype.$one",
    u"Object.defineProperty(Map.prototype, 'size', { get() {} })",
    u"Object.setPrototypeOf(Map.prototype, {})",
    u"Object.defineProperty(Map.prototype, 'has', { writable: false })",
    u"Object.freeze(Map.prototype)",
};

// About as many as Set.prototype has.
constexpr int kMostTried = 12;

// The engine keeps the values of properties in front of where the object's second word points to, beyond one word, the
// first property last. They stay there as long as the structure does. False where the value is not among so many.
bool add_slot(JSObjectRef object, JSValueRef value, int keys, std::vector<Slot>* slots) {
  const std::uintptr_t* storage = nullptr;
  std::memcpy(&storage, reinterpret_cast<const std::uintptr_t*>(object) + 1, sizeof storage);
  const auto wanted = reinterpret_cast<std::uintptr_t>(value);
  if (!storage) return false;
  // The object's others are the last ones.
  const auto others = std::span(*slots).last(std::min(slots->size(), static_cast<std::size_t>(keys)));
  for (int i = 0; i < keys; ++i) {
    const std::uintptr_t* const place = storage - 2 - i;
    if (*place != wanted || std::ranges::find(others, place, &Slot::place) != others.end()) continue;
    slots->push_back({place, wanted});
    return true;
  }
  return false;
}

}  // namespace

std::u16string BuiltIns::source(JSContextRef context) {
  JSValueRef source = evaluate(context, kWalk);
  if (!source || !JSValueIsString(context, source)) throw std::bad_alloc();
  const JsString text(JSValueToStringCopy(context, source, nullptr));
  return std::u16string(text.view());
}

bool BuiltIns::can_tell(JSContextRef context) {
  JSValueRef object = evaluate(context, u"Object.getOwnPropertyDescriptors(Map.prototype), Map.prototype");
  if (!object || !JSValueIsObject(context, object)) return false;
  evaluate(context, u"for (let i = 0; i < 100; i++) new Map([[i, i]]).get(i)");
  const Structure before(object);
  evaluate(context, u"new Map().has(1)");
  if (!before.is_kept()) return false;
  for (const std::u16string_view change : kChanges) {
    const Structure known(object);
    evaluate(context, change);
    if (known.is_kept()) return false;
  }
  // A value that takes the place of another one.
  JSValueRef other = evaluate(context, u"Set.prototype");
  JSValueRef value = evaluate(context, u"Set.prototype.has");
  std::vector<Slot> slots;
  if (!other || !value || !add_slot(object_of(other), value, kMostTried, &slots)) return false;
  const Structure known(other);
  evaluate(context, u"Set.prototype.has = Set.prototype.add");
  return known.is_kept() && !slots[0].is_kept();
}

BuiltIns::BuiltIns(JSScriptRef found, JSContextRef context) : context_(context) {
  JSValueRef answer = JSScriptEvaluate(context, found, nullptr, nullptr);
  if (!answer || !JSValueIsObject(context, answer)) throw std::bad_alloc();
  const RootedObject root(object_of(answer));
  const auto part = [&](unsigned i) {
    return object_of(JSObjectGetPropertyAtIndex(context, object_of(answer), i, nullptr));
  };
  objects_ = part(0);
  values_ = part(1);
  const std::vector<JSValueRef> rest = find_slots(part(2), part(3));
  JSValueRef numbers = JSObjectMakeArray(context, rest.size(), rest.data(), nullptr);
  JSValueRef check = JSObjectCallAsFunction(context, part(4), nullptr, 1, &numbers, nullptr);
  if (!check) throw std::bad_alloc();
  rest_check_ = object_of(check);
  for (JSObjectRef kept : {objects_, values_, rest_check_}) JSValueProtect(context_, kept);
}

// Answers the numbers of the values that were not found.
std::vector<JSValueRef> BuiltIns::find_slots(JSObjectRef owners, JSObjectRef counts) {
  const std::size_t object_count = JSObjectGetTypedArrayLength(context_, counts, nullptr);
  const std::size_t value_count = JSObjectGetTypedArrayLength(context_, owners, nullptr);
  const auto* owner = static_cast<const std::int32_t*>(JSObjectGetTypedArrayBytesPtr(context_, owners, nullptr));
  const auto* count = static_cast<const std::int32_t*>(JSObjectGetTypedArrayBytesPtr(context_, counts, nullptr));
  if (!owner || !count) throw std::bad_alloc();
  std::vector<JSObjectRef> objects;
  objects.reserve(object_count);
  for (unsigned i = 0; i < object_count; ++i) {
    objects.push_back(object_of(JSObjectGetPropertyAtIndex(context_, objects_, i, nullptr)));
    if (i > 0) structures_.emplace_back(objects.back());
  }
  std::vector<JSValueRef> rest;
  slots_.reserve(value_count);
  for (unsigned i = 0; i < value_count; ++i) {
    const auto of = static_cast<std::size_t>(owner[i]);
    JSValueRef value = JSObjectGetPropertyAtIndex(context_, values_, i, nullptr);
    const bool is_found = of > 0 && add_slot(objects[of], value, count[of], &slots_);
    if (!is_found) rest.push_back(JSValueMakeNumber(context_, i));
  }
  return rest;
}

BuiltIns::~BuiltIns() {
  for (JSObjectRef kept : {objects_, values_, rest_check_}) JSValueUnprotect(context_, kept);
}

bool BuiltIns::are_slots_kept() const {
  bool kept = true;
  for (const Slot& slot : slots_) kept &= slot.is_kept();
  return kept;
}

bool BuiltIns::are_structures_kept() const {
  bool kept = true;  // no early exit: nearly always all are looked at
  for (const Structure& structure : structures_) kept &= structure.is_kept();
  return kept;
}

}  // namespace zelto::script
