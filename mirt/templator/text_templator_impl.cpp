#include "templator/text_templator_impl.h"

#include <string_view>

#include <korlib/activation.h>

#include "templator/marks.h"

namespace {

constexpr std::wstring_view kCommentTypes = L" \t\r\n";  // all the types there are

constexpr const wchar_t* kUnknown = L"no script of the templator has it";

}  // namespace

GITextTemplatorImpl<ITextTemplator>::GITextTemplatorImpl() : GTemplatorImpl(kCommentTypes.data()) {}

STDMETHODIMP GITextTemplatorImpl<ITextTemplator>::Write(BSTR text) { return write_output(text); }

STDMETHODIMP GITextTemplatorImpl<ITextTemplator>::OnMarked(CMarkData& mark) {
  const bool is_comment = kCommentTypes.find(mark.Type) != std::wstring_view::npos;
  return is_comment ? S_OK : OnMarked_(mark);
}

HRESULT GITextTemplatorImpl<ITextTemplator>::OnMarked_(const CMarkData& mark) {
  const MarkName name(mark);
  if (!name.get()) return E_OUTOFMEMORY;
  CComVariant text;
  CEvent member;
  const HRESULT found = m_oScripts.GetEvent(name, member);
  if (found == korlib::kOutOfStack) return found;  // no script was asked
  if (SUCCEEDED(found)) {
    RETURN_IF_FAILED(script_member_text(*this, member, this, mark, false, &text));
  } else {
    mirt::forget_error();
    const HRESULT value = m_oScripts.GetValue(name, &text);
    if (FAILED(value)) set_reason(m_oScripts.last() ? kUnknown : kNoScript);
    RETURN_IF_FAILED(value);
    RETURN_IF_FAILED(ChangeToBSTR(&text, nullptr, false));
  }
  return Write(text.bstrVal);
}
