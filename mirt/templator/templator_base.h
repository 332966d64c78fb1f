// What the stand-alone and the child templator share: scripts, output, and templates given to them.
#pragma once

#include "frame/error.h"
#include "frame/host.h"
#include "frame/script_event.h"
#include "templator/templator_concept.h"

// `Interface` is ITextTemplator or IMirtedTemplator; the members here are the same in both.
template <class Interface>
class GTemplatorImpl : public Interface, protected CTemplatorConcept {
 public:
  STDMETHODIMP putref_Script(IDispatch* script) override {
    return mirt::guarded([&] {
      m_oScripts.add(script, this);
      return S_OK;
    });
  }
  STDMETHODIMP get_Script(IDispatch** script) override { return CComPtr<IDispatch>(m_oScripts.last()).copy_to(script); }
  STDMETHODIMP putref_Stream(IUnknown* sink) override { return putref_Output(sink); }
  STDMETHODIMP get_Stream(IUnknown** sink) override { return get_Output(sink); }

  STDMETHODIMP ProcessTemplateFile(BSTR path, BSTR charset) override {
    CComBSTR text;
    RETURN_IF_FAILED(GetTemplate(path, charset, text.put()));
    const CComPtr<IDispatch> self(this);  // a script may let go of it meanwhile
    note_template(path, charset);
    return Process(text, korlib::view_of(path));
  }
  STDMETHODIMP ProcessTemplate(BSTR text) override {
    const CComPtr<IDispatch> self(this);
    return Process(text);
  }

  // Everything written since the stream was made; nothing is taken out of it.
  STDMETHODIMP Flush(BSTR* text) override {
    if (!text) return E_POINTER;
    *text = nullptr;
    const CComPtr<IKorLibStream> spStream(stream_output());
    if (!spStream) return E_FAIL;
    RETURN_IF_FAILED(spStream->put_Position(0));
    return spStream->ReadText(adReadAll, text);
  }

 protected:
  // Draws into a stream in memory. Without one the templator has no output, and says so when used.
  explicit GTemplatorImpl(const wchar_t* mark_types) : CTemplatorConcept(mark_types) {
    CComPtr<IKorLibStream> spStream;
    if (mirt::succeeded_or_forgotten(new_host_stream(spStream.put()))) putref_Output(spStream.get());
  }
  ~GTemplatorImpl() = default;

  // Where a template file comes from: the file itself, each time, whatever its path.
  HRESULT GetTemplate(BSTR path, BSTR charset, BSTR* text) { return read_text_file(path, charset, text); }

  CEventHandler m_oScripts;
};
