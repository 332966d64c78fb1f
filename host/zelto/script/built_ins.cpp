#include "script/built_ins.h"

#include <cstring>
#include <new>
#include <string>

#include "script/text.h"

namespace zelto::script {
namespace {

// Writes straight-line code: it runs in each new world, cold, and a loop with a look at each descriptor would take
// milliseconds there. It goes through all that can be reached from the global object, and from what only the syntax
// makes. Values of objects other than functions, and of functions those that may be assigned to, are compared.
constexpr std::u16string_view kWalk =
    uR"js((function () {
"use strict";
const hidden = ["function* () {}", "async function () {}", "async function* () {}", "() => 0"];
const made = ["[][Symbol.iterator]()", "new Map()[Symbol.iterator]()", "new Set()[Symbol.iterator]()",
  "''[Symbol.iterator]()", "/a/[Symbol.matchAll]('a')", "(function* () {})()", "(async function* () {})()",
  "Int8Array", "(function () { return arguments; })()"];
const roots = hidden.map(text => `(${text})`).concat(made);
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
const values = [];
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
    const is_fixed = !d.writable && (is_function || !d.configurable);
    if (!is_match && !is_fixed && d.value === d.value) values.push([i, k]);
  }
}
let source = "(function () {\"use strict\";const proto = Object.getPrototypeOf," +
  " desc = Object.getOwnPropertyDescriptor, o = [];\n";
places.forEach((place, i) => { source += `o[${i}] = ${place};\n`; });
source += "const v = [" + values.map(([i, k]) => `o[${i}][${k}]`).join(",\n") + "];\nconst checks = [";
let at = 0;
while (at < values.length) {
  const i = values[at][0];
  source += `() => { const x = o[${i}]; return true`;
  for (; at < values.length && values[at][0] === i; at++) source += ` && x[${values[at][1]}] === v[${at}]`;
  source += "; },\n";
}
source += "];\nconst count = checks.length;\n" +
  "return [o, () => { for (let i = 0; i < count; i++) if (!checks[i]()) return false; return true; }];\n})()";
return source;
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

JSValueRef evaluate(JSContextRef context, std::u16string_view source) {
  return JSEvaluateScript(context, JsString(source).get(), nullptr, nullptr, 1, nullptr);
}

std::uint32_t read_word(const std::uint32_t* word) {
  std::uint32_t value = 0;
  std::memcpy(&value, word, sizeof value);
  return value;
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
  const std::uint32_t* const structure = structure_of(object);
  evaluate(context, u"for (let i = 0; i < 100; i++) new Map([[i, i]]).get(i)");
  std::uint32_t known = read_word(structure);
  evaluate(context, u"new Map().has(1); Map.prototype.size");
  if (read_word(structure) != known) return false;
  for (const std::u16string_view change : kChanges) {
    evaluate(context, change);
    const std::uint32_t now = read_word(structure);
    if (now == known) return false;
    known = now;
  }
  return true;
}

BuiltIns::BuiltIns(JSScriptRef found, JSContextRef context) : context_(context) {
  JSValueRef answer = JSScriptEvaluate(context, found, nullptr, nullptr);
  if (!answer || !JSValueIsObject(context, answer)) throw std::bad_alloc();
  JSObjectRef pair = object_of(answer);
  objects_ = object_of(JSObjectGetPropertyAtIndex(context, pair, 0, nullptr));
  values_check_ = object_of(JSObjectGetPropertyAtIndex(context, pair, 1, nullptr));
  const auto count = static_cast<unsigned>(JSValueToNumber(context, property(context, objects_, "length"), nullptr));
  cells_.reserve(count);
  for (unsigned i = 1; i < count; ++i) {
    const std::uint32_t* const structure = structure_of(JSObjectGetPropertyAtIndex(context, objects_, i, nullptr));
    cells_.push_back({structure, read_word(structure)});
  }
  JSValueProtect(context_, objects_);
  JSValueProtect(context_, values_check_);
}

BuiltIns::~BuiltIns() {
  JSValueUnprotect(context_, objects_);
  JSValueUnprotect(context_, values_check_);
}

bool BuiltIns::are_structures_kept() const {
  bool kept = true;  // no early exit: nearly always all are looked at
  for (const Cell& cell : cells_) kept &= read_word(cell.structure) == cell.known;
  return kept;
}

}  // namespace zelto::script
