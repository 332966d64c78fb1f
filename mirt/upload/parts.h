// From the bytes of a body to the fields of a form.
#pragma once

#include <cstddef>

#include <korlib/types.h>

#include "upload/multipart_form.h"

// Splits the body at the delimiter ("--" and the boundary) and adds every part to the form; byte strings
// become text in the code page. A body that is malformed ends it with E_FAIL: what was added stays.
HRESULT add_parts(const char* body, std::size_t length, const char* delimiter, UINT code_page, GMultipartForm& form);
