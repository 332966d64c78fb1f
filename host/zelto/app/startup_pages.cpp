#include "app/startup_pages.h"

#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace zelto {
namespace {

// Whether the linker has changed pages of the object that are not for writing: these are not as in the file.
bool is_text_changed(const dl_phdr_info& object, std::span<const ElfW(Phdr)> segments) {
  for (const ElfW(Phdr) & segment : segments) {
    if (segment.p_type != PT_DYNAMIC) continue;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the linker tells where an object lies
    for (const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + segment.p_vaddr);
         entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag == DT_TEXTREL || (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0))
        return true;
    }
  }
  return false;
}

int give_back(dl_phdr_info* object, std::size_t, void*) {
  const std::span segments(object->dlpi_phdr, object->dlpi_phnum);
  if (is_text_changed(*object, segments)) return 0;
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  for (const ElfW(Phdr) & segment : segments) {
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
    const std::uintptr_t begin = (object->dlpi_addr + segment.p_vaddr) & ~(page - 1);
    const std::uintptr_t end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): as above
    ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
  }
  return 0;
}

}  // namespace

void give_startup_pages_back() noexcept { ::dl_iterate_phdr(give_back, nullptr); }

}  // namespace zelto
