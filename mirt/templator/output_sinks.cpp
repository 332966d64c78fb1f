#include "templator/output_sinks.h"

#include <korlib/comvariant.h>

STDMETHODIMP CTS_ASPResponse::Write(wchar_t* text) { return m_spSink->Write(korlib::borrowed(text)); }

STDMETHODIMP CTS_ADODBStream::Write(wchar_t* text) { return m_spSink->WriteText(text, adWriteChar); }

STDMETHODIMP CTS_ScriptingTextStream::Write(wchar_t* text) { return m_spSink->Write(text); }

STDMETHODIMP CTS_Stream::Write(wchar_t* text) {
  ULONG written = 0;  // not looked at: a sink that takes less says so with its result
  return m_spSink->Write(text, SysStringByteLen(text), &written);
}
