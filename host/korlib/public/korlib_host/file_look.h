// What a look at a file has just told the thread, for those who are about to look there as well.
//
// A page that draws a template asks for the true name of its file, for its contents and for its time, one right after
// the other, and a call of the system each time would take longer than the rest. So whoever looks first leaves here
// what it saw, and the others take it, each once: who asks again looks anew. What the thread writes to any file, and
// the end of its request, make an end of it.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace korlib_host {

enum class LookFor { contents, times };

// Of the calling thread; each replaces the one before. `seen` is what stat() gives for the path.
[[gnu::visibility("default")]] void leave_look(const std::string& path, const struct stat& seen);
// Nothing where the last look was at another path, or has been taken.
[[gnu::visibility("default")]] std::optional<struct stat> take_look(const std::string& path, LookFor what) noexcept;
[[gnu::visibility("default")]] void forget_look() noexcept;

}  // namespace korlib_host
