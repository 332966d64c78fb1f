// The classes that this process makes itself.
#pragma once

#include <korlib_host/class_table.h>

namespace korlib::activation {

using CreateFunction = HRESULT (*)(REFIID riid, void** ppv);

// Null when the table has no such class.
CreateFunction find_host_class(REFCLSID clsid);
bool find_host_prog_id(const wchar_t* prog_id, CLSID* clsid);

// A class object for a row of the table.
HRESULT make_class_object(CreateFunction create, REFIID riid, void** ppv);

}  // namespace korlib::activation
