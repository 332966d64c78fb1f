// How many files the system lets the program open, and how many connections that is.
#pragma once

#include <cstddef>

namespace zelto {

// Connections are open files, and so is what pages open: half of `files` stays for pages when there are not enough
// for both.
std::size_t connections_that_fit(std::size_t files, std::size_t wanted);

// Raises the number of files that the program may open as far as it needs, and answers how many
// connections there can be: `wanted`, or fewer.
std::size_t raise_open_file_limit(std::size_t wanted);

}  // namespace zelto
