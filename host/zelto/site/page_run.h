// One request for a page, from its first line to the last byte of its answer.
#pragma once

#include <cstddef>
#include <string>

#include "http/message.h"
#include "script/engine.h"
#include "site/site.h"

namespace zelto {

// Of the thread that a page runs on: it recurses through native frames.
#ifdef __SANITIZE_THREAD__
// That sanitizer keeps the whole chain of calls of every allocation, so that what a runaway recursion takes
// grows with the square of its depth.
inline constexpr std::size_t kPageStack = std::size_t{3} << 20;
#else
inline constexpr std::size_t kPageStack = std::size_t{16} << 20;
#endif

// How much of what a page writes to its console goes to the log: a loop that tells of each turn fills no disk.
inline constexpr std::size_t kConsoleLimit = std::size_t{64} << 10;

// Answers the request with the page that lies at `path` from the site's root, "/a/default.asp". Gives the status.
int run_page(Site& site, script::Engine& engine, HttpRequest request, const std::string& path, ResponseSink& sink);

}  // namespace zelto
