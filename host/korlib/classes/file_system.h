// Scripting.FileSystemObject, as far as text files need it.
#pragma once

#include <korlib/textstream.h>
#include <korlib_host/dispatch_object.h>

namespace korlib {

class FileSystem final : public DispatchObject<FileSystem> {
 public:
  static constexpr const wchar_t* kClassName = L"FileSystemObject";
  static std::span<const Member> members();

  // Text is UTF-8 whatever `unicode` and `format` say.
  HRESULT CreateTextFile(BSTR path, VARIANT_BOOL overwrite, VARIANT_BOOL unicode, Scripting::ITextStream** stream);
  // `mode` is 1 to read, 2 to write, 8 to append.
  HRESULT OpenTextFile(BSTR path, LONG mode, VARIANT_BOOL create, LONG format, Scripting::ITextStream** stream);
  HRESULT FileExists(BSTR path, VARIANT_BOOL* exists);
  HRESULT DeleteFile(BSTR path, VARIANT_BOOL force);
};

}  // namespace korlib
