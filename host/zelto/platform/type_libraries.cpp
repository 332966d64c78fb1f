#include "platform/type_libraries.h"

#include <dlfcn.h>
#include <elf.h>
#include <korlib/plain_typeinfo.h>
#include <korlib_host/class_type_info.h>
#include <korlib_host/counted.h>
#include <korlib_host/errors.h>
#include <korlib_host/typelib.h>
#include <link.h>
#include <zelto/asp.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/charset.h"

namespace zelto {

namespace {

using Descriptions = std::vector<std::pair<IID, ITypeInfo*>>;

class TypeLibrary final : public korlib::Counted<korlib::PlainTypeLib> {
 public:
  explicit TypeLibrary(Descriptions descriptions) : descriptions_(std::move(descriptions)) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ITypeLib, IUnknown>(this, riid, ppv);
  }

  UINT GetTypeInfoCount() override { return static_cast<UINT>(descriptions_.size()); }
  HRESULT GetTypeInfo(UINT index, ITypeInfo** info) override {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index >= descriptions_.size()) return TYPE_E_ELEMENTNOTFOUND;
    return CComPtr<ITypeInfo>(descriptions_[index].second).copy_to(info);
  }
  HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info) override {
    if (!info) return E_POINTER;
    *info = nullptr;
    for (const auto& [iid, description] : descriptions_) {
      if (iid == guid) return CComPtr<ITypeInfo>(description).copy_to(info);
    }
    return TYPE_E_ELEMENTNOTFOUND;
  }

 private:
  Descriptions descriptions_;
};

Descriptions host_descriptions() {
  return {{korlib::iid_of<ZeltoTypeLibrary::IStringList>, string_list_type_info()},
          {korlib::iid_of<ZeltoTypeLibrary::IRequestDictionary>, request_dictionary_type_info()}};
}

// The tables that the loader looks names up in, found through the module's dynamic section.
struct Tables {
  const ElfW(Sym) * symbols = nullptr;
  const char* names = nullptr;
  const std::uint32_t* hash = nullptr;
};

Tables find_tables(const link_map& module) {
  Tables tables;
  for (const auto* entry = module.l_ld; entry->d_tag != DT_NULL; ++entry) {
    // The loader has turned these offsets into addresses.
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the format holds addresses as numbers
    const auto* address = reinterpret_cast<const void*>(entry->d_un.d_ptr);
    if (entry->d_tag == DT_SYMTAB) tables.symbols = static_cast<const ElfW(Sym)*>(address);
    if (entry->d_tag == DT_STRTAB) tables.names = static_cast<const char*>(address);
    if (entry->d_tag == DT_GNU_HASH) tables.hash = static_cast<const std::uint32_t*>(address);
  }
  return tables;
}

// One more than the last symbol that the hash table knows: the table itself has no length.
std::uint32_t symbol_count(const std::uint32_t* hash) {
  const std::uint32_t buckets = hash[0];
  const std::uint32_t first = hash[1];
  const std::uint32_t bloom_words = hash[2];
  const std::uint32_t* bucket = hash + 4 + std::size_t{bloom_words} * (sizeof(ElfW(Addr)) / sizeof(std::uint32_t));
  const std::uint32_t* chain = bucket + buckets;
  std::uint32_t last = 0;
  for (std::uint32_t i = 0; i < buckets; ++i) last = std::max(last, bucket[i]);
  if (last < first) return first;
  while (!(chain[last - first] & 1)) ++last;  // the lowest bit ends a chain
  return last + 1;
}

// The names that a loaded module exports: of what is defined in it, in no order. None when the module's tables are not
// as the loader's own are. `module` is what dlopen answered.
std::vector<std::string> exported_symbols(void* module) {
  link_map* map = nullptr;
  if (dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || !map) return {};
  const Tables tables = find_tables(*map);
  if (!tables.symbols || !tables.names || !tables.hash) return {};
  std::vector<std::string> names;
  const std::uint32_t count = symbol_count(tables.hash);
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto& symbol = tables.symbols[i];
    if (symbol.st_shndx != SHN_UNDEF && symbol.st_name != 0) names.emplace_back(tables.names + symbol.st_name);
  }
  return names;
}

// Every exported pair of an identifier IID_x and a pointer g_pTI_x.
Descriptions module_descriptions(void* module) {
  constexpr std::string_view kPrefix = "IID_";
  Descriptions descriptions;
  for (const std::string& name : exported_symbols(module)) {
    if (!name.starts_with(kPrefix)) continue;
    const std::string pointer = "g_pTI_" + name.substr(kPrefix.size());
    const auto* iid = static_cast<const IID*>(dlsym(module, name.c_str()));
    auto* const* info = static_cast<ITypeInfo* const*>(dlsym(module, pointer.c_str()));
    if (iid && info && *info) descriptions.emplace_back(*iid, *info);
  }
  return descriptions;
}

HRESULT load(const OLECHAR* path, ITypeLib** library) {
  constexpr std::wstring_view kSecondLibrary = L"\\2";
  const std::wstring_view wanted(path);
  if (wanted.ends_with(kSecondLibrary)) {
    *library = new TypeLibrary(host_descriptions());
    return S_OK;
  }
  // A module that is being attached is loaded already; a library of any other file is not looked for.
  void* module = dlopen(to_utf8(wanted).c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (!module) return TYPE_E_CANTLOADLIBRARY;
  Descriptions descriptions = module_descriptions(module);
  dlclose(module);
  if (descriptions.empty()) return TYPE_E_CANTLOADLIBRARY;
  *library = new TypeLibrary(std::move(descriptions));
  return S_OK;
}

HRESULT load_type_library(const OLECHAR* path, ITypeLib** library) {
  return korlib::guarded(L"LoadTypeLib", library, [&] { return load(path, library); });
}

}  // namespace

ITypeInfo* string_list_type_info() {
  static korlib::ClassTypeInfo info(L"StringList", kStringListMembers<ZeltoTypeLibrary::IStringList>);
  return &info;
}

ITypeInfo* request_dictionary_type_info() {
  static korlib::ClassTypeInfo info(L"RequestDictionary",
                                    kRequestDictionaryMembers<ZeltoTypeLibrary::IRequestDictionary>);
  return &info;
}

void install_type_libraries() { korlib_host::set_type_library_provider(&load_type_library); }

}  // namespace zelto
