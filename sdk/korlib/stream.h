// ISequentialStream and IStream: raw bytes. Used here as an output sink; see adostream.h for the
// stream that scripts use.
#pragma once

#include <korlib/unknown.h>

struct STATSTG;

union LARGE_INTEGER {
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  ULONGLONG QuadPart;
};

struct ISequentialStream : IUnknown {
  virtual HRESULT Read(void* buffer, ULONG bytes, ULONG* read) = 0;
  virtual HRESULT Write(const void* data, ULONG bytes, ULONG* written) = 0;

 protected:
  ~ISequentialStream() = default;
};
KORLIB_IID(ISequentialStream, "0C733A30-2A1C-11CE-ADE5-00AA0044773D");

struct IStream : ISequentialStream {
  virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) = 0;
  virtual HRESULT SetSize(ULARGE_INTEGER size) = 0;
  virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER bytes, ULARGE_INTEGER* read, ULARGE_INTEGER* written) = 0;
  virtual HRESULT Commit(DWORD flags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER bytes, DWORD type) = 0;
  virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER bytes, DWORD type) = 0;
  virtual HRESULT Stat(STATSTG* stat, DWORD flags) = 0;
  virtual HRESULT Clone(IStream** copy) = 0;

 protected:
  ~IStream() = default;
};
KORLIB_IID(IStream, "0000000C-0000-0000-C000-000000000046");
