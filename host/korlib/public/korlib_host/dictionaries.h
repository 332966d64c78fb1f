// What a host that keeps dictionaries beyond a request must do with them.
//
// A dictionary belongs to one request at a time, and may hold anything. Before all threads can reach it, it is shared:
//
//   if (!korlib_host::share(value)) return refuse();  // something in it is of one thread
//   application.put(name, value);
//
// A dictionary that holds itself, directly or through others, is never released by counting. The host has such ones
// freed when the work that made them ends, and when what it kept goes.
#pragma once

#include <korlib/variant.h>

namespace korlib_host {

// Whether every thread may use the value: a plain one, a dictionary that holds nothing else, or an array of these.
// When it may, its dictionaries are shared from now on: they refuse what this is not true of. When not, nothing is
// changed. To be called by the thread that alone uses the value. Throws std::bad_alloc.
KORLIB_API bool share(const VARIANT& value);

// Has free_cycles() look at the dictionaries in the value, which is about to be let go of by a store that was not
// traced. Those that were put into each other on this thread are looked at without being told.
KORLIB_API void watch_for_cycles(const VARIANT& value) noexcept;

enum class CycleReach {
  own_thread,  // other threads may be using the dictionaries that are shared: these stay
  all,         // no other thread uses any
};

// Empties the dictionaries that only dictionaries hold any more, of those that this thread has put into each other or
// watched since the last call; they go then. To be called while whatever they hold may be released. When memory is
// short what is left is looked at by the next call.
KORLIB_API void free_cycles(CycleReach reach = CycleReach::own_thread) noexcept;

}  // namespace korlib_host
