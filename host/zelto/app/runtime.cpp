#include "app/runtime.h"

#include <fmt/format.h>
#include <korlib/combstr.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/registry_store.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>

#include "app/command_line.h"
#include "platform/type_libraries.h"
#include "text/charset.h"

namespace zelto {

namespace {

// $ZELTO_REGISTRY, else zelto/registry.json in the user's data folder.
std::filesystem::path registry_file() {
  const auto from = [](const char* name) {
    const char* value = std::getenv(name);
    return std::filesystem::path(value ? value : "");
  };
  if (auto file = from("ZELTO_REGISTRY"); !file.empty()) return file;
  if (const auto data = from("XDG_DATA_HOME"); !data.empty()) return data / "zelto" / "registry.json";
  const auto home = from("HOME");
  return home.empty() ? "/var/lib/zelto/registry.json" : home / ".local" / "share" / "zelto" / "registry.json";
}

// After which a running host sees what another process has registered.
constexpr std::chrono::milliseconds kLookAtRegistry(100);

// Beside the program, as built; in the library folder next to it, as installed.
std::filesystem::path component_file() {
  std::error_code error;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  for (const char* place : {"libmirt.so", "../libmirt.so", "../bin/libmirt.so", "../lib/zelto/libmirt.so"}) {
    if (auto file = folder / place; std::filesystem::exists(file, error)) return file.lexically_normal();
  }
  return folder / "libmirt.so";
}

void set_up() {
  std::signal(SIGXFSZ, SIG_IGN);  // a page that writes a file beyond the limit of its size gets an error instead
  korlib_host::set_registry(std::make_shared<korlib_host::RegistryStore>(registry_file(), kLookAtRegistry));
  install_type_libraries();
  korlib_host::add_unregistered_module(component_file(), component_classes());
}

int report(HRESULT hr, const std::string& library) {
  if (SUCCEEDED(hr)) return kSuccess;
  CComPtr<IErrorInfo> info;
  CComBSTR text;
  if (GetErrorInfo(0, info.put()) == S_OK && info) info->GetDescription(text.put());
  std::cerr << fmt::format("zelto: {}: {} (0x{:08X})\n", library, to_utf8(text.view()), static_cast<std::uint32_t>(hr));
  return kFailure;
}

}  // namespace

void set_up_runtime() {
  static std::once_flag once;
  std::call_once(once, set_up);
}

const std::vector<korlib_host::NamedClass>& component_classes() {
  static const std::vector<korlib_host::NamedClass> classes = {
      {L"Mirt", L"Mirt"}, {L"Mirt.TextTemplator", L"TextTemplator"}, {L"Mirt.Utility", L"Utility"}};
  return classes;
}

int register_library(const std::string& library) {
  set_up_runtime();
  return report(korlib_host::register_module(std::filesystem::absolute(library)), library);
}

int unregister_library(const std::string& library) {
  set_up_runtime();
  return report(korlib_host::unregister_module(std::filesystem::absolute(library)), library);
}

}  // namespace zelto
