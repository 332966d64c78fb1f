// One line per answered request.
#pragma once

#include <string>

#include "http/server.h"

namespace zelto {

// The "combined" form with the seconds that the answer took behind it, and what the page appended:
//   127.0.0.1 - - [21/Nov/2026:10:00:00 +0000] "GET / HTTP/1.1" 200 512 "-" "agent" 0.004 note
// Quotes, backslashes and control characters are written as \xHH, in what a client sent all but ASCII is.
std::string combined_line(const AccessRecord& record);

}  // namespace zelto
