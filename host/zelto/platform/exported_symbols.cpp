#include "platform/exported_symbols.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>

namespace zelto {

namespace {

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

}  // namespace

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

}  // namespace zelto
