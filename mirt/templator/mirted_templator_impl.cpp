#include "templator/mirted_templator_impl.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include <korlib/activation.h>

#include "templator/mark_value.h"

namespace {

constexpr VARIANT_BOOL kEncode = VARIANT_TRUE;
constexpr VARIANT_BOOL kRaw = VARIANT_FALSE;

}  // namespace

// What a mark's type character stands for. Every source has a pair: raw, and HTML-encoded.
struct GIMirtedTemplatorImpl<IMirtedTemplator>::MarkKind {
  using Self = GIMirtedTemplatorImpl;

  HRESULT (Self::*draw)(const CMarkData& mark, BSTR name, VARIANT_BOOL encode);
  wchar_t type;
  VARIANT_BOOL encode;

  static const MarkKind* find(wchar_t type) {
    static constexpr MarkKind kKinds[] = {
        {&Self::OnMarked_Process, L'%', kRaw},        {&Self::OnMarked_Property, L':', kRaw},
        {&Self::OnMarked_Property, L';', kEncode},    {&Self::OnMarked_View, L'/', kRaw},
        {&Self::OnMarked_View, L'*', kEncode},        {&Self::OnMarked_Session, L'~', kRaw},
        {&Self::OnMarked_Session, L'=', kEncode},     {&Self::OnMarked_Application, L'-', kRaw},
        {&Self::OnMarked_Application, L'+', kEncode}, {&Self::OnMarked_Request, L'\\', kRaw},
        {&Self::OnMarked_Request, L'$', kEncode},     {&Self::OnMarked_Bag, L'|', kRaw},
        {&Self::OnMarked_Bag, L'&', kEncode},
    };
    const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [type](const MarkKind& candidate) { return candidate.type == type; });
    return kind == std::end(kKinds) ? nullptr : kind;
  }
};

GIMirtedTemplatorImpl<IMirtedTemplator>::GIMirtedTemplatorImpl() : GTemplatorImpl(L"%;:*/=~+-$\\&|") {}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::bind(BSTR event_prefix, std::shared_ptr<const MainLink> main,
                                                      IKorLibDictionary* view, IKorLibDictionary* bag) {
  CComBSTR prefix(korlib::view_of(event_prefix));
  if (!prefix.get()) return E_OUTOFMEMORY;
  event_prefix_ = std::move(prefix);
  main_ = std::move(main);
  view_ = view;
  bag_ = bag;
  return S_OK;
}

STDMETHODIMP GIMirtedTemplatorImpl<IMirtedTemplator>::get_Main(IMirt** main) {
  if (!main) return E_POINTER;
  *main = nullptr;
  IMirt* const page = this->main();
  return page ? page->QueryInterface(korlib::iid_of<IMirt>, reinterpret_cast<void**>(main)) : E_FAIL;
}

STDMETHODIMP GIMirtedTemplatorImpl<IMirtedTemplator>::Write(BSTR text, VARIANT_BOOL encode) {
  if (!has_output()) return E_FAIL;
  if (!encode || SysStringLen(text) == 0) return write_output(text);
  CComBSTR encoded;
  RETURN_IF_FAILED(html_encode(text, encoded.put()));
  return write_output(encoded);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::html_encode(BSTR text, BSTR* encoded) {
  if (IMirt* const page = main(); page && *main_->self_encode) return page->HTMLEncode(text, encoded);
  return asp_.server ? asp_.server->HTMLEncode(text, encoded) : E_FAIL;
}

STDMETHODIMP GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked(CMarkData& mark) {
  const MarkKind* kind = MarkKind::find(mark.Type);
  if (!kind) return S_OK;
  const CComBSTR name = bstr_of(mark.Name);
  if (!name.get()) return E_OUTOFMEMORY;
  return (this->*kind->draw)(mark, name, kind->encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_Process(const CMarkData& mark, BSTR name, VARIANT_BOOL) {
  const std::wstring function = std::wstring(event_prefix_.view()).append(korlib::view_of(name));
  CEvent event;
  const HRESULT found = m_oScripts.GetEvent(function.c_str(), event);
  if (SUCCEEDED(found)) return fire_with_texts(event, this, mark.Params);
  if (found == korlib::kOutOfStack) return found;  // nobody could be asked
  return RaiseError(E_FAIL, L"MirtedTemplator", (L"Event '" + function + L"' not found.").c_str());
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_Property(const CMarkData& mark, BSTR name,
                                                                   VARIANT_BOOL encode) {
  CEvent member;
  RETURN_IF_FAILED(m_oScripts.GetEvent(name, member));
  CComVariant text;
  RETURN_IF_FAILED(script_member_text(member, this, mark, false, &text));
  return Write(text.bstrVal, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_View(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  return write_item(view_.get(), mark, name, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_Bag(const CMarkData& mark, BSTR name, VARIANT_BOOL encode) {
  return write_item(bag_.get(), mark, name, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_Session(const CMarkData& mark, BSTR name,
                                                                  VARIANT_BOOL encode) {
  CComVariant value;
  RETURN_IF_FAILED(read_value(asp_.session.get(), name, &value));
  return write_value(value, mark, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_Application(const CMarkData& mark, BSTR name,
                                                                      VARIANT_BOOL encode) {
  CComVariant value;
  RETURN_IF_FAILED(read_value(asp_.application.get(), name, &value));
  return write_value(value, mark, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::OnMarked_Request(const CMarkData& mark, BSTR name,
                                                                  VARIANT_BOOL encode) {
  if (!asp_.request) return E_FAIL;
  CComPtr<IDispatch> spItem;
  RETURN_IF_FAILED(asp_.request->get_Item(name, spItem.put()));
  CComVariant value(spItem.get());
  return write_value(value, mark, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::write_item(IKorLibDictionary* items, const CMarkData& mark, BSTR name,
                                                            VARIANT_BOOL encode) {
  CComVariant value;
  RETURN_IF_FAILED(read_item(items, name, &value));
  return write_value(value, mark, encode);
}

HRESULT GIMirtedTemplatorImpl<IMirtedTemplator>::write_value(CComVariant& value, const CMarkData& mark,
                                                             VARIANT_BOOL encode) {
  RETURN_IF_FAILED(ChangeToBSTR(&value, &mark.Params, false));
  return Write(value.bstrVal, encode);
}
