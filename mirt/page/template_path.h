// From a template's name to the path of its file, and whether that path may be read.
//
// Paths are written with backslashes here; the functions that canonicalize them, and the stream that reads the file,
// accept those.
#pragma once

#include <string_view>

#include <korlib/combstr.h>
#include <korlib/hresult.h>

namespace page {

// The directory, the name without a separator at its front, and the extension with its dot. Inside
// another template (`current`, a composed path) the directory is that template's, otherwise `folder`.
CComBSTR compose_path(std::wstring_view current, std::wstring_view folder, std::wstring_view name,
                      std::wstring_view extension);

// Appends the path without "." and ".." to `out`. E_FAIL, without an error text, when the platform cannot canonicalize
// it.
HRESULT ConvertToCanonicalizedPath(std::wstring_view path, CComBSTR& out);

// Whether a canonical path lies inside `permitted`, or else inside `folder`; with neither, nothing does.
bool CanPathObtain(std::wstring_view path, std::wstring_view permitted, std::wstring_view folder);

}  // namespace page
