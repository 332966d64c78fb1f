// IKorLibStream: the host's in-memory stream class, "ADODB.Stream".
#pragma once

#include <korlib/dispatch.h>

inline constexpr LONG adTypeBinary = 1;
inline constexpr LONG adTypeText = 2;
inline constexpr LONG adReadAll = -1;
inline constexpr LONG adReadLine = -2;
inline constexpr LONG adWriteChar = 0;
inline constexpr LONG adWriteLine = 1;
inline constexpr LONG adCR = 13;
inline constexpr LONG adLF = 10;
inline constexpr LONG adCRLF = -1;
inline constexpr LONG adSaveCreateNotExist = 1;
inline constexpr LONG adSaveCreateOverWrite = 2;
inline constexpr LONG adStateClosed = 0;
inline constexpr LONG adStateOpen = 1;

// A growing sequence of bytes with a position; as text it is encoded in Charset ("Unicode", which is
// UTF-16LE, by default). Positions and sizes count bytes. Everything but the properties needs an open
// stream. Type and Charset can be set at position 0 only. Sizes beyond what a LONG holds are refused.
struct IKorLibStream : IDispatch {
  virtual HRESULT get_Size(LONG* bytes) = 0;
  virtual HRESULT get_EOS(VARIANT_BOOL* at_end) = 0;
  virtual HRESULT get_Position(LONG* position) = 0;
  virtual HRESULT put_Position(LONG position) = 0;
  virtual HRESULT get_Type(LONG* type) = 0;
  virtual HRESULT put_Type(LONG type) = 0;
  virtual HRESULT get_LineSeparator(LONG* separator) = 0;
  virtual HRESULT put_LineSeparator(LONG separator) = 0;
  virtual HRESULT get_State(LONG* state) = 0;
  virtual HRESULT get_Mode(LONG* mode) = 0;
  virtual HRESULT put_Mode(LONG mode) = 0;
  virtual HRESULT get_Charset(BSTR* name) = 0;
  virtual HRESULT put_Charset(BSTR name) = 0;
  // VT_ARRAY | VT_UI1, or VT_NULL when no byte is left.
  virtual HRESULT Read(LONG count, VARIANT* bytes) = 0;
  // `source` omitted (VT_ERROR) opens an empty stream.
  virtual HRESULT Open(VARIANT source, LONG mode, LONG options, BSTR user, BSTR password) = 0;
  virtual HRESULT Close() = 0;
  virtual HRESULT SkipLine() = 0;
  // A byte array; one of a single byte costs a few nanoseconds.
  virtual HRESULT Write(VARIANT bytes) = 0;
  virtual HRESULT SetEOS() = 0;
  virtual HRESULT CopyTo(IKorLibStream* target, LONG count) = 0;
  virtual HRESULT Flush() = 0;
  virtual HRESULT SaveToFile(BSTR path, LONG options) = 0;
  // Replaces the contents and rewinds. Errors name the file.
  virtual HRESULT LoadFromFile(BSTR path) = 0;
  virtual HRESULT ReadText(LONG count, BSTR* text) = 0;
  virtual HRESULT WriteText(BSTR text, LONG options) = 0;
  virtual HRESULT Cancel() = 0;

 protected:
  ~IKorLibStream() = default;
};
KORLIB_IID(IKorLibStream, "6A69C173-E436-437F-87BE-050619770473");

inline constexpr GUID CLSID_KorLibStream = korlib::guid("66014B1C-5967-432C-A191-EB5332CC49BC");
