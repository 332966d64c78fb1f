#include "script/world/script_builtins.h"

#include <korlib/activation.h>

#include "script/automation_member.h"
#include "script/automation_object.h"
#include "script/callback.h"
#include "script/realm.h"
#include "script/world/function_text.h"

namespace zelto::script {
namespace {

bool is_object_of(Realm& realm, JSValueRef value, JSClassRef jsclass) {
  return JSValueIsObjectOfClass(realm.context(), value, jsclass);
}

// Every function starts with the realm whose code calls it.
template <JSValueRef (*function)(Realm&, std::size_t, const JSValueRef*, JSValueRef*)>
JSValueRef entry(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count, const JSValueRef* values,
                 JSValueRef* exception) {
  Realm* realm = Engine::realm_of(ctx);
  JSValueRef value = realm ? function(*realm, count, values, exception) : nullptr;
  return value ? value : JSValueMakeUndefined(ctx);
}

// literal(n): the program's n-th piece of page text.
JSValueRef literal(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef*) {
  const double number = count > 0 ? JSValueToNumber(realm.context(), values[0], nullptr) : -1;
  const language::Program* program = realm.running();
  if (!program || !(number >= 0) || number >= static_cast<double>(program->literals.size())) return nullptr;
  return string_value(realm.context(), program->literals[static_cast<std::size_t>(number)].view());
}

// hand_over(): the text that the script has collected has become long. It goes with any call.
JSValueRef hand_over(Realm& realm, std::size_t, const JSValueRef*, JSValueRef* exception) {
  realm.calls().may_call(exception);
  return nullptr;
}

// out(value): `<%= value %>` is Response.Write(value), for the kinds of values that the script does not collect.
JSValueRef out(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count == 0 || !realm.calls().may_call(exception)) return nullptr;
  CComVariant value;
  if (realm.values().to_variant(values[0], &value, exception)) realm.calls().write(value, exception);
  return nullptr;
}

// at(callee, ...arguments): a reference to the call.
JSValueRef at(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  const HostClasses& classes = realm.engine().classes();
  CallTarget target;
  if (count > 0 && is_object_of(realm, values[0], classes.object)) {
    auto* held = living<AutomationObject>(realm.context(), object_of(values[0]), exception);
    if (held) target.object = held->dispatch();
  } else if (count > 0 && is_object_of(realm, values[0], classes.member)) {
    auto* held = living<AutomationMember>(realm.context(), object_of(values[0]), exception);
    if (held) target = held->target();
  } else {
    if (count > 0 && JSValueIsUndefined(realm.context(), values[0])) realm.errors().raise_missing(exception);
    if (!*exception) {
      realm.errors().raise_reference_error(L"Left side of assignment is not a reference.", exception);
    }
  }
  CallArguments arguments;
  if (*exception || !realm.calls().may_call(exception) ||
      !arguments.convert(realm.values(), count - 1, values + 1, exception)) {
    return nullptr;
  }
  return realm.wrappers().make(classes.reference,
                               std::make_unique<AutomationMember>(realm, std::move(target), std::move(arguments)));
}

// read(function, is_statement): calls a member that was named without parentheses. One that needs
// arguments stays a function; as a statement of its own it is an error, and so is one that is not there.
JSValueRef read(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  const bool is_statement = count > 1 && JSValueToBoolean(realm.context(), values[1]);
  if (is_statement && JSValueIsUndefined(realm.context(), values[0])) realm.errors().raise_missing(exception);
  if (count == 0 || !is_object_of(realm, values[0], realm.engine().classes().member))
    return count ? values[0] : nullptr;
  auto* held = living<AutomationMember>(realm.context(), object_of(values[0]), exception);
  if (!held) return nullptr;
  const CallTarget target = held->target();
  return realm.calls().call_bare(target, is_statement ? nullptr : values[0], exception);
}

// items(collection): an automation object's items as an array; null for anything else.
JSValueRef items(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  JSValueRef none = JSValueMakeNull(realm.context());
  if (count == 0 || !is_object_of(realm, values[0], realm.engine().classes().object)) return none;
  auto* held = living<AutomationObject>(realm.context(), object_of(values[0]), exception);
  if (!held || !realm.calls().may_call(exception)) return none;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  std::vector<CComVariant> found;
  const HRESULT hr = realm.calls().collect_items(dispatch.get(), &found);
  if (!realm.errors().check(is_refused(hr) ? DISP_E_MEMBERNOTFOUND : hr, L"_NewEnum", exception)) return nullptr;
  JSObjectRef array = JSObjectMakeArray(realm.context(), 0, nullptr, nullptr);
  for (std::size_t i = 0; i < found.size(); ++i) {
    JSValueRef value = realm.values().to_script(found[i], exception);
    if (!value) return nullptr;
    JSObjectSetPropertyAtIndex(realm.context(), array, static_cast<unsigned>(i), value, exception);
  }
  return array;
}

HRESULT create_object(Realm& realm, BSTR name, CComPtr<IDispatch>* out) {
  CComQIPtr<ZeltoTypeLibrary::IServer> server(realm.globals().server());
  if (server) return server->CreateObject(name, out->put());
  CLSID clsid{};
  RETURN_IF_FAILED(CLSIDFromProgID(name, &clsid));
  return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, korlib::iid_of<IDispatch>, out->put_void());
}

// create(name): a new automation object, as Server.CreateObject makes it.
JSValueRef create(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (!realm.calls().may_call(exception)) return nullptr;
  const JsString text(count > 0 ? JSValueToStringCopy(realm.context(), values[0], exception) : nullptr);
  if (*exception) return nullptr;
  CComBSTR name;
  if (text.get()) name.attach(new_bstr(text.get()));
  SetErrorInfo(0, nullptr);
  CComPtr<IDispatch> object;
  const HRESULT hr = create_object(realm, name, &object);
  if (!realm.errors().check(hr, name.view(), exception)) return nullptr;
  JSValueRef made = realm.wrappers().wrap(object.get());
  realm.calls().note_kind(made, values[0]);
  return made;
}

// has(object, name): whether an automation object has that member, which has just been read. One that it does not
// have is an error that says so.
JSValueRef has(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  JSContextRef ctx = realm.context();
  const bool is_automation = count > 0 && is_object_of(realm, values[0], realm.engine().classes().object);
  if (is_automation) realm.errors().raise_missing(exception);
  return JSValueMakeBoolean(ctx, is_automation);
}

// hand_global(object): the global object is handed to it.
JSValueRef hand_global(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef*) {
  const bool is_automation = count > 0 && is_object_of(realm, values[0], realm.engine().classes().object);
  if (!is_automation) realm.show_global();
  return nullptr;
}

// show_names(): code is about to be made of text, which finds the page's names nowhere but in the global object.
JSValueRef show_names(Realm& realm, std::size_t, const JSValueRef*, JSValueRef*) {
  realm.world().show_all_names();
  return nullptr;
}

// is_page(value): whether that is the function that the page became.
JSValueRef is_page(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef*) {
  const PageFunction* const page = realm.world().page();
  return JSValueMakeBoolean(realm.context(), count > 0 && page && page->is(values[0]));
}

// library(prelude, prototype): what compiled VBScript calls, and what is called before each program.
JSValueRef library(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count < 2) return nullptr;
  const vbscript::Library& made = realm.world().make_library(values[0], values[1]);
  JSValueRef pair[] = {made.object(), made.begin()};
  return JSObjectMakeArray(realm.context(), 2, pair, exception);
}

// log(level, text): a line in the host's log.
JSValueRef log(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count > 1 && realm.calls().may_call(exception))
    realm.globals().log(text_of(realm.context(), values[0]), text_of(realm.context(), values[1]));
  return nullptr;
}

// known(name, message): of an error of the engine the number that older pages know, or 0, and its message as the
// page's author would have it.
JSValueRef known(Realm& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count < 2) return nullptr;
  ScriptError error;
  error.message = text_of(realm.context(), values[1]);
  realm.reports().put_into_words(text_of(realm.context(), values[0]), &error);
  JSValueRef pair[] = {JSValueMakeNumber(realm.context(), error.number), string_value(realm.context(), error.message)};
  return JSObjectMakeArray(realm.context(), 2, pair, exception);
}

bool set_thrown(JSContextRef ctx, JSObjectRef, JSStringRef, JSValueRef value, JSValueRef*) {
  if (Realm* realm = Engine::realm_of(ctx)) realm->reports().note_throw(value);
  return true;
}

}  // namespace

JSClassRef make_builtins_class() {
  static const JSStaticFunction functions[] = {
      {"literal", callback<entry<literal>>, kFixed},
      {"hand_over", callback<entry<hand_over>>, kFixed},
      {"out", callback<entry<out>>, kFixed},
      {"at", callback<entry<at>>, kFixed},
      {"read", callback<entry<read>>, kFixed},
      {"items", callback<entry<items>>, kFixed},
      {"create", callback<entry<create>>, kFixed},
      {"has", callback<entry<has>>, kFixed},
      {"hand_global", callback<entry<hand_global>>, kFixed},
      {"library", callback<entry<library>>, kFixed},
      {"log", callback<entry<log>>, kFixed},
      {"known", callback<entry<known>>, kFixed},
      {"show_names", callback<entry<show_names>>, kFixed},
      {"is_page", callback<entry<is_page>>, kFixed},
      {"toString", callback<function_text>, kFixed},
      {nullptr, nullptr, 0},
  };
  static const JSStaticValue values[] = {
      {"thrown", [](JSContextRef ctx, JSObjectRef, JSStringRef, JSValueRef*) { return JSValueMakeUndefined(ctx); },
       callback<set_thrown>, kJSPropertyAttributeDontEnum | kJSPropertyAttributeDontDelete},
      {nullptr, nullptr, nullptr, 0},
  };
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = "Zelto";
  definition.staticFunctions = functions;
  definition.staticValues = values;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
