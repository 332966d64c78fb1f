// What libmirt.so shows to the dynamic linker, and what it asks of it.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace test {
namespace {

struct Symbol {
  std::string name;
  char kind;
  bool operator<(const Symbol& other) const { return name < other.name; }
};

std::set<Symbol> dynamic_symbols(const char* which = "--defined-only") {
  const std::string command = std::string("nm -D ") + which + " '" + MIRT_MODULE_PATH + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  std::set<Symbol> symbols;
  char line[1024];
  while (output && std::fgets(line, sizeof line, output.get())) {
    std::istringstream fields(line);
    Symbol symbol{};
    if (line[0] != ' ') fields >> symbol.name;  // the address; what is not defined has none
    fields >> symbol.kind >> symbol.name;
    symbols.insert(symbol);
  }
  return symbols;
}

const std::set<std::string> kNames = {"DllMain",
                                      "DllGetClassObject",
                                      "DllCanUnloadNow",
                                      "DllRegisterServer",
                                      "DllUnregisterServer",
                                      "CLSID_Mirt",
                                      "CLSID_TextTemplator",
                                      "CLSID_Utility",
                                      "IID_IMirt",
                                      "IID_IMirtedTemplator",
                                      "IID_IFormFile",
                                      "IID_ITextTemplator",
                                      "IID_IUtility",
                                      "g_hDLL",
                                      "g_aDLLPath",
                                      "g_nRefCount",
                                      "g_pTI_IMirt",
                                      "g_pTI_IMirtedTemplator",
                                      "g_pTI_IFormFile",
                                      "g_pTI_ITextTemplator",
                                      "g_pTI_IUtility",
                                      "g_pTI_IStringList",
                                      "g_pTI_IRequestDictionary",
                                      "g_oTemplateCache",
                                      "g_oMirtSessionNull",
                                      "g_oCF_Mirt",
                                      "g_oCF_MirtedTemplator",
                                      "g_oCF_FormFile",
                                      "g_oCF_MultipartFormStringList",
                                      "g_oCF_MultipartForm",
                                      "g_oCF_TextTemplator",
                                      "g_oCF_Utility"};

const std::set<std::string> kFallbacks = {
    // VARIANT, VARIANTARG, _variant_t
    "_ZN7VARIANTC1EOS_",
    "_ZN7VARIANTC2EOS_",
    "_ZN7VARIANTaSERKS_",
    "_ZN7VARIANTaSEPKw",
    "_ZN10VARIANTARGC1Ev",
    "_ZN10VARIANTARGC2Ev",
    "_ZN10_variant_tC1Ev",
    "_ZN10_variant_tC2Ev",
    "_ZN10_variant_tD1Ev",
    "_ZN10_variant_tD2Ev",
    "IsEqualGUID",
    "InitializeCriticalSection",
    "DeleteCriticalSection",
    "EnterCriticalSection",
    "LeaveCriticalSection",
    "InterlockedIncrement",
    "InterlockedDecrement",
    "Sleep",
    "GetTickCount",
    "DisableThreadLibraryCalls",
    "_wcsicmp",
    "_wcsnicmp",
    "wcstombs_s",
    "memcpy_s",
    "swprintf_s",
    "sscanf_s",
    "LCMapStringW",
    "FormatMessageW",
    "RegCreateKeyExW",
    "RegOpenKeyExW",
    "RegSetValueExW",
    "RegDeleteKeyW",
    "RegCloseKey",
    "CreateFileW",
    "CloseHandle",
    "GetFileTime",
    "CompareFileTime",
    "GetModuleFileNameW",
    "PathCanonicalizeW",
    "CryptAcquireContextW",
    "CryptReleaseContext",
    "CryptCreateHash",
    "CryptHashData",
    "CryptGetHashParam",
    "CryptDestroyHash",
    "CryptBinaryToStringW",
    "CryptStringToBinaryW"};

TEST(Exports, AreExactlyTheDocumentedNames) {
  std::set<std::string> found;
  for (const Symbol& symbol : dynamic_symbols()) found.insert(symbol.name);
  std::set<std::string> expected = kNames;
  expected.insert(kFallbacks.begin(), kFallbacks.end());
  EXPECT_EQ(expected, found);
}

// Weak, so that a host may link its own beside them; the documented names are not.
TEST(Exports, FallbacksAreWeak) {
  for (const Symbol& symbol : dynamic_symbols()) {
    EXPECT_EQ(kFallbacks.count(symbol.name) != 0, symbol.kind == 'W') << symbol.name;
  }
}

// What a host has to export. LoadTypeLib and GetErrorInfo belong to it too, but are looked for when they are needed.
const std::set<std::string> kRuntime = {"CoCreateInstance",
                                        "CoGetObjectContext",
                                        "CreateErrorInfo",
                                        "SetErrorInfo",
                                        "SysAllocString",
                                        "SysAllocStringLen",
                                        "SysAllocStringByteLen",
                                        "SysStringLen",
                                        "SysStringByteLen",
                                        "SysFreeString",
                                        "VariantInit",
                                        "VariantClear",
                                        "VariantCopy",
                                        "VariantChangeType",
                                        "VarCmp",
                                        "SafeArrayCreate",
                                        "SafeArrayCreateVector",
                                        "SafeArrayDestroy",
                                        "CoCreateGuid",
                                        "StringFromGUID2",
                                        "utf32_utf8",
                                        "utf8_utf32"};

// The system's libraries and the compiler's own: versioned, or reserved names.
bool is_of_the_system(const std::string& name) {
  return name.find('@') != std::string::npos || name.starts_with("_ITM_") || name.starts_with("__");
}

TEST(Imports, AreAllInTheContract) {
#ifdef KOR_SANITIZED
  GTEST_SKIP() << "the system's functions come from the sanitizer then, and look like anybody's";
#endif
  std::set<std::string> found;
  for (const Symbol& symbol : dynamic_symbols("--undefined-only")) {
    if (!is_of_the_system(symbol.name)) found.insert(symbol.name);
  }
  EXPECT_EQ(1u, found.count("SysAllocString")) << "nothing was read";
  for (const std::string& name : found) EXPECT_EQ(1u, kRuntime.count(name)) << name;
}

}  // namespace
}  // namespace test
