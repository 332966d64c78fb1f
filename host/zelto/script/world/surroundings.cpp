#include "script/world/surroundings.h"

#include <new>
#include <string_view>

namespace zelto::script {
namespace {

// A function of (the names that are shown, the host's names, whether values are kept). It answers: what the page hands
// its names to, read, write, restore, and show, of more names to show. What it uses it has taken before any page could
// change it; reading a property of an object without a prototype is nobody else's to change either.
constexpr std::u16string_view kSupport =
    uR"js((function (shown, hosts, values_are_kept) {
"use strict";
const { apply, defineProperty, deleteProperty, getOwnPropertyDescriptor, isExtensible, ownKeys } = Reflect;
const { freeze, keys: visible_keys } = Object;
const { exec } = RegExp.prototype, blank = /(?:)/, Matches = RegExp, world = globalThis;
let names;
const show = (shown, first, enumerable) => {
  for (let n = 0; n < shown.length; n++) {
    const name = shown[n], i = first + n;
    // An object that inherits from the global one gets a property of its own. Code that is made of text sets the name
    // alone, of no object.
    const own = { set(value) {
      if (this !== world && this !== undefined) defineProperty(this, name, { value, writable: true, enumerable: true, configurable: true });
      else if (names !== undefined) names(i, value, true);
    } };
    const get = freeze(() => names === undefined ? undefined : names(i));
    defineProperty(world, name, { get, set: freeze(own.set), enumerable });
  }
};
show(shown, 0, true);
const known = { __proto__: null };
const first_keys = ownKeys(world);
for (let i = 0; i < first_keys.length; i++) known[first_keys[i]] = true;
const count = first_keys.length;

// Names that are not shown, which few pages make, are looked for where the page has the words for it, and now and then.
const visible_count = visible_keys(world).length;
let looks = 0, undeclared;
// Of the language's own names in the global object: its structure does not tell of changes.
const descriptors = { __proto__: null };
for (let i = 0; i < first_keys.length; i++) descriptors[first_keys[i]] = getOwnPropertyDescriptor(world, first_keys[i]);
for (let i = 0; i < hosts.length; i++) descriptors[hosts[i]] = undefined;
const are_globals_plain = () => {
  for (let i = 0; i < first_keys.length; i++) {
    const before = descriptors[first_keys[i]];
    if (before === undefined) continue;
    const now = getOwnPropertyDescriptor(world, first_keys[i]);
    if (now === undefined || (now.value !== before.value && before.value === before.value) || now.get !== before.get ||
        now.set !== before.set || now.writable !== before.writable || now.enumerable !== before.enumerable ||
        now.configurable !== before.configurable) return false;
  }
  return true;
};
const are_shown_kept = () => visible_keys(world).length === visible_count;
const are_keys_kept = whole => {
  if (!whole && are_shown_kept()) return true;
  const keys = ownKeys(world);
  if (keys.length !== count) {
    for (let i = 0; i < keys.length; i++) {
      if (known[keys[i]] !== undefined) continue;
      if (typeof keys[i] === "string") undeclared += (undeclared === "" ? "" : ", ") + keys[i];
      deleteProperty(world, keys[i]);
    }
    if (ownKeys(world).length !== count) return false;
  }
  return are_shown_kept();  // as many names may be others, or one that was deleted and assigned anew
};
const host_values = hosts.map(name => world[name]);
const is_host_kept = i => {
  const found = getOwnPropertyDescriptor(world, hosts[i]);
  if (found === undefined || found.writable !== true || found.configurable !== true || found.enumerable) return false;
  if (found.value !== host_values[i]) world[hosts[i]] = host_values[i];
  return true;
};
const restore = (may_hide, wants_undeclared) => {
  names = undefined;
  undeclared = "";
  // All of it after pages that have the words to hide something, and now and then.
  const whole = may_hide || (++looks & 63) === 0;
  if (!are_keys_kept(whole) || !isExtensible(world)) return false;
  if (whole && !are_globals_plain()) return false;
  for (let i = 0; i < hosts.length; i++) if (!is_host_kept(i)) return false;
  apply(exec, blank, [""]);
  Matches.input = "";
  Matches.multiline = false;
  if (!values_are_kept()) return false;
  return undeclared === "" || !wants_undeclared || undeclared;
};
return [freeze(given => { names = given; }), i => names(i), (i, value) => { names(i, value, true); }, restore, show];
}))js";

JSValueRef array_of(JSContextRef context, const Names& names) {
  JSObjectRef array = JSObjectMakeArray(context, 0, nullptr, nullptr);
  for (unsigned i = 0; i < names.size(); ++i) {
    JSObjectSetPropertyAtIndex(context, array, i,
                               JSValueMakeString(context, JsString(std::u16string_view(names[i])).get()), nullptr);
  }
  return array;
}

}  // namespace

Surroundings::Surroundings(JSGlobalContextRef context, const Names& shown, const Names& hosts, JSObjectRef values_check)
    : context_(context) {
  JSValueRef make = evaluate(context, kSupport);
  JSValueRef arguments[] = {array_of(context, shown), array_of(context, hosts), values_check};
  JSValueRef made = make ? JSObjectCallAsFunction(context, object_of(make), nullptr, 3, arguments, nullptr) : nullptr;
  if (!made) throw std::bad_alloc();  // or without stack
  unsigned at = 0;
  for (JSObjectRef* kept : {&hand_out_, &read_, &write_, &restore_, &show_}) {
    *kept = object_of(JSObjectGetPropertyAtIndex(context, object_of(made), at++, nullptr));
    JSValueProtect(context_, *kept);
  }
}

Surroundings::~Surroundings() {
  for (JSObjectRef kept : {hand_out_, read_, write_, restore_, show_}) JSValueUnprotect(context_, kept);
}

JSValueRef Surroundings::read(unsigned name, JSValueRef* exception) const {
  JSValueRef index = JSValueMakeNumber(context_, name);
  return JSObjectCallAsFunction(context_, read_, nullptr, 1, &index, exception);
}

void Surroundings::write(unsigned name, JSValueRef value, JSValueRef* exception) const {
  JSValueRef arguments[] = {JSValueMakeNumber(context_, name), value};
  JSObjectCallAsFunction(context_, write_, nullptr, 2, arguments, exception);
}

void Surroundings::show(const Names& names) const {
  JSValueRef arguments[] = {array_of(context_, names), JSValueMakeNumber(context_, 0),
                            JSValueMakeBoolean(context_, true)};
  JSObjectCallAsFunction(context_, show_, nullptr, 3, arguments, nullptr);
}

void Surroundings::show_hidden(const Names& names, unsigned first) const {
  JSValueRef arguments[] = {array_of(context_, names), JSValueMakeNumber(context_, first),
                            JSValueMakeBoolean(context_, false)};
  JSObjectCallAsFunction(context_, show_, nullptr, 3, arguments, nullptr);
}

Surroundings::Left Surroundings::restore(bool may_hide, bool wants_undeclared) const {
  JSValueRef arguments[] = {JSValueMakeBoolean(context_, may_hide), JSValueMakeBoolean(context_, wants_undeclared)};
  JSValueRef kept = JSObjectCallAsFunction(context_, restore_, nullptr, 2, arguments, nullptr);
  if (!kept || !JSValueToBoolean(context_, kept)) return {.nothing = false, .undeclared = {}};
  return {
      .nothing = true,
      .undeclared = JsString(JSValueIsString(context_, kept) ? JSValueToStringCopy(context_, kept, nullptr) : nullptr)};
}

}  // namespace zelto::script
