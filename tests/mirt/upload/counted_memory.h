// Memory that counts its use: how often a program came to a page of it, whatever it called to do so.
//
// Nearly all pages are closed. Coming to a closed one is a visit: it opens the page and closes the one
// that was opened longest ago. So one pass over the memory costs one visit a page, however the pass is
// made, and a pass for every line of a long text costs a visit for every line and page.
//
// A program that is made of counted_memory.cpp has allocators of its own; it is a program of its own for
// that. One thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace test {

inline constexpr std::size_t kPage = 4096;

// While one lives, blocks of `operator new` that are several pages long are of such memory; they must be
// released before it goes.
class CountedMemory {
 public:
  // More visits than the limit, or more memory than there is, end the program: what goes wrong by a square
  // might not end for hours.
  explicit CountedMemory(std::size_t limit);
  ~CountedMemory();
  CountedMemory(const CountedMemory&) = delete;
  CountedMemory& operator=(const CountedMemory&) = delete;

  // The bytes in such memory, before any visit.
  const char* copy_of(std::string_view bytes);
};

}  // namespace test
