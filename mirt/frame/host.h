// What the component asks of the process that loaded it: functions that it may lack, and its stream class.
#pragma once

#include <dlfcn.h>

#include <korlib/adostream.h>

namespace mirt {

// The function of that name which the host process exports, looked for when it is needed; null where it
// exports none. Naming one as an import would keep the module from being loaded where it is missing.
//   if (const auto load = host_function<decltype(LoadTypeLib)>("LoadTypeLib")) load(path, &library);
template <class Function>
Function* host_function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

}  // namespace mirt

// A fresh stream, opened empty.
HRESULT new_host_stream(IKorLibStream** stream);

// The whole text of a file in the given character set. The path is taken as it is.
HRESULT read_text_file(BSTR path, BSTR charset, BSTR* text);
