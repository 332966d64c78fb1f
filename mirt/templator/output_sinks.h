// The four kinds of object that a template can be drawn into.
#pragma once

#include <korlib/adostream.h>
#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <korlib/stream.h>
#include <korlib/textstream.h>
#include <zelto/asp.h>

// One kind of sink. It holds an object of that kind or nothing.
struct ITextStreamWrapper {
  // E_INVALIDARG, and nothing held, when the object is not of this kind. Null lets go.
  virtual HRESULT putref_Substance(IUnknown* sink) = 0;
  virtual HRESULT get_Substance(IUnknown** sink) = 0;
  virtual HRESULT Write(wchar_t* text) = 0;

 protected:
  ~ITextStreamWrapper() = default;
};

template <class Sink>
class SinkHolder : public ITextStreamWrapper {
 public:
  STDMETHODIMP putref_Substance(IUnknown* sink) override {
    return SUCCEEDED(m_spSink.assign(sink)) ? S_OK : E_INVALIDARG;
  }
  STDMETHODIMP get_Substance(IUnknown** sink) override { return m_spSink.query(sink); }
  Sink* get() const noexcept { return m_spSink.get(); }

 protected:
  ~SinkHolder() = default;
  CComQIPtr<Sink> m_spSink;
};

class CTS_ASPResponse final : public SinkHolder<ZeltoTypeLibrary::IResponse> {
 public:
  STDMETHODIMP Write(wchar_t* text) override { return m_spSink->Write(korlib::borrowed(text)); }
};

class CTS_ADODBStream final : public SinkHolder<IKorLibStream> {
 public:
  STDMETHODIMP Write(wchar_t* text) override { return m_spSink->WriteText(text, adWriteChar); }
};

class CTS_ScriptingTextStream final : public SinkHolder<Scripting::ITextStream> {
 public:
  STDMETHODIMP Write(wchar_t* text) override { return m_spSink->Write(text); }
};

// The raw bytes of the text as it lies in memory: four little-endian bytes a character.
class CTS_Stream final : public SinkHolder<IStream> {
 public:
  STDMETHODIMP Write(wchar_t* text) override {
    ULONG written = 0;  // not looked at: a sink that takes less says so with its result
    return m_spSink->Write(text, SysStringByteLen(text), &written);
  }
};
