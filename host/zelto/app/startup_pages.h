// What starting a process leaves in its memory.
#pragma once

namespace zelto {

// Linking the program with its libraries reads some 10 MB of them, the script engine's names above all. A process that
// then only waits has no more use for these pages; one that is needed after all is read from its file again.
void give_startup_pages_back() noexcept;

}  // namespace zelto
