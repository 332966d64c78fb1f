// Ending a page from inside one of its calls.
//
// Response.End, Response.Redirect, a time-out and a heap that is too large leave the script from the middle of a call,
// through whatever component frames lie between. The thread remembers that it is unwinding; until the outermost
// Realm::run() returns, every call between script and objects, in either direction, is refused with
// kPageStopped. A component that replaces the code by one of its own therefore cannot bring the page back.
#pragma once

#include <korlib/hresult.h>

namespace zelto::script {

// Private to this host; no component gives it a meaning.
inline constexpr HRESULT kPageStopped = korlib::hresult(0x8004E0F1);

// For a member that ends the page: `return script::stop_page();`. In the page the call throws; page code
// that catches this gets the same again at its next call of any object, and code that calls none is
// terminated shortly after. Does nothing but answer the code when no script runs on this thread.
HRESULT stop_page() noexcept;

// True from stop_page(), a time-out or a heap that is too large until the outermost run has returned.
bool is_unwinding() noexcept;

}  // namespace zelto::script
