// Interfaces whose members are not expected to be called; a fake overrides those that are.
#pragma once

#include <korlib/adostream.h>
#include <korlib/stream.h>

namespace test {

class UnusedStream : public IKorLibStream {
 public:
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override { return E_NOTIMPL; }
  HRESULT get_Size(LONG*) override { return E_NOTIMPL; }
  HRESULT get_EOS(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT get_Position(LONG*) override { return E_NOTIMPL; }
  HRESULT put_Position(LONG) override { return E_NOTIMPL; }
  HRESULT get_Type(LONG*) override { return E_NOTIMPL; }
  HRESULT put_Type(LONG) override { return E_NOTIMPL; }
  HRESULT get_LineSeparator(LONG*) override { return E_NOTIMPL; }
  HRESULT put_LineSeparator(LONG) override { return E_NOTIMPL; }
  HRESULT get_State(LONG*) override { return E_NOTIMPL; }
  HRESULT get_Mode(LONG*) override { return E_NOTIMPL; }
  HRESULT put_Mode(LONG) override { return E_NOTIMPL; }
  HRESULT get_Charset(BSTR*) override { return E_NOTIMPL; }
  HRESULT put_Charset(BSTR) override { return E_NOTIMPL; }
  HRESULT Read(LONG, VARIANT*) override { return E_NOTIMPL; }
  HRESULT Open(VARIANT, LONG, LONG, BSTR, BSTR) override { return E_NOTIMPL; }
  HRESULT Close() override { return E_NOTIMPL; }
  HRESULT SkipLine() override { return E_NOTIMPL; }
  HRESULT Write(VARIANT) override { return E_NOTIMPL; }
  HRESULT SetEOS() override { return E_NOTIMPL; }
  HRESULT CopyTo(IKorLibStream*, LONG) override { return E_NOTIMPL; }
  HRESULT Flush() override { return E_NOTIMPL; }
  HRESULT SaveToFile(BSTR, LONG) override { return E_NOTIMPL; }
  HRESULT LoadFromFile(BSTR) override { return E_NOTIMPL; }
  HRESULT ReadText(LONG, BSTR*) override { return E_NOTIMPL; }
  HRESULT WriteText(BSTR, LONG) override { return E_NOTIMPL; }
  HRESULT Cancel() override { return E_NOTIMPL; }

 protected:
  ~UnusedStream() = default;
};

class UnusedRawStream : public IStream {
 public:
  HRESULT Read(void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  HRESULT Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
  HRESULT CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT Revert() override { return E_NOTIMPL; }
  HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
  HRESULT Clone(IStream**) override { return E_NOTIMPL; }

 protected:
  ~UnusedRawStream() = default;
};

// `Response` is IResponse, or what implements its base.
template <class Response>
class UnusedResponse : public Response {
 public:
  HRESULT BinaryWrite(VARIANT) override { return E_NOTIMPL; }
  HRESULT AddHeader(BSTR, BSTR) override { return E_NOTIMPL; }
  HRESULT AppendToLog(BSTR) override { return E_NOTIMPL; }
  HRESULT get_Status(BSTR*) override { return E_NOTIMPL; }
  HRESULT put_Status(BSTR) override { return E_NOTIMPL; }
  HRESULT get_CodePage(LONG*) override { return E_NOTIMPL; }
};

}  // namespace test
