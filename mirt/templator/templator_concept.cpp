// Output, and the two ways to draw a template.
#include "templator/templator_concept.h"

#include <optional>

#include "frame/error.h"
#include "templator/delimiters.h"

CTemplatorConcept::CTemplatorConcept(const wchar_t* markTypes)
    : Escape(L"^"),
      MarkOpen(L"(#"),
      MarkClose(L"#)"),
      MarkTypes(markTypes),
      NameSeparator(L"|"),
      ParamSeparator(L"#|#") {}

HRESULT CTemplatorConcept::putref_Output(IUnknown* sink) {
  // The new one is held first: letting go of the old one may let go of it as well.
  const CComPtr<IUnknown> spSink(sink);
  if (ITextStreamWrapper* old = std::exchange(m_pOutput, nullptr)) old->putref_Substance(nullptr);
  if (!sink) return S_OK;
  ITextStreamWrapper* const wrappers[] = {&m_oASPResponse, &m_oADODBStream, &m_oScriptingTextStream, &m_oStream};
  for (ITextStreamWrapper* wrapper : wrappers) {
    if (FAILED(wrapper->putref_Substance(sink))) continue;
    m_pOutput = wrapper;
    return S_OK;
  }
  return E_INVALIDARG;
}

HRESULT CTemplatorConcept::get_Output(IUnknown** sink) {
  if (!sink) return E_POINTER;
  *sink = nullptr;
  return m_pOutput ? m_pOutput->get_Substance(sink) : S_OK;
}

HRESULT CTemplatorConcept::write_output(BSTR text) { return m_pOutput ? m_pOutput->Write(text) : E_FAIL; }

IKorLibStream* CTemplatorConcept::stream_output() const noexcept {
  return m_pOutput == &m_oADODBStream ? m_oADODBStream.get() : nullptr;
}

HRESULT CTemplatorConcept::Process(wchar_t* source) {
  return mirt::guarded([&] {
    if (!m_pOutput) return E_FAIL;
    // One string for every literal character: a sink takes a copy of what it is given.
    const CComBSTR one(std::wstring_view(L" "));
    const BSTR letter = one.get();
    if (!letter || !is_complete()) return E_OUTOFMEMORY;
    const Delimiters d = delimiters();
    const std::wstring_view text = korlib::view_of(source);
    std::optional<IdleMarks::Lease> lease;  // of one mark, which is filled again and again
    std::size_t pos = 0;
    while (pos < text.size()) {
      for (const std::size_t literal_end = d.next_start(text, pos); pos < literal_end; ++pos) {
        *letter = text[pos];
        RETURN_IF_FAILED(write_output(letter));
      }
      if (pos == text.size()) break;
      if (stands_at(text, pos, d.escape)) {
        RETURN_IF_FAILED(write_output(take_escaped(text, pos, {&Escape, &MarkOpen, &MarkClose}).get()));
      } else if (stands_at(text, pos, d.mark_open)) {
        pos += d.mark_open.size();
        if (!lease) lease.emplace(m_oIdleMarks);
        ReusableMark& mark = lease->fresh();
        RETURN_IF_FAILED(read_mark(d, text, pos, mark.data, mark.scratch));
        RETURN_IF_FAILED(OnMarked(mark.data));
        pos += d.mark_close.size();
      } else if (stands_at(text, pos, d.mark_close)) {
        return invalid_mark_order();
      } else {
        *letter = text[pos++];
        RETURN_IF_FAILED(write_output(letter));
      }
    }
    return S_OK;
  });
}

HRESULT CTemplatorConcept::Process(CTemplate& tmpl) {
  return mirt::guarded([&] {
    if (tmpl.Texts.size() != tmpl.Marks.size() + 1) return E_UNEXPECTED;  // what a failed parse left behind
    HRESULT hr = write_output(tmpl.Texts[0]);
    for (std::size_t i = 0; SUCCEEDED(hr) && i < tmpl.Marks.size(); ++i) {
      hr = OnMarked(*tmpl.Marks[i]);
      if (SUCCEEDED(hr)) hr = write_output(tmpl.Texts[i + 1]);
    }
    return hr;
  });
}
