#include "script/world/page_function.h"

#include <algorithm>

#include "script/engine.h"
#include "script/text.h"

namespace zelto::script {
namespace {

// What stands in front of the page's text, in its first line; "$zelto_i" is the number of a name. The function is
// called what stacks call a script.
std::u16string opening_of(const language::Program& program, const Names& names) {
  std::u16string source = u"({ \"global code\": ($zelto_page) => {";
  if (program.scope.is_strict) source += u" \"use strict\";";
  source += u" $zelto_page(($zelto_i, $zelto_v, $zelto_w) => { switch ($zelto_i) {";
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string digits = std::to_string(i);
    source += u" case " + std::u16string(digits.begin(), digits.end()) + u": return $zelto_w ? " + names[i] +
              u" = $zelto_v : " + names[i] + u";";
  }
  return source + u" } });";
}

constexpr std::u16string_view kClosing = u"\n} })[\"global code\"]";

Names keys_of(JSContextRef context, JSObjectRef object) {
  Names keys;
  JSPropertyNameArrayRef names = JSObjectCopyPropertyNames(context, object);
  for (std::size_t i = 0; i < JSPropertyNameArrayGetCount(names); ++i) {
    keys.emplace_back(JsString::view_of(JSPropertyNameArrayGetNameAtIndex(names, i)));
  }
  JSPropertyNameArrayRelease(names);
  return keys;
}

// The names of the language go first: a variable of such a name would otherwise not show.
constexpr std::u16string_view kEmpty = u"for (const name of Reflect.ownKeys(this)) delete this[name]";

}  // namespace

// What a script declares is there before its first statement runs; so it is begun in a global object of its own, with
// a statement that ends it. A lexical name that has no value yet fails in other words than one that nobody declared.
std::optional<DeclaredNames> DeclaredNames::of(Engine& engine, const language::Program& program) {
  struct Release {
    void operator()(JSGlobalContextRef context) const { JSGlobalContextRelease(context); }
  };
  const std::unique_ptr<OpaqueJSContext, Release> scratch(JSGlobalContextCreateInGroup(engine.group(), nullptr));
  JSContextRef context = scratch.get();
  evaluate(context, kEmpty);
  JSValueRef thrown = nullptr;
  evaluate(context, (program.scope.is_strict ? u"\"use strict\"; throw 0;" : u"throw 0;") + program.text, &thrown);
  if (!thrown || !JSValueIsNumber(context, thrown)) return std::nullopt;
  DeclaredNames declared{.properties = keys_of(context, JSContextGetGlobalObject(context)), .lexical = {}};
  for (const std::u16string& name : program.scope.lexical_candidates) {
    if (std::ranges::find(declared.lexical, name) != declared.lexical.end()) continue;
    JSValueRef failure = nullptr;
    evaluate(context, name, &failure);
    if (failure && text_of(context, failure).find(L"Can't find variable") == std::wstring::npos) {
      declared.lexical.push_back(name);
    }
  }
  return declared;
}

// As a property of the global object, a name that is there would have had that value.
bool DeclaredNames::are_free(JSContextRef context) const {
  JSObjectRef global = JSContextGetGlobalObject(context);
  return std::ranges::none_of(properties, [&](const std::u16string& name) {
    return JSObjectHasProperty(context, global, JsString(std::u16string_view(name)).get());
  });
}

std::unique_ptr<PageFunction> PageFunction::make(Engine& engine, JSGlobalContextRef context, const Surroundings& around,
                                                 const language::Program& program, const DeclaredNames& declared) {
  Names names = declared.properties;
  names.insert(names.end(), declared.lexical.begin(), declared.lexical.end());
  const std::u16string opening = opening_of(program, names);
  const ParsedScript parsed(engine.group(), opening + program.text + std::u16string(kClosing), program.url);
  if (!parsed.get()) return nullptr;
  JSValueRef function = JSScriptEvaluate(context, parsed.get(), nullptr, nullptr);
  JSValueRef literals = evaluate(context, u"({ __proto__: null })");
  if (!function || !literals) return nullptr;
  std::unique_ptr<PageFunction> page(
      new PageFunction(context, around, object_of(function), object_of(literals), static_cast<int>(opening.size())));
  page->may_hide_ = program.scope.may_hide;
  for (unsigned i = 0; i < names.size(); ++i) page->names_.emplace(names[i], i);
  page->properties_ = declared.properties;
  page->lexical_ = declared.lexical;
  return page;
}

PageFunction::PageFunction(JSGlobalContextRef context, const Surroundings& around, JSObjectRef function,
                           JSObjectRef literals, int opening_length)
    : context_(context), around_(around), function_(function), literals_(literals), opening_length_(opening_length) {
  for (JSObjectRef kept : {function_, literals_}) JSValueProtect(context_, kept);
}

PageFunction::~PageFunction() {
  for (JSObjectRef kept : {function_, literals_}) JSValueUnprotect(context_, kept);
}

void PageFunction::call(JSValueRef* exception) {
  JSValueRef argument = around_.hand_out();
  JSObjectCallAsFunction(context_, function_, nullptr, 1, &argument, exception);
}

Surroundings::Left PageFunction::restore(bool may_hide) {
  Surroundings::Left left = around_.restore(may_hide_ || may_hide, !has_told_);
  has_told_ |= left.undeclared.get() != nullptr;
  return left;
}

const unsigned* PageFunction::find(std::u16string_view name) const {
  const auto found = names_.find(name);
  return found == names_.end() ? nullptr : &found->second;
}

}  // namespace zelto::script
