#include "templator/text_templator_impl.h"

#include "templator/mark_value.h"

GITextTemplatorImpl<ITextTemplator>::GITextTemplatorImpl() : GTemplatorImpl(L" \t\r\n") {}

STDMETHODIMP GITextTemplatorImpl<ITextTemplator>::Write(BSTR text) { return write_output(text); }

STDMETHODIMP GITextTemplatorImpl<ITextTemplator>::OnMarked(CMarkData& mark) {
  return mark.Type == 0 ? OnMarked_(mark) : S_OK;
}

HRESULT GITextTemplatorImpl<ITextTemplator>::OnMarked_(const CMarkData& mark) {
  const CComBSTR name = bstr_of(mark.Name);
  if (!name.get()) return E_OUTOFMEMORY;
  CComVariant text;
  CEvent member;
  if (SUCCEEDED(m_oScripts.GetEvent(name, member))) {
    RETURN_IF_FAILED(script_member_text(member, this, mark, false, &text));
  } else {
    RETURN_IF_FAILED(m_oScripts.GetValue(name, &text));
    RETURN_IF_FAILED(ChangeToBSTR(&text, nullptr, false));
  }
  return Write(text.bstrVal);
}
