#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/modules.h>

#include <filesystem>
#include <iostream>

#include <fmt/format.h>
#include <korlib/combstr.h>
#include "app/commands.h"
#include "app/runtime.h"
#include "text/charset.h"

namespace zelto {

namespace {

int report(HRESULT hr, const std::string& library) {
  if (SUCCEEDED(hr)) return kSuccess;
  CComPtr<IErrorInfo> info;
  CComBSTR text;
  if (GetErrorInfo(0, info.put()) == S_OK && info) info->GetDescription(text.put());
  std::cerr << fmt::format("zelto: {}: {} (0x{:08X})\n", library, to_utf8(text.view()), static_cast<std::uint32_t>(hr));
  return kFailure;
}

}  // namespace

int register_library(const std::string& library) {
  set_up_runtime();
  return report(korlib_host::register_module(std::filesystem::absolute(library)), library);
}

int unregister_library(const std::string& library) {
  set_up_runtime();
  return report(korlib_host::unregister_module(std::filesystem::absolute(library)), library);
}

}  // namespace zelto
