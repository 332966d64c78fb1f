// ISequentialStream and IStream: raw bytes. Used here as an output sink; see adostream.h for the
// stream that scripts use.
#pragma once

#include <korlib/unknown.h>

// What Stat would fill; never defined here.
struct STATSTG;

// 64-bit numbers of bytes, signed and not, as these interfaces pass them by value.
union LARGE_INTEGER {
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  ULONGLONG QuadPart;
};

// Bytes one after the other. A template can be drawn into one: it receives the characters as they lie in
// memory, four bytes each, lowest first.
struct ISequentialStream : IUnknown {
  // Copies up to `bytes` bytes into the caller's buffer. S_FALSE when fewer were left; *read, which may be
  // null, tells how many there were.
  virtual HRESULT Read(void* buffer, ULONG bytes, ULONG* read) = 0;
  // Takes a copy of the bytes. A stream that takes fewer says so with its result; *written, which may be null,
  // tells how many it took.
  virtual HRESULT Write(const void* data, ULONG bytes, ULONG* written) = 0;

 protected:
  ~ISequentialStream() = default;
};
KORLIB_IID(ISequentialStream, "0C733A30-2A1C-11CE-ADE5-00AA0044773D");

// The same with a position and a size. The component writes and does nothing else, so a sink may answer
// E_NOTIMPL to all that follows.
struct IStream : ISequentialStream {
  // `origin` is 0 from the beginning, 1 from the position, 2 from the end; *position, which may be null, is the
  // new one from the beginning.
  virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) = 0;
  // Makes it longer, by bytes of any value, or shorter. The position stays.
  virtual HRESULT SetSize(ULARGE_INTEGER size) = 0;
  // From the position on, into another stream. Either count may be null.
  virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER bytes, ULARGE_INTEGER* read, ULARGE_INTEGER* written) = 0;
  // Of a stream with transactions: makes what was written lasting, in the manner that `flags` says, 0 being the usual
  // one.
  virtual HRESULT Commit(DWORD flags) = 0;
  // Drops what was written since the last Commit.
  virtual HRESULT Revert() = 0;
  // Keeps others from a range of bytes, counted from the beginning; `type` says from what: 1 from writing, 2 from all,
  // 4 from locking it as well.
  virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER bytes, DWORD type) = 0;
  // Takes a lock back; the arguments are those that LockRegion was given.
  virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER bytes, DWORD type) = 0;
  // Fills *stat with the stream's name, size and times; `flags` of 1 leaves the name out.
  virtual HRESULT Stat(STATSTG* stat, DWORD flags) = 0;
  // Another stream over the same bytes with a position of its own.
  virtual HRESULT Clone(IStream** copy) = 0;

 protected:
  ~IStream() = default;
};
KORLIB_IID(IStream, "0000000C-0000-0000-C000-000000000046");
