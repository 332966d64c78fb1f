// The type libraries that components find under this host.
//
// The library of a module's path describes what the module itself exports: an identifier IID_x and, in
// g_pTI_x, the type information of that interface. The library of that path followed by "\2" is the
// host's own: IStringList and IRequestDictionary, usable late-bound. Type information that is handed out
// lives as long as its module, whatever its holders release.
#pragma once

namespace zelto {

// Makes LoadTypeLib answer these.
void install_type_libraries();

}  // namespace zelto
