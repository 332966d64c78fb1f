// $zelto: what rewritten and generated code calls, and what the prelude is made of.
#include <korlib/activation.h>

#include "script/arguments.h"
#include "script/errors.h"
#include "script/script_classes.h"

namespace zelto::script {
namespace {

RealmState* realm_of(JSContextRef ctx) {
  EngineState* engine = EngineState::current();
  return engine ? engine->realm_of(ctx) : nullptr;
}

bool is_object_of(RealmState& realm, JSValueRef value, JSClassRef jsclass) {
  return JSValueIsObjectOfClass(realm.context(), value, jsclass);
}

JSObjectRef object_of(JSValueRef value) { return const_cast<JSObjectRef>(value); }

// Every function starts with the realm whose code calls it.
template <JSValueRef (*function)(RealmState&, std::size_t, const JSValueRef*, JSValueRef*)>
JSValueRef entry(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count, const JSValueRef* values,
                 JSValueRef* exception) {
  RealmState* realm = realm_of(ctx);
  JSValueRef value = realm ? function(*realm, count, values, exception) : nullptr;
  return value ? value : JSValueMakeUndefined(ctx);
}

void write(RealmState& realm, const VARIANT& value, JSValueRef* exception) {
  CComPtr<ZeltoTypeLibrary::IResponse> output(realm.output());
  if (!output) return realm.raise_text(L"This script has no page to write to", E_UNEXPECTED, exception);
  clear_error();
  const HRESULT hr = output->Write(value);
  if (FAILED(hr) || is_unwinding()) realm.raise(hr, L"Write", exception);
}

// html(n): the program's n-th piece of page text.
JSValueRef html(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (!realm.may_call(exception)) return nullptr;
  const double number = count > 0 ? JSValueToNumber(realm.context(), values[0], nullptr) : -1;
  const language::Program* program = realm.running();
  if (!program || !(number >= 0) || number >= static_cast<double>(program->literals.size())) return nullptr;
  write(realm, korlib::borrowed(program->literals[static_cast<std::size_t>(number)]), exception);
  return nullptr;
}

// out(value): `<%= value %>` is Response.Write(value), for every kind of value.
JSValueRef out(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count == 0 || !realm.may_call(exception)) return nullptr;
  CComVariant value;
  if (realm.to_variant(values[0], &value, exception)) write(realm, value, exception);
  return nullptr;
}

// at(callee, ...arguments): a reference to the call.
JSValueRef at(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  const EngineState::Classes& classes = realm.engine().classes();
  CComPtr<IDispatch> dispatch;
  DISPID id = DISPID_VALUE;
  std::wstring name;
  if (count > 0 && is_object_of(realm, values[0], classes.object)) {
    if (auto* held = held_by<AutomationObject>(object_of(values[0]))) dispatch = held->dispatch();
  } else if (count > 0 && is_object_of(realm, values[0], classes.member)) {
    if (auto* held = held_by<AutomationMember>(object_of(values[0]))) {
      dispatch = held->dispatch();
      id = held->id();
      name = held->name();
    }
  } else {
    if (count > 0 && JSValueIsUndefined(realm.context(), values[0])) realm.raise_missing(exception);
    if (*exception) return nullptr;
    realm.raise_reference_error(L"Left side of assignment is not a reference.", exception);
    return nullptr;
  }
  if (!dispatch) {
    raise_ended(realm.context(), exception);
    return nullptr;
  }
  CallArguments arguments;
  if (!realm.may_call(exception) || !arguments.convert(realm, count - 1, values + 1, exception)) return nullptr;
  return realm.make(classes.reference, std::make_unique<Reference>(realm, dispatch, id, name, arguments.take()));
}

// read(function, is_statement): calls a member that was named without parentheses. One that needs
// arguments stays a function; as a statement of its own it is an error, and so is one that is not there.
JSValueRef read(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  const bool is_statement = count > 1 && JSValueToBoolean(realm.context(), values[1]);
  if (is_statement && JSValueIsUndefined(realm.context(), values[0])) realm.raise_missing(exception);
  if (count == 0 || !is_object_of(realm, values[0], realm.engine().classes().member))
    return count ? values[0] : nullptr;
  auto* held = held_by<AutomationMember>(object_of(values[0]));
  if (!held) {
    raise_ended(realm.context(), exception);
    return nullptr;
  }
  const CComPtr<IDispatch> dispatch = held->dispatch();
  const std::wstring name = held->name();
  return call_bare(realm, dispatch.get(), held->id(), name, is_statement ? nullptr : values[0], exception);
}

// items(collection): an automation object's items as an array; null for anything else.
JSValueRef items(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  JSValueRef none = JSValueMakeNull(realm.context());
  if (count == 0 || !is_object_of(realm, values[0], realm.engine().classes().object)) return none;
  auto* held = held_by<AutomationObject>(object_of(values[0]));
  if (!held) raise_ended(realm.context(), exception);
  if (!held || !realm.may_call(exception)) return none;
  const CComPtr<IDispatch> dispatch = held->dispatch();
  std::vector<CComVariant> found;
  const HRESULT hr = collect_items(realm, dispatch.get(), &found);
  if (FAILED(hr) || is_unwinding()) {
    realm.raise(is_refused(hr) ? DISP_E_MEMBERNOTFOUND : hr, L"_NewEnum", exception);
    return nullptr;
  }
  JSObjectRef array = JSObjectMakeArray(realm.context(), 0, nullptr, nullptr);
  for (std::size_t i = 0; i < found.size(); ++i) {
    JSValueRef value = realm.to_script(found[i], exception);
    if (!value) return nullptr;
    JSObjectSetPropertyAtIndex(realm.context(), array, static_cast<unsigned>(i), value, exception);
  }
  return array;
}

HRESULT create_object(RealmState& realm, BSTR name, CComPtr<IDispatch>* out) {
  CComQIPtr<ZeltoTypeLibrary::IServer> server(realm.server());
  if (server) return server->CreateObject(name, out->put());
  CLSID clsid{};
  RETURN_IF_FAILED(CLSIDFromProgID(name, &clsid));
  return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, korlib::iid_of<IDispatch>, out->put_void());
}

// create(name): a new automation object, as Server.CreateObject makes it.
JSValueRef create(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (!realm.may_call(exception)) return nullptr;
  const JsString text(count > 0 ? JSValueToStringCopy(realm.context(), values[0], exception) : nullptr);
  if (*exception) return nullptr;
  CComBSTR name;
  if (text.get()) name.attach(new_bstr(text.view()));
  clear_error();
  CComPtr<IDispatch> object;
  const HRESULT hr = create_object(realm, name, &object);
  if (FAILED(hr) || is_unwinding()) {
    realm.raise(hr, name.view(), exception);
    return nullptr;
  }
  JSValueRef made = realm.wrap(object.get());
  note_kind(realm, made, values[0]);
  return made;
}

// has(object, name): whether an automation object has that member, which has just been read. One that it does not
// have is an error that says so.
JSValueRef has(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  JSContextRef ctx = realm.context();
  const bool is_automation = count > 0 && is_object_of(realm, values[0], realm.engine().classes().object);
  if (is_automation) realm.raise_missing(exception);
  return JSValueMakeBoolean(ctx, is_automation);
}

// log(level, text): a line in the host's log.
JSValueRef log(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count > 1 && realm.may_call(exception)) realm.log(realm.text_of(values[0]), realm.text_of(values[1]));
  return nullptr;
}

// known(name, message): of an error of the engine the number that older pages know, or 0, and its message as the
// page's author would have it.
JSValueRef known(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception) {
  if (count < 2) return nullptr;
  ScriptError error;
  error.message = realm.text_of(values[1]);
  realm.put_into_words(realm.text_of(values[0]), &error);
  JSValueRef pair[] = {JSValueMakeNumber(realm.context(), error.number),
                       JSValueMakeString(realm.context(), JsString(error.message).get())};
  return JSObjectMakeArray(realm.context(), 2, pair, exception);
}

bool set_thrown(JSContextRef ctx, JSObjectRef, JSStringRef, JSValueRef value, JSValueRef*) {
  if (RealmState* realm = realm_of(ctx)) realm->note_throw(value);
  return true;
}

constexpr JSPropertyAttributes kFixed =
    kJSPropertyAttributeDontEnum | kJSPropertyAttributeReadOnly | kJSPropertyAttributeDontDelete;

}  // namespace

JSClassRef make_helper_class() {
  static const JSStaticFunction functions[] = {
      {"html", entry<html>, kFixed}, {"out", entry<out>, kFixed},     {"at", entry<at>, kFixed},
      {"read", entry<read>, kFixed}, {"items", entry<items>, kFixed}, {"create", entry<create>, kFixed},
      {"has", entry<has>, kFixed},   {"log", entry<log>, kFixed},     {"known", entry<known>, kFixed},
      {nullptr, nullptr, 0},
  };
  static const JSStaticValue values[] = {
      {"thrown", [](JSContextRef ctx, JSObjectRef, JSStringRef, JSValueRef*) { return JSValueMakeUndefined(ctx); },
       set_thrown, kJSPropertyAttributeDontEnum | kJSPropertyAttributeDontDelete},
      {nullptr, nullptr, nullptr, 0},
  };
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = "Zelto";
  definition.staticFunctions = functions;
  definition.staticValues = values;
  return JSClassCreate(&definition);
}

}  // namespace zelto::script
