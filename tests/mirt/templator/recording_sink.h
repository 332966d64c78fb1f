// An object that a template can be drawn into, of any of the four kinds or of several at once.
#pragma once

#include <string>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <korlib/stream.h>
#include <korlib/textstream.h>
#include <zelto/asp.h>

#include "support/unused_members.h"

namespace test {

enum SinkKind : unsigned { kResponse = 1, kAdoStream = 2, kTextStream = 4, kRawStream = 8 };

class RecordingSink final : public UnusedResponse<ZeltoTypeLibrary::IResponse>,
                            public UnusedStream,
                            public Scripting::ITextStream,
                            public UnusedRawStream {
 public:
  struct Output {
    SinkKind through;
    std::wstring text;

    friend bool operator==(const Output&, const Output&) = default;
  };

  // `kinds` says which of the four interfaces it answers to.
  static CComPtr<RecordingSink> make(unsigned kinds) {
    CComPtr<RecordingSink> sink;
    sink.attach(new RecordingSink(kinds));
    return sink;
  }

  std::vector<Output> outputs;
  std::vector<const void*> addresses;  // of the texts, to see which string was lent
  std::vector<ULONG> byte_counts;      // of what came through a raw stream
  int fail_at = -1;                    // the number of the write that fails, from 0
  HRESULT failure = E_ABORT;

  std::wstring text() const {
    std::wstring all;
    for (const Output& output : outputs) all += output.text;
    return all;
  }
  std::vector<std::wstring> texts() const {
    std::vector<std::wstring> all;
    for (const Output& output : outputs) all.push_back(output.text);
    return all;
  }
  ULONG references() const { return references_; }
  IUnknown* unknown() { return static_cast<ZeltoTypeLibrary::IResponse*>(this); }

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    *ppv = nullptr;
    if (riid == IID_IUnknown) *ppv = unknown();
    if (kinds_ & kResponse && riid == korlib::iid_of<IResponse>) *ppv = static_cast<IResponse*>(this);
    if (kinds_ & kAdoStream && riid == korlib::iid_of<IKorLibStream>) *ppv = static_cast<IKorLibStream*>(this);
    if (kinds_ & kTextStream && riid == korlib::iid_of<ITextStream>) *ppv = static_cast<ITextStream*>(this);
    if (kinds_ & kRawStream && riid == korlib::iid_of<IStream>) *ppv = static_cast<IStream*>(this);
    if (!*ppv) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    const ULONG left = --references_;
    // NOLINTNEXTLINE(clang-analyzer-unix.MismatchedDeallocator): one program makes its own new and delete
    if (left == 0) delete this;
    return left;
  }

  // What a sink is written through.
  HRESULT Write(VARIANT text) override {
    if (text.vt != VT_BSTR) return E_INVALIDARG;
    return take(kResponse, text.bstrVal, korlib::view_of(text.bstrVal));
  }
  HRESULT WriteText(BSTR text, LONG options) override {
    return options == adWriteChar ? take(kAdoStream, text, korlib::view_of(text)) : E_INVALIDARG;
  }
  HRESULT Write(BSTR text) override { return take(kTextStream, text, korlib::view_of(text)); }
  HRESULT Write(const void* data, ULONG bytes, ULONG* written) override {
    if (!written) return E_INVALIDARG;
    byte_counts.push_back(bytes);
    *written = 0;  // the templator does not look at it
    return take(kRawStream, data, {static_cast<const wchar_t*>(data), bytes / sizeof(wchar_t)});
  }

  // The rest is not called.
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override { return E_NOTIMPL; }
  HRESULT Close() override { return E_NOTIMPL; }
  HRESULT WriteLine(BSTR) override { return E_NOTIMPL; }
  HRESULT WriteBlankLines(LONG) override { return E_NOTIMPL; }
  using UnusedRawStream::Read;
  using UnusedStream::Read;
  HRESULT Read(LONG, BSTR*) override { return E_NOTIMPL; }
  HRESULT ReadLine(BSTR*) override { return E_NOTIMPL; }
  HRESULT ReadAll(BSTR*) override { return E_NOTIMPL; }
  HRESULT get_AtEndOfStream(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT get_Line(LONG*) override { return E_NOTIMPL; }

 private:
  explicit RecordingSink(unsigned kinds) : kinds_(kinds) {}
  ~RecordingSink() = default;

  HRESULT take(SinkKind through, const void* address, std::wstring_view text) {
    if (static_cast<int>(outputs.size()) == fail_at) return failure;
    outputs.push_back({through, std::wstring(text)});
    addresses.push_back(address);
    return S_OK;
  }

  unsigned kinds_;
  ULONG references_ = 1;
};

}  // namespace test
