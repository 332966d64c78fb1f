#include "templator/mirted_templator_impl.h"

#include <string>
#include <utility>

#include <korlib/activation.h>

#include "templator/marks.h"

namespace {

using Self = GIMirtedTemplatorImpl<IMirtedTemplator>;

constexpr bool kNullIsEmpty = false;

}  // namespace

class Self::Values final : public MarkValues {
 public:
  explicit Values(Self& templator)
      : MarkValues(
            {&templator, templator.m_oScripts, templator.view_, templator.asp_, kNullIsEmpty, templator, kNoScript}),
        templator_(templator) {}

 private:
  HRESULT get_bag(CComPtr<IKorLibDictionary>* bag) const override {
    *bag = templator_.bag_;
    return S_OK;
  }
  HRESULT get_field(BSTR name, CComVariant* value, bool*) const override {
    CComPtr<IDispatch> field;
    RETURN_IF_FAILED(templator_.asp_.request->get_Item(name, field.put()));
    *value = CComVariant(field.get());
    return S_OK;
  }

  const Self& templator_;
};

Self::GIMirtedTemplatorImpl() : GTemplatorImpl(kMarkTypes<MarkOwner::templator>.data()) {}

HRESULT Self::InContext(IGetContextProperties* context) {
  RETURN_IF_FAILED(asp_.take_from(context));
  set_response(asp_.response.get());
  return S_OK;
}

HRESULT Self::bind(BSTR event_prefix, std::shared_ptr<const MainLink> main, IKorLibDictionary* view,
                   IKorLibDictionary* bag) {
  CComBSTR prefix(korlib::view_of(event_prefix));
  if (!prefix.get()) return E_OUTOFMEMORY;
  event_prefix_ = std::move(prefix);
  main_ = std::move(main);
  view_ = view;
  bag_ = bag;
  return S_OK;
}

STDMETHODIMP Self::get_Main(IMirt** main) {
  if (!main) return E_POINTER;
  *main = nullptr;
  IMirt* const page = this->main();
  return page ? page->QueryInterface(korlib::iid_of<IMirt>, reinterpret_cast<void**>(main)) : E_FAIL;
}

STDMETHODIMP Self::Write(BSTR text, VARIANT_BOOL encode) {
  if (!has_output()) return E_FAIL;
  if (!encode || SysStringLen(text) == 0) return write_output(text);
  CComBSTR encoded;
  RETURN_IF_FAILED(html_encode(text, encoded.put()));
  return write_output(encoded);
}

HRESULT Self::html_encode(BSTR text, BSTR* encoded) {
  if (IMirt* const page = main(); page && *main_->self_encode) return page->HTMLEncode(text, encoded);
  return asp_.server ? asp_.server->HTMLEncode(text, encoded) : E_FAIL;
}

STDMETHODIMP Self::OnMarked(CMarkData& mark) {
  const MarkKind* kind = find_mark_kind(mark.Type, MarkOwner::templator);
  if (!kind) {
    note_mark_without_type(*this, mark);
    return S_OK;
  }
  const MarkName name(mark);
  if (!name.get()) return E_OUTOFMEMORY;
  if (kind->source == MarkSource::draw_event) return OnMarked_Process(mark, name);
  CComVariant text;
  RETURN_IF_FAILED(Values(*this).read(kind->source, mark, name, &text));
  return text.vt == VT_BSTR ? Write(text.bstrVal, kind->encode) : S_OK;
}

HRESULT Self::OnMarked_Process(const CMarkData& mark, const MarkName& name) {
  const std::wstring function = std::wstring(event_prefix_.view()).append(name.view());
  CEvent event;
  const HRESULT found = m_oScripts.GetEvent(function.c_str(), event);
  if (SUCCEEDED(found)) return fire_with_texts(event, this, mark.Params);
  if (found == korlib::kOutOfStack) return found;  // the scripts could not be asked
  if (!m_oScripts.last()) set_reason(kNoScript);
  return RaiseError(E_FAIL, L"MirtedTemplator", (L"Event '" + function + L"' not found.").c_str());
}
