#include "classes/file_system.h"

#include <unistd.h>

#include <cerrno>

#include <korlib_host/file_look.h>
#include <korlib_host/results.h>

#include "classes/files.h"
#include "classes/script_errors.h"
#include "classes/text_stream.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"Scripting.FileSystemObject";
constexpr LONG kForReading = 1;
constexpr LONG kForWriting = 2;
constexpr LONG kForAppending = 8;

HRESULT open_file(TextFile& file, std::wstring_view path, LONG mode, bool create, bool replace) {
  switch (mode) {
    case kForReading:
      return file.open_to_read(path);
    case kForWriting:
      return file.open_to_write(path, create, replace);
    case kForAppending:
      return file.open_to_append(path, create);
    default:
      return raise(E_INVALIDARG, kSource, L"OpenTextFile: the mode is 1 (read), 2 (write) or 8 (append).");
  }
}

HRESULT open_stream(BSTR path, LONG mode, bool create, bool replace, Scripting::ITextStream** stream) {
  return guarded(kSource, stream, [&]() -> HRESULT {
    CComPtr<TextStream> made = make<TextStream>();
    RETURN_IF_FAILED(open_file(made->file(), view_of(path), mode, create, replace));
    *stream = made.detach();
    return S_OK;
  });
}

}  // namespace

std::span<const Member> FileSystem::members() {
  static constexpr Member table[] = {
      method<&FileSystem::CreateTextFile>(L"CreateTextFile").optional(VARIANT_TRUE, 0),
      method<&FileSystem::OpenTextFile>(L"OpenTextFile").optional(kForReading, 0, 0),
      method<&FileSystem::FileExists>(L"FileExists"),
      method<&FileSystem::DeleteFile>(L"DeleteFile").optional(0),
  };
  return table;
}

HRESULT FileSystem::CreateTextFile(BSTR path, VARIANT_BOOL overwrite, VARIANT_BOOL, Scripting::ITextStream** stream) {
  return open_stream(path, kForWriting, true, overwrite != VARIANT_FALSE, stream);
}

HRESULT FileSystem::OpenTextFile(BSTR path, LONG mode, VARIANT_BOOL create, LONG, Scripting::ITextStream** stream) {
  return open_stream(path, mode, create != VARIANT_FALSE, true, stream);
}

HRESULT FileSystem::FileExists(BSTR path, VARIANT_BOOL* exists) {
  return guarded(kSource, exists, [&] { return give(file_exists(view_of(path)), exists); });
}

HRESULT FileSystem::DeleteFile(BSTR path, VARIANT_BOOL) {
  return guarded(kSource, [&]() -> HRESULT {
    korlib_host::forget_look();
    if (unlink(system_path(view_of(path)).c_str()) == 0) return S_OK;
    return raise_file_error(L"delete", view_of(path), errno, {kSource, kPermissionDenied, kFileNotFound});
  });
}

}  // namespace korlib
