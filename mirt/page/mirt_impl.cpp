#include "page/mirt_impl.h"

#include <korlib/activation.h>
#include <korlib/dbcommand.h>

#include "frame/error.h"
#include "page/text.h"
#include "templator/marks.h"
#include "templator/mirted_templator_impl.h"

namespace {

using Self = GIMirtImpl<IMirt>;
using mirt::guarded;

HRESULT put(CComBSTR& property, BSTR value) {
  CComBSTR copy;
  // The same bytes, an odd end included; null stays null.
  if (value) copy.attach(SysAllocStringByteLen(reinterpret_cast<const char*>(value), SysStringByteLen(value)));
  if (value && !copy) return E_OUTOFMEMORY;
  property = std::move(copy);
  return S_OK;
}

HRESULT get(const CComBSTR& property, BSTR* value) {
  if (!value) return E_POINTER;
  *value = property.copy();
  return property && !*value ? E_OUTOFMEMORY : S_OK;
}

// 1 is not True: only what a script's True arrives as.
HRESULT put(bool& property, VARIANT_BOOL value) {
  property = value == VARIANT_TRUE;
  return S_OK;
}

HRESULT get(bool property, VARIANT_BOOL* value) {
  if (!value) return E_POINTER;
  *value = property ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

// front + name=value& with both URL-encoded by the host.
HRESULT encoded_pair(ZeltoTypeLibrary::IServer* server, std::wstring_view front, BSTR name, BSTR value, BSTR* out) {
  if (!server) return E_FAIL;
  CComBSTR encoded_name;
  CComBSTR encoded_value;
  RETURN_IF_FAILED(server->URLEncode(name, encoded_name.put()));
  RETURN_IF_FAILED(server->URLEncode(value, encoded_value.put()));
  *out = page::join({front, encoded_name.view(), L"=", encoded_value.view(), L"&"}).detach();
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace

Self::GIMirtImpl()
    : CMirtConcept(this),
      CTemplatorConcept(kMarkTypes<MarkOwner::page>.data()),
      fields_(asp_),
      memory_(asp_),
      binding_(handler_, fields_, memory_),
      templates_(*this, [this](bool& is_drawn) { return draw_instead(is_drawn); }),
      texts_(*this),
      messages_(texts_),
      inputs_(handler_, memory_, dictionaries_, texts_),
      draw_events_(owner_, handler_, inputs_, messages_) {}

// Templators that this page has made may live on.
Self::~GIMirtImpl() {
  if (child_link_) *child_link_ = {};
}

HRESULT Self::InContext(IGetContextProperties* context) {
  RETURN_IF_FAILED(asp_.take_from(context));
  set_response(asp_.response.get());
  CComPtr<IUnknown> output;
  RETURN_IF_FAILED(asp_.response.query(output.put()));
  return CTemplatorConcept::putref_Output(output.get());
}

// Properties that only hold a value.
STDMETHODIMP Self::put_Command(BSTR value) { return put(command_, value); }
STDMETHODIMP Self::get_Command(BSTR* value) { return get(command_, value); }
STDMETHODIMP Self::put_Template(BSTR value) { return put(template_, value); }
STDMETHODIMP Self::get_Template(BSTR* value) { return get(template_, value); }
STDMETHODIMP Self::put_TemplateFolder(BSTR value) { return put(templates_.folder, value); }
STDMETHODIMP Self::get_TemplateFolder(BSTR* value) { return get(templates_.folder, value); }
STDMETHODIMP Self::put_TemplateExt(BSTR value) { return put(templates_.extension, value); }
STDMETHODIMP Self::get_TemplateExt(BSTR* value) { return get(templates_.extension, value); }
STDMETHODIMP Self::put_TemplateCharset(BSTR value) { return put(templates_.charset, value); }
STDMETHODIMP Self::get_TemplateCharset(BSTR* value) { return get(templates_.charset, value); }
STDMETHODIMP Self::put_DefaultTemplate(BSTR value) { return put(templates_.default_template, value); }
STDMETHODIMP Self::get_DefaultTemplate(BSTR* value) { return get(templates_.default_template, value); }
STDMETHODIMP Self::put_TemplatePermissionPath(BSTR value) { return put(templates_.permission_path, value); }
STDMETHODIMP Self::get_TemplatePermissionPath(BSTR* value) { return get(templates_.permission_path, value); }
STDMETHODIMP Self::put_CommandName(BSTR value) { return put(memory_.command_name, value); }
STDMETHODIMP Self::get_CommandName(BSTR* value) { return get(memory_.command_name, value); }
STDMETHODIMP Self::put_Name(BSTR value) { return put(memory_.name, value); }
STDMETHODIMP Self::get_Name(BSTR* value) { return get(memory_.name, value); }
STDMETHODIMP Self::put_Backable(VARIANT_BOOL value) { return put(memory_.backable, value); }
STDMETHODIMP Self::get_Backable(VARIANT_BOOL* value) { return get(memory_.backable, value); }
STDMETHODIMP Self::put_NullIsEmpty(VARIANT_BOOL value) { return put(null_is_empty_, value); }
STDMETHODIMP Self::get_NullIsEmpty(VARIANT_BOOL* value) { return get(null_is_empty_, value); }
STDMETHODIMP Self::put_SubmitDecodeOnPutInto(VARIANT_BOOL value) { return put(binding_.decodes, value); }
STDMETHODIMP Self::get_SubmitDecodeOnPutInto(VARIANT_BOOL* value) { return get(binding_.decodes, value); }
STDMETHODIMP Self::put_CacheTemplate(VARIANT_BOOL value) { return put(templates_.are_cached, value); }
STDMETHODIMP Self::get_CacheTemplate(VARIANT_BOOL* value) { return get(templates_.are_cached, value); }
STDMETHODIMP Self::put_SelfEncode(VARIANT_BOOL value) { return put(self_encode_, value); }
STDMETHODIMP Self::get_SelfEncode(VARIANT_BOOL* value) { return get(self_encode_, value); }

STDMETHODIMP Self::putref_Output(IUnknown* sink) { return CTemplatorConcept::putref_Output(sink); }
STDMETHODIMP Self::get_Output(IUnknown** sink) { return CTemplatorConcept::get_Output(sink); }

// Scripts, and the dictionaries that they use.
STDMETHODIMP Self::AddScript(IDispatch* script) {
  return guarded([&] {
    handler_.add(script, owner_);
    return S_OK;
  });
}

STDMETHODIMP Self::putref_Script(IDispatch* script) { return AddScript(script); }

STDMETHODIMP Self::get_Script(IDispatch** script) {
  if (!script) return E_POINTER;
  IDispatch* last = handler_.last();
  if (!last) return S_OK;
  return CComPtr<IDispatch>(last).copy_to(script);
}

STDMETHODIMP Self::get_Bag(IDispatch** bag) {
  return guarded(bag, [&] {
    CComPtr<IKorLibDictionary> held;
    RETURN_IF_FAILED(memory_.get_bag(&held));
    return held.query(bag);
  });
}

STDMETHODIMP Self::get_View(IDispatch** view) {
  if (!view) return E_INVALIDARG;
  *view = nullptr;
  return dictionaries_.view ? dictionaries_.view.query(view) : E_FAIL;
}

STDMETHODIMP Self::get_Include(IDispatch** include) {
  if (!include) return E_POINTER;
  *include = nullptr;
  return dictionaries_.include ? dictionaries_.include.query(include) : S_OK;
}

STDMETHODIMP Self::get_Request(IDispatch** request) {
  return guarded(request, [&] { return fields_.get_submitted(request); });
}

STDMETHODIMP Self::FireEvent(BSTR name, VARIANT* argument, VARIANT* result, VARIANT_BOOL* exists) {
  return guarded(exists, [&] {
    const CComPtr<IDispatch> alive(owner_);
    CEvent event;
    const HRESULT found = handler_.GetEvent(name ? name : L"", event);
    if (found == DISP_E_UNKNOWNNAME) {
      mirt::forget_error();
      return S_OK;
    }
    RETURN_IF_FAILED(found);
    *exists = VARIANT_TRUE;
    RETURN_IF_FAILED(event.Fire(alive.get(), argument));
    return result ? VariantCopy(result, &event.result) : S_OK;
  });
}

// Binding.
STDMETHODIMP Self::PutIntoBag(BSTR name, VARIANT_BOOL as_array) {
  return guarded([&] {
    const CComPtr<IDispatch> alive(owner_);
    CComPtr<IKorLibDictionary> bag;
    RETURN_IF_FAILED(memory_.get_bag(&bag));
    return PutInto(bag.get(), name, as_array);
  });
}

STDMETHODIMP Self::PutIntoView(BSTR name, VARIANT_BOOL as_array) {
  return guarded([&] {
    const CComPtr<IDispatch> alive(owner_);
    const CComPtr<IKorLibDictionary> view = dictionaries_.view;
    return view ? PutInto(view.get(), name, as_array) : E_FAIL;
  });
}

STDMETHODIMP Self::PutIntoProp(BSTR name, VARIANT_BOOL as_array) {
  return guarded([&] {
    const CComPtr<IDispatch> alive(owner_);
    return PutInto(nullptr, name, as_array);
  });
}

HRESULT Self::PutInto(IKorLibDictionary* target, BSTR name, VARIANT_BOOL as_array) {
  return binding_.put_into(target, name, as_array != VARIANT_FALSE);
}

STDMETHODIMP Self::ToArray(IDispatch* collection, SAFEARRAY** array) { return page::values_of(collection, array); }

// Output.
STDMETHODIMP Self::Write(BSTR text, VARIANT_BOOL encode) {
  if (encode == VARIANT_FALSE || SysStringLen(text) == 0) return write_output(text);
  CComBSTR encoded;
  if (self_encode_) {
    RETURN_IF_FAILED(HTMLEncode(text, encoded.put()));
  } else {
    if (!asp_.server) return E_FAIL;
    RETURN_IF_FAILED(asp_.server->HTMLEncode(text, encoded.put()));
  }
  return write_output(encoded);
}

STDMETHODIMP Self::ProcessTemplate(BSTR text) {
  return guarded([&] {
    const CComPtr<IDispatch> alive(owner_);
    return CTemplatorConcept::Process(text);
  });
}

STDMETHODIMP Self::DrawTemplate(BSTR name) {
  return guarded([&] {
    const CComPtr<IDispatch> alive(owner_);
    return templates_.draw(korlib::view_of(name));
  });
}

STDMETHODIMP Self::AddMessage(VARIANT* message, BSTR key) {
  return guarded([&] { return message ? messages_.add(*message, korlib::view_of(key)) : E_POINTER; });
}

STDMETHODIMP Self::MessageExists(VARIANT* key, VARIANT_BOOL* exists) {
  return guarded(exists, [&] {
    if (!key) return E_POINTER;
    bool exist = false;
    RETURN_IF_FAILED(messages_.exist(*key, &exist));
    *exists = exist ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  });
}

STDMETHODIMP Self::Redirect(BSTR url) {
  if (!asp_.response) return E_FAIL;
  const CComBSTR status(L"302 Object moved");
  const CComBSTR header(L"Location");
  if (!status.get() || !header.get()) return E_OUTOFMEMORY;
  RETURN_IF_FAILED(asp_.response->put_Status(status));
  return asp_.response->AddHeader(header, url);
}

STDMETHODIMP Self::AddLog(BSTR first, BSTR second) {
  if (!asp_.response) return E_FAIL;
  const CComBSTR line = page::join({L"[", korlib::view_of(first), L":", korlib::view_of(second), L"]"});
  return line ? asp_.response->AppendToLog(line) : E_OUTOFMEMORY;
}

STDMETHODIMP Self::Abandon() { return memory_.abandon(); }

// Links that run a command of this page.
STDMETHODIMP Self::ToCommand(BSTR command, BSTR* link) {
  return guarded(link, [&] {
    CComBSTR field;
    RETURN_IF_FAILED(memory_.get_command_field(&field));
    return encoded_pair(asp_.server.get(), L"?", field, command, link);
  });
}

STDMETHODIMP Self::ToParameter(BSTR name, BSTR value, BSTR* parameter) {
  return guarded(parameter, [&] { return encoded_pair(asp_.server.get(), L"", name, value, parameter); });
}

// Objects that a page makes for its script.
STDMETHODIMP Self::NewADOCommand(VARIANT* connection, BSTR text, LONG type, IDispatch** command) {
  return guarded(command, [&] {
    if (!connection) return E_POINTER;
    CComPtr<IKorDBCommand> made;
    RETURN_IF_FAILED(CoCreateInstance(CLSID_KorDBCommand, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                      korlib::iid_of<IKorDBCommand>, made.put_void()));
    RETURN_IF_FAILED(made->put_ActiveConnection(*connection));
    RETURN_IF_FAILED(made->put_CommandType(type));
    RETURN_IF_FAILED(made->put_CommandText(text));
    return made.query(command);
  });
}

// The child keeps the view and the bag as they are now. A page without a session state has no bag; only a mark that
// asks for it fails.
STDMETHODIMP Self::NewTemplator(BSTR prefix, IMirtedTemplator** templator) {
  return guarded(templator, [&] {
    CComPtr<IMirtedTemplator> made;
    RETURN_IF_FAILED(g_oCF_MirtedTemplator.CreateInstance(nullptr, korlib::iid_of<IMirtedTemplator>, made.put_void()));
    CComPtr<IKorLibDictionary> bag;
    RETURN_IF_FAILED(memory_.get_bag_if_bound(&bag));
    if (!child_link_) child_link_ = std::make_shared<MainLink>(MainLink{this, &self_encode_});
    auto* child = static_cast<CMirtedTemplator*>(made.get());
    RETURN_IF_FAILED(child->bind(prefix, child_link_, dictionaries_.view.get(), bag.get()));
    *templator = made.detach();
    return S_OK;
  });
}

STDMETHODIMP Self::NewMail(BSTR, LONG, IDispatch** mail) {
  if (mail) *mail = nullptr;
  return E_NOTIMPL;
}
