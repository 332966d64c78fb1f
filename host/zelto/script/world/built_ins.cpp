#include "script/world/built_ins.h"

#include <new>
#include <string>

#include "script/text.h"

namespace zelto::script {
namespace {

// Writes straight-line code: it runs in each new world, cold, and a loop with a look at each descriptor would take
// milliseconds there. console, which is made when it is first asked for, is there before anything else. It goes through
// all that can be reached from the global object, and from what only the syntax makes. Values that may be assigned to
// are compared behind every page; the others, names of functions mostly, behind one that has the words to change them.
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
const values = [], fixed = [];
for (let i = 0; i < objects.length; i++) {
  const object = objects[i];
  const is_function = typeof object === "function";
  add(Object.getPrototypeOf(object), `proto(o[${i}])`);
  for (const key of Reflect.ownKeys(object)) {
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
    if (is_match || d.value !== d.value || (!d.writable && !d.configurable)) continue;
    (d.writable ? values : fixed).push([i, k]);
  }
}
let source = "(function () {\"use strict\";console;const proto = Object.getPrototypeOf," +
  " desc = Object.getOwnPropertyDescriptor, o = [];\n";
places.forEach((place, i) => { source += `o[${i}] = ${place};\n`; });
const check = places => {
  let text = "(() => {\nconst v = [" + places.map(([i, k]) => `o[${i}][${k}]`).join(",\n") + "];\nconst checks = [";
  for (let at = 0; at < places.length;) {
    const i = places[at][0];
    text += `() => { const x = o[${i}]; return true`;
    for (; at < places.length && places[at][0] === i; at++) text += ` && x[${places[at][1]}] === v[${at}]`;
    text += "; },\n";
  }
  return text + "];\nconst count = checks.length;\n" +
    "return () => { for (let i = 0; i < count; i++) if (!checks[i]()) return false; return true; };\n})()";
};
return source + `return [o, ${check(values)}, ${check(fixed)}];\n})()`;
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
  return true;
}

BuiltIns::BuiltIns(JSScriptRef found, JSContextRef context) : context_(context) {
  JSValueRef answer = JSScriptEvaluate(context, found, nullptr, nullptr);
  if (!answer || !JSValueIsObject(context, answer)) throw std::bad_alloc();
  JSObjectRef pair = object_of(answer);
  objects_ = object_of(JSObjectGetPropertyAtIndex(context, pair, 0, nullptr));
  values_check_ = object_of(JSObjectGetPropertyAtIndex(context, pair, 1, nullptr));
  fixed_check_ = object_of(JSObjectGetPropertyAtIndex(context, pair, 2, nullptr));
  const auto count = static_cast<unsigned>(JSValueToNumber(context, property(context, objects_, "length"), nullptr));
  structures_.reserve(count);
  for (unsigned i = 1; i < count; ++i) {
    structures_.emplace_back(JSObjectGetPropertyAtIndex(context, objects_, i, nullptr));
  }
  JSValueProtect(context_, objects_);
  JSValueProtect(context_, values_check_);
  JSValueProtect(context_, fixed_check_);
}

BuiltIns::~BuiltIns() {
  JSValueUnprotect(context_, objects_);
  JSValueUnprotect(context_, values_check_);
  JSValueUnprotect(context_, fixed_check_);
}

bool BuiltIns::are_structures_kept() const {
  bool kept = true;  // no early exit: nearly always all are looked at
  for (const Structure& structure : structures_) kept &= structure.is_kept();
  return kept;
}

}  // namespace zelto::script
