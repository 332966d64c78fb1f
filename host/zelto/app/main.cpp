#include <malloc.h>

#include "app/command_line.h"

namespace {

// By itself the allocator learns to take larger and larger blocks from its arenas, where what is freed stays as long as
// anything lies behind it: a few uploads would have the program keep their memory for good. Bodies and texts of that
// size are given back at once instead; smaller ones are taken and freed without a call of the system.
constexpr int kGivenBack = 512 << 10;
constexpr int kKept = 1 << 20;  // at the end of an arena

}  // namespace

int main(int argc, char** argv) {
  ::mallopt(M_MMAP_THRESHOLD, kGivenBack);
  ::mallopt(M_TRIM_THRESHOLD, kKept);
  return zelto::run_command_line(argc, argv);
}
