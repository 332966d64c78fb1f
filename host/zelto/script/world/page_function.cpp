#include "script/world/page_function.h"

#include <algorithm>

#include "script/engine.h"
#include "script/text.h"

namespace zelto::script {
namespace {

// A function of (the names of var and function, the host's names, whether values are kept, of those that may be
// assigned to and of the others, whether the page may hide what it does). It answers: what the page hands its names
// to, read, write, and restore. What it uses it has taken before any page could change it; reading a property of an
// object without a prototype is nobody else's to change either.
constexpr std::u16string_view kSupport =
    uR"js((function (declared, hosts, values_are_kept, may_hide) {
"use strict";
const { apply, defineProperty, deleteProperty, getOwnPropertyDescriptor, isExtensible, ownKeys } = Reflect;
const { freeze, keys: visible_keys } = Object;
const { exec } = RegExp.prototype, blank = /(?:)/, Matches = RegExp, world = globalThis;
let names;
for (let i = 0; i < declared.length; i++) {
  const name = declared[i];
  // An object that inherits from the global one gets a property of its own.
  const own = { set(value) {
    if (this !== world) defineProperty(this, name, { value, writable: true, enumerable: true, configurable: true });
    else if (names !== undefined) names(i, value, true);
  } };
  const get = freeze(() => names === undefined ? undefined : names(i));
  defineProperty(world, name, { get, set: freeze(own.set), enumerable: true });
}
const known = { __proto__: null };
const first_keys = ownKeys(world);
for (let i = 0; i < first_keys.length; i++) known[first_keys[i]] = true;
const count = first_keys.length;

// Names that are not shown, which few pages make, are looked for where the page has the words for it, and now and then.
const visible_count = visible_keys(world).length;
let looks = 0, has_told = false, undeclared = "";
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
const are_keys_kept = whole => {
  if (!whole && visible_keys(world).length === visible_count) return true;
  const keys = ownKeys(world);
  if (keys.length === count) return true;
  for (let i = 0; i < keys.length; i++) {
    if (known[keys[i]] !== undefined) continue;
    if (!has_told && typeof keys[i] === "string") undeclared += (undeclared === "" ? "" : ", ") + keys[i];
    deleteProperty(world, keys[i]);
  }
  return ownKeys(world).length === count;
};
const host_values = hosts.map(name => world[name]);
const is_host_kept = i => {
  const found = getOwnPropertyDescriptor(world, hosts[i]);
  if (found === undefined || found.writable !== true || found.configurable !== true || found.enumerable) return false;
  if (found.value !== host_values[i]) world[hosts[i]] = host_values[i];
  return true;
};
const restore = () => {
  names = undefined;
  // All of it after pages that have the words to hide something, and now and then.
  const whole = may_hide || (++looks & 63) === 0;
  if (!are_keys_kept(whole) || !isExtensible(world)) return false;
  if (whole && !are_globals_plain()) return false;
  for (let i = 0; i < hosts.length; i++) if (!is_host_kept(i)) return false;
  apply(exec, blank, [""]);
  Matches.input = "";
  Matches.multiline = false;
  if (!values_are_kept()) return false;
  if (has_told || undeclared === "") return true;
  has_told = true;
  return undeclared;
};
return [freeze(given => { names = given; }), i => names(i), (i, value) => { names(i, value, true); }, restore];
}))js";

// What stands in front of the page's text, in its first line; "$zelto_i" is the number of a name.
std::u16string opening_of(const language::Program& program, const PageFunction::Names& names) {
  std::u16string source = u"($zelto_page) => {";
  if (program.scope.is_strict) source += u" \"use strict\";";
  source += u" $zelto_page(($zelto_i, $zelto_v, $zelto_w) => { switch ($zelto_i) {";
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string digits = std::to_string(i);
    source += u" case " + std::u16string(digits.begin(), digits.end()) + u": return $zelto_w ? " + names[i] +
              u" = $zelto_v : " + names[i] + u";";
  }
  return source + u" } });";
}

struct Declared {
  PageFunction::Names properties;  // of var and function
  PageFunction::Names lexical;     // of let, const and class
};

PageFunction::Names keys_of(JSContextRef context, JSObjectRef object) {
  PageFunction::Names keys;
  JSPropertyNameArrayRef names = JSObjectCopyPropertyNames(context, object);
  for (std::size_t i = 0; i < JSPropertyNameArrayGetCount(names); ++i) {
    keys.emplace_back(JsString::view_of(JSPropertyNameArrayGetNameAtIndex(names, i)));
  }
  JSPropertyNameArrayRelease(names);
  return keys;
}

// The names of the language go first: a variable of such a name would otherwise not show.
constexpr std::u16string_view kEmpty = u"for (const name of Reflect.ownKeys(this)) delete this[name]";

// What a script declares is there before its first statement runs; so it is begun in a global object of its own, with
// a statement that ends it. A lexical name that has no value yet fails in other words than one that nobody declared.
// False when the text is no script, however well it would do as a function: one with a return, say.
bool find_declared(Engine& engine, const language::Program& program, Declared* declared) {
  struct Release {
    void operator()(JSGlobalContextRef context) const { JSGlobalContextRelease(context); }
  };
  const std::unique_ptr<OpaqueJSContext, Release> scratch(JSGlobalContextCreateInGroup(engine.group(), nullptr));
  JSContextRef context = scratch.get();
  evaluate(context, kEmpty);
  JSValueRef thrown = nullptr;
  evaluate(context, (program.scope.is_strict ? u"\"use strict\"; throw 0;" : u"throw 0;") + program.text, &thrown);
  if (!thrown || !JSValueIsNumber(context, thrown)) return false;
  declared->properties = keys_of(context, JSContextGetGlobalObject(context));
  for (const std::u16string& name : program.scope.lexical_candidates) {
    if (std::ranges::find(declared->lexical, name) != declared->lexical.end()) continue;
    JSValueRef failure = nullptr;
    evaluate(context, name, &failure);
    if (failure && text_of(context, failure).find(L"Can't find variable") == std::wstring::npos) {
      declared->lexical.push_back(name);
    }
  }
  return true;
}

JSValueRef array_of(JSContextRef context, const PageFunction::Names& names) {
  JSObjectRef array = JSObjectMakeArray(context, 0, nullptr, nullptr);
  for (unsigned i = 0; i < names.size(); ++i) {
    JSObjectSetPropertyAtIndex(context, array, i,
                               JSValueMakeString(context, JsString(std::u16string_view(names[i])).get()), nullptr);
  }
  return array;
}

}  // namespace

std::unique_ptr<PageFunction> PageFunction::make(Engine& engine, JSGlobalContextRef context,
                                                 const language::Program& program, const Surroundings& around) {
  Declared declared;
  if (!program.scope.can_be_function || !find_declared(engine, program, &declared)) {
    return nullptr;
  }
  JSObjectRef global = JSContextGetGlobalObject(context);
  for (const std::u16string& name : declared.properties) {
    // As a property of the global object it would have had that value.
    if (JSObjectHasProperty(context, global, JsString(std::u16string_view(name)).get())) return nullptr;
  }
  Names names = declared.properties;
  names.insert(names.end(), declared.lexical.begin(), declared.lexical.end());
  const std::u16string opening = opening_of(program, names);
  const ParsedScript parsed(engine.group(), opening + program.text + u"\n}", program.url);
  if (!parsed.get()) return nullptr;
  JSValueRef page = JSScriptEvaluate(context, parsed.get(), nullptr, nullptr);
  JSValueRef make_support = evaluate(context, kSupport);
  if (!page || !make_support) return nullptr;
  JSValueRef arguments[] = {array_of(context, declared.properties), array_of(context, around.hosts),
                            around.values_check, JSValueMakeBoolean(context, program.scope.may_hide)};
  JSValueRef support = JSObjectCallAsFunction(context, object_of(make_support), nullptr, 4, arguments, nullptr);
  if (!support) return nullptr;
  return std::unique_ptr<PageFunction>(
      new PageFunction(context, names, object_of(page), object_of(support), static_cast<int>(opening.size())));
}

PageFunction::PageFunction(JSGlobalContextRef context, const Names& names, JSObjectRef page, JSObjectRef support,
                           int opening_length)
    : context_(context), opening_length_(opening_length), page_(page) {
  for (unsigned i = 0; i < names.size(); ++i) names_.emplace(names[i], i);
  unsigned at = 0;
  for (JSObjectRef* kept : {&hand_out_, &read_, &write_, &restore_}) {
    *kept = object_of(JSObjectGetPropertyAtIndex(context, support, at++, nullptr));
  }
  for (JSObjectRef kept : {page_, hand_out_, read_, write_, restore_}) JSValueProtect(context_, kept);
}

PageFunction::~PageFunction() {
  for (JSObjectRef kept : {page_, hand_out_, read_, write_, restore_}) JSValueUnprotect(context_, kept);
}

void PageFunction::call(JSValueRef* exception) {
  JSValueRef argument = hand_out_;
  JSObjectCallAsFunction(context_, page_, nullptr, 1, &argument, exception);
}

PageFunction::Left PageFunction::restore() {
  JSValueRef kept = JSObjectCallAsFunction(context_, restore_, nullptr, 0, nullptr, nullptr);
  if (!kept || !JSValueToBoolean(context_, kept)) return {.nothing = false, .undeclared = {}};
  return {
      .nothing = true,
      .undeclared = JsString(JSValueIsString(context_, kept) ? JSValueToStringCopy(context_, kept, nullptr) : nullptr)};
}

const unsigned* PageFunction::find(std::u16string_view name) const {
  const auto found = names_.find(name);
  return found == names_.end() ? nullptr : &found->second;
}

JSValueRef PageFunction::read(unsigned name, JSValueRef* exception) const {
  JSValueRef index = JSValueMakeNumber(context_, name);
  return JSObjectCallAsFunction(context_, read_, nullptr, 1, &index, exception);
}

void PageFunction::write(unsigned name, JSValueRef value, JSValueRef* exception) const {
  JSValueRef arguments[] = {JSValueMakeNumber(context_, name), value};
  JSObjectCallAsFunction(context_, write_, nullptr, 2, arguments, exception);
}

}  // namespace zelto::script
