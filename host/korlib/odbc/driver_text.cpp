#include "odbc/driver_text.h"

#include <dlfcn.h>
#include <odbcinst.h>

#include <algorithm>
#include <map>
#include <mutex>

#include <korlib_host/unicode.h>

#include "odbc/connection_string.h"

namespace korlib::odbc {
namespace {

std::string configured(const std::string& section, const char* entry, const char* file) {
  char value[1024] = {};
  const int length = SQLGetPrivateProfileString(section.c_str(), entry, "", value, int{sizeof value}, file);
  return length > 0 ? std::string(value) : std::string();
}

// Where the module that holds an address begins. A driver may be linked with the driver manager, whose
// functions of the same names are found through it.
const void* module_of(const void* address) {
  Dl_info info{};
  return address && dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

// Opens a library the way the driver manager does: by the usual search, then in the folder for drivers
// beside the driver manager itself.
void* open_library(const std::string& library) {
  if (void* opened = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL)) return opened;
  Dl_info manager{};
  if (dladdr(reinterpret_cast<const void*>(&SQLGetPrivateProfileString), &manager) == 0) return nullptr;
  const std::string path = manager.dli_fname;
  return dlopen((path.substr(0, path.rfind('/') + 1) + "odbc/" + library).c_str(), RTLD_LAZY | RTLD_LOCAL);
}

// Whether the library has the functions that take UTF-16.
bool takes_wide_text(const std::string& library) {
  void* opened = open_library(library);
  if (!opened) return true;  // the driver manager will say what is wrong
  const void* own = module_of(dlsym(opened, "SQLFetch"));
  const void* wide = module_of(dlsym(opened, "SQLDriverConnectW"));
  dlclose(opened);
  return wide && wide == own;
}

}  // namespace

std::string library_of(std::wstring_view connection_string) {
  std::string driver = to_utf8(attribute_of(connection_string, L"Driver"));
  if (driver.empty()) driver = configured(to_utf8(attribute_of(connection_string, L"DSN")), "Driver", "ODBC.INI");
  if (driver.empty() || driver.find('/') != std::string::npos) return driver;
  return configured(driver, "Driver", "ODBCINST.INI");
}

DriverText text_of_driver(std::wstring_view connection_string) {
  static std::mutex lock;
  static std::map<std::string, DriverText> known;
  const std::string library = library_of(connection_string);
  const std::lock_guard guard(lock);
  const auto found = known.find(library);
  if (found != known.end()) return found->second;
  const DriverText way = takes_wide_text(library) ? DriverText::wide : DriverText::bytes;
  constexpr std::size_t kMostKnown = 100;
  if (known.size() < kMostKnown) known.emplace(library, way);
  return way;
}

TextIn::TextIn(DriverText way, std::wstring_view text) : way_(way) {
  if (way == DriverText::wide) {
    units_ = to_utf16(text);
  } else {
    bytes_ = to_utf8(text);
  }
}

std::wstring TextOut::text(std::int16_t length) const {
  const std::size_t size = static_cast<std::size_t>(std::clamp<std::int16_t>(length, 0, kRoom - 1));
  if (way_ == DriverText::wide) {
    std::wstring text;
    append_utf16(text, {reinterpret_cast<const char16_t*>(units_), size});
    return text;
  }
  return to_wide({reinterpret_cast<const char*>(bytes_), size});
}

}  // namespace korlib::odbc
