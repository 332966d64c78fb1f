// How many files the system lets the program open, and how many connections that is.
#pragma once

#include <cstddef>

namespace zelto {

// A connection may have two files open: itself and what it is sent. Up to 1,024 are for pages, and half of `files` when
// there are fewer than twice as many.
std::size_t connections_that_fit(std::size_t files, std::size_t wanted);

// Raises the number of files that the program may open as far as it needs, and answers how many
// connections there can be: `wanted`, or fewer.
std::size_t raise_open_file_limit(std::size_t wanted);

}  // namespace zelto
