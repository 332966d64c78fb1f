// How many files the system lets the program open, and how many connections that is.
#pragma once

#include <cstddef>

namespace zelto {

// Every connection is an open file, and so is whatever a page opens: a half of them stays for pages when
// `files` are not enough for both.
std::size_t connections_that_fit(std::size_t files, std::size_t wanted);

// Raises the number of files that the program may open as far as it needs, and answers how many
// connections there can be: `wanted`, or fewer.
std::size_t raise_open_file_limit(std::size_t wanted);

}  // namespace zelto
