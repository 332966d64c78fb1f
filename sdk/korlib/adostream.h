// IKorLibStream: the host's in-memory stream class, "ADODB.Stream".
#pragma once

#include <korlib/dispatch.h>

// Type: what Read and Write, or ReadText and WriteText, work on.
inline constexpr LONG adTypeBinary = 1;
inline constexpr LONG adTypeText = 2;
// The count of a read: all that is left, and for text one line.
inline constexpr LONG adReadAll = -1;
inline constexpr LONG adReadLine = -2;
// The options of WriteText: the text alone, or with a line separator after it.
inline constexpr LONG adWriteChar = 0;
inline constexpr LONG adWriteLine = 1;
// LineSeparator. Reading a line looks for this one only.
inline constexpr LONG adCR = 13;
inline constexpr LONG adLF = 10;
inline constexpr LONG adCRLF = -1;
// The options of SaveToFile: a file that must not exist, or one that is replaced.
inline constexpr LONG adSaveCreateNotExist = 1;
inline constexpr LONG adSaveCreateOverWrite = 2;
// State.
inline constexpr LONG adStateClosed = 0;
inline constexpr LONG adStateOpen = 1;

// A growing sequence of bytes with a position; as text it is encoded in Charset ("Unicode", which is UTF-16LE,
// by default). Positions and sizes count bytes. Sizes beyond what a LONG holds are refused.
//
// Everything but the properties needs an open stream, the right Type, and a Mode that allows it. Failures raise
// words. One thread at a time uses a stream.
struct IKorLibStream : IDispatch {
  // How many bytes there are; and whether the position is at their end.
  virtual HRESULT get_Size(LONG* bytes) = 0;
  virtual HRESULT get_EOS(VARIANT_BOOL* at_end) = 0;
  // Where the next read or write begins, from 0. A position beyond the end makes the stream longer: zeros are
  // between.
  virtual HRESULT get_Position(LONG* position) = 0;
  virtual HRESULT put_Position(LONG position) = 0;
  // adTypeBinary or adTypeText, which a new stream is. It can be set at position 0 only, and reads the same
  // bytes in the other way.
  virtual HRESULT get_Type(LONG* type) = 0;
  virtual HRESULT put_Type(LONG type) = 0;
  // adCRLF at first.
  virtual HRESULT get_LineSeparator(LONG* separator) = 0;
  virtual HRESULT put_LineSeparator(LONG separator) = 0;
  // adStateOpen or adStateClosed.
  virtual HRESULT get_State(LONG* state) = 0;
  // 1 read, 2 write, 3 both, 0 unspecified, which is both. It can be set while the stream is closed only.
  virtual HRESULT get_Mode(LONG* mode) = 0;
  virtual HRESULT put_Mode(LONG mode) = 0;
  // The name of the character set of text. It can be set at position 0 only; a name that is not known is an
  // error. The bytes stay as they are.
  virtual HRESULT get_Charset(BSTR* name) = 0;
  virtual HRESULT put_Charset(BSTR name) = 0;
  // Up to `count` bytes from the position on, or adReadAll: a new VT_ARRAY | VT_UI1, or VT_NULL when no byte is
  // left.
  virtual HRESULT Read(LONG count, VARIANT* bytes) = 0;
  // Opens an empty stream: `source` is omitted (VT_ERROR) or VT_EMPTY. A `mode` that is not 0 becomes Mode; the
  // rest is not looked at.
  virtual HRESULT Open(VARIANT source, LONG mode, LONG options, BSTR user, BSTR password) = 0;
  // Drops the bytes.
  virtual HRESULT Close() = 0;
  // Moves past the next line separator.
  virtual HRESULT SkipLine() = 0;
  // Copies a byte array of one dimension to the position, over what is there. One of a single byte costs a few
  // nanoseconds.
  virtual HRESULT Write(VARIANT bytes) = 0;
  // Drops what lies beyond the position.
  virtual HRESULT SetEOS() = 0;
  // Moves `count` bytes, or characters when both are text, or adReadAll, to the position of another stream.
  // Bytes cannot be copied into text.
  virtual HRESULT CopyTo(IKorLibStream* target, LONG count) = 0;
  // Nothing is held back, so there is nothing to do.
  virtual HRESULT Flush() = 0;
  // Writes all bytes to a file and rewinds. A disk without room leaves an existing file as it was.
  virtual HRESULT SaveToFile(BSTR path, LONG options) = 0;
  // Replaces the contents by a file's and rewinds. Errors name the file. The path is taken as it is: whoever
  // passes one that a request chose has checked it.
  virtual HRESULT LoadFromFile(BSTR path) = 0;
  // Up to `count` characters, adReadAll, or adReadLine: a line without its separator. A byte order mark at the
  // beginning is not part of the text. At the end the text is empty. The string is the caller's.
  virtual HRESULT ReadText(LONG count, BSTR* text) = 0;
  // Encodes the text to the position; a byte order mark comes first where the character set has one.
  virtual HRESULT WriteText(BSTR text, LONG options) = 0;
  // There is nothing to cancel.
  virtual HRESULT Cancel() = 0;

 protected:
  ~IKorLibStream() = default;
};
KORLIB_IID(IKorLibStream, "6A69C173-E436-437F-87BE-050619770473");

// The class, for CoCreateInstance. A new stream is closed.
inline constexpr GUID CLSID_KorLibStream = korlib::guid("66014B1C-5967-432C-A191-EB5332CC49BC");
