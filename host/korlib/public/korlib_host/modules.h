// Component modules: shared objects with the entry points of korlib/activation.h.
//
// A module is opened when one of its classes is first asked for, told so through DllMain, and stays
// until CoFreeUnusedLibraries finds that it has nothing alive. DllMain answering FALSE is no error: such
// a module has done without something optional. A host calls CoFreeUnusedLibraries when none of its
// threads is inside a module, because a module counts its objects but not the calls that just return.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <korlib/unknown.h>

namespace korlib_host {

// A class that a module knows by its bare name, and the ProgID by which scripts ask for it.
struct NamedClass {
  std::wstring prog_id;
  std::wstring class_name;
};

// Adds a module that is found without being registered. Its ProgIDs resolve when neither the class table
// nor the registry store knows them, to identifiers made up for this process; an identifier that is
// registered nowhere is offered to each such module, in the order of these calls. The file need not
// exist yet; it is opened on first use.
KORLIB_API void add_unregistered_module(const std::filesystem::path& file, const std::vector<NamedClass>& classes);

// A module's class object by bare name, null for the module's first class; asked for `riid`. The module is opened if
// need be. Null in *ppv on failure: what opening answered, or the module.
KORLIB_API HRESULT get_class_object_by_name(const std::filesystem::path& file, const wchar_t* class_name, REFIID riid,
                                            void** ppv);

// Calls DllRegisterServer (or DllUnregisterServer) of the module. CO_E_DLLNOTFOUND, with the reason as
// error information, when it cannot be opened; CO_E_ERRORINDLL when it is not a component, or does not export
// the function; otherwise what the function answered.
KORLIB_API HRESULT register_module(const std::filesystem::path& file);
KORLIB_API HRESULT unregister_module(const std::filesystem::path& file);

// The file behind the handle that DllMain was given; empty for anything else.
KORLIB_API std::filesystem::path module_file(void* module);

// How many modules are open now, in all threads.
KORLIB_API std::size_t open_modules();

}  // namespace korlib_host
