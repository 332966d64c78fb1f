// Scripting::ITextStream: the host's text stream, a file written or read as text.
#pragma once

#include <korlib/dispatch.h>

namespace Scripting {

// A file that is written or read as UTF-8 text, one of the two: the other kind of call is an error with words,
// as is every call but Close once it is closed. Errors of the file name it. A template can be drawn into one
// that was opened for writing.
struct ITextStream : IDispatch {
  // Appends the text; null is empty. What is written reaches the file when the stream is closed or released, if
  // not before.
  virtual HRESULT Write(BSTR text) = 0;
  // The text and a line feed, and line feeds alone.
  virtual HRESULT WriteLine(BSTR text) = 0;
  virtual HRESULT WriteBlankLines(LONG lines) = 0;
  // From the position on: up to that many characters, a line without its end (LF or CR LF), or all that is
  // left. The string is the caller's. At the end of the file each of them is an error.
  virtual HRESULT Read(LONG characters, BSTR* text) = 0;
  virtual HRESULT ReadLine(BSTR* text) = 0;
  virtual HRESULT ReadAll(BSTR* text) = 0;
  // Whether nothing is left to read.
  virtual HRESULT get_AtEndOfStream(VARIANT_BOOL* at_end) = 0;
  // The number of the line at hand; the first is 1.
  virtual HRESULT get_Line(LONG* line) = 0;
  // Writes what is left and gives the file back. A failure to write shows here at the latest.
  virtual HRESULT Close() = 0;

 protected:
  ~ITextStream() = default;
};

}  // namespace Scripting
KORLIB_IID(Scripting::ITextStream, "63B33ADA-F847-4D77-98AD-B2B7BA506319");

// "Scripting.FileSystemObject", whose CreateTextFile and OpenTextFile make text streams.
inline constexpr GUID CLSID_FileSystemObject = korlib::guid("8D2A715F-8787-4ECB-87C7-0411628EFDDA");
