// Modules that are found without being registered.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "activation/module.h"

namespace korlib::activation {

// The identifier made up for a ProgID of such a module.
bool find_unregistered_prog_id(const wchar_t* prog_id, CLSID* clsid);

// All such ProgIDs, after what is in `names`.
void list_unregistered_prog_ids(std::vector<std::wstring>* names);

// The class object behind a made-up identifier, or from the first such module that knows the identifier.
// REGDB_E_CLASSNOTREG when none does. A module that is not there is passed over unless the identifier is
// one made up for it. `*module` receives the module, so that it stays open for what follows.
HRESULT unregistered_class_object(REFCLSID clsid, REFIID riid, std::shared_ptr<Module>* module, void** ppv);

}  // namespace korlib::activation
