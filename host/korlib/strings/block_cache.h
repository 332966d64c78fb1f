// Memory for strings: blocks of a few sizes, kept by the thread that freed them for its next string.
//
// A block may be freed by another thread than the one that took it; it then serves that thread. What a
// thread keeps is bounded, and goes back to the allocator when the thread ends. Under sanitizers nothing
// is kept, so that leaks and overruns of strings are seen.
#pragma once

#include <cstddef>

namespace korlib::strings {

// At least `bytes` bytes aligned to 16, or null; the page's limit of memory is asked for a large block. `*usable`
// receives what the block really holds, which give_block() wants back.
void* take_block(std::size_t bytes, std::size_t* usable) noexcept;
void give_block(void* block, std::size_t usable) noexcept;
// What a block for so many bytes would hold.
std::size_t usable_for(std::size_t bytes) noexcept;

}  // namespace korlib::strings
