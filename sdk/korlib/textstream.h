// Scripting::ITextStream: the host's text stream, a file written or read as text.
#pragma once

#include <korlib/dispatch.h>

namespace Scripting {

struct ITextStream : IDispatch {
  virtual HRESULT Write(BSTR text) = 0;
  virtual HRESULT WriteLine(BSTR text) = 0;
  virtual HRESULT WriteBlankLines(LONG lines) = 0;
  virtual HRESULT Read(LONG characters, BSTR* text) = 0;
  virtual HRESULT ReadLine(BSTR* text) = 0;
  virtual HRESULT ReadAll(BSTR* text) = 0;
  virtual HRESULT get_AtEndOfStream(VARIANT_BOOL* at_end) = 0;
  virtual HRESULT get_Line(LONG* line) = 0;
  virtual HRESULT Close() = 0;

 protected:
  ~ITextStream() = default;
};

}  // namespace Scripting
KORLIB_IID(Scripting::ITextStream, "63B33ADA-F847-4D77-98AD-B2B7BA506319");

// "Scripting.FileSystemObject", whose CreateTextFile and OpenTextFile make text streams.
inline constexpr GUID CLSID_FileSystemObject = korlib::guid("8D2A715F-8787-4ECB-87C7-0411628EFDDA");
