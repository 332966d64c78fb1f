// The classes that this process makes itself, without a module.
//
// A host class becomes one that scripts can create by a row in the file that defines it:
//
//   constexpr korlib_host::ClassRow kRows[] = {{CLSID_Clock, L"Acme.Clock", &korlib::create_object<Clock>}};
//   const korlib_host::ClassRegistration g_classes{kRows};
#pragma once

#include <span>
#include <string>
#include <vector>

#include <korlib_host/counted.h>
#include <korlib_host/errors.h>

namespace korlib {

// A row's `create` for a class that needs nothing to be made: Object has a default constructor and make() makes it
// (see counted.h). What QueryInterface answers, and E_OUTOFMEMORY or another exception's code when it cannot be made;
// *ppv is null on failure.
template <class Object>
HRESULT create_object(REFIID riid, void** ppv) {
  return guarded(L"", ppv, [&] { return make<Object>()->QueryInterface(riid, ppv); });
}

}  // namespace korlib

namespace korlib_host {

// One class. `create` makes an object with one reference, asked for `riid`; on failure it clears *ppv.
// The texts and the function stay valid for as long as the process runs.
struct ClassRow {
  CLSID clsid;
  const wchar_t* prog_id;                      // null for a class that is only made by identifier
  HRESULT (*create)(REFIID riid, void** ppv);  // called on any thread
};

// Adds classes; a row whose identifier or ProgID is there already replaces it. CoCreateInstance,
// CoGetClassObject and CLSIDFromProgID know the rows from then on and prefer them to any registration. Rows cannot be
// taken out. Any thread may call it. Throws std::bad_alloc.
KORLIB_API void register_classes(std::span<const ClassRow> rows);

// The ProgIDs that CLSIDFromProgID knows: host classes, what is registered, and modules that are found without being
// registered. Sorted; for what is said of a name that is none of them. Any thread may call it. Throws
// std::bad_alloc.
KORLIB_API std::vector<std::wstring> prog_ids();

// For a file that brings classes: a constant of this type at namespace scope adds them when the library
// is loaded.
struct ClassRegistration {
  explicit ClassRegistration(std::span<const ClassRow> rows) { register_classes(rows); }
};

}  // namespace korlib_host
