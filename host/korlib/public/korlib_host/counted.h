// Counted: the reference count of every object that this host makes.
#pragma once

#include <atomic>
#include <utility>

#include <korlib/ptr.h>
#include <korlib_host/diagnostics.h>

namespace korlib {

// Base of a class that implements `Interface…`; it brings AddRef and Release for all of them. The class itself answers
// QueryInterface, mostly by one call of query_list():
//
//   class Clock final : public korlib::Counted<IClock> {
//    public:
//     HRESULT QueryInterface(REFIID riid, void** ppv) override {
//       return korlib::query_list<IClock, IUnknown>(this, riid, ppv);
//     }
//   };
//
// A new object has one reference, which make() hands to its first holder. References may come and go on any thread;
// the last one deletes the object on the thread that gave it up. Objects count as live while they exist
// (korlib_host::live_objects()).
//
// The first reference is there before the constructor runs: a constructor may lend the object to a callee that counts
// it and lets it go again. Objects are never on the stack or members of others: the last reference would
// delete them.
template <class... Interface>
class Counted : public Interface... {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  // Both answer how many references there are then, which other threads may have changed already. They are not final:
  // for a final one GCC 12 takes calls through an interface to be impossible, and leaves them out.
  ULONG AddRef() override { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }
  ULONG Release() override {
    const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) on_last_release();
    return left;
  }

  // For a caller that knows the object without holding it, as a cache of wrappers does: another reference, unless the
  // last one has gone. False then, and the object is about to be deleted, or already waits for it. The caller sees to
  // it that the memory is still there, by a lock that on_last_release() takes or by being the only thread.
  bool try_add_ref() noexcept {
    ULONG count = references_.load(std::memory_order_relaxed);
    while (count > 0) {
      if (references_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
    }
    return false;
  }

 protected:
  Counted() = default;
  virtual ~Counted() = default;

  // Called once, on the thread that gave the last reference up. An object that may only die on another thread overrides
  // it and puts itself where that thread will delete it.
  virtual void on_last_release() { delete this; }

 private:
  std::atomic<ULONG> references_{1};
  [[no_unique_address]] korlib_host::LiveObject live_;
};

// A new object in the hands of its first holder, whose reference is the only one. Throws std::bad_alloc, and what the
// constructor throws.
//
//   CComPtr<Clock> clock = korlib::make<Clock>(zone);
//   return clock->QueryInterface(riid, ppv);  // the caller's reference outlives `clock`
template <class Object, class... Argument>
CComPtr<Object> make(Argument&&... argument) {
  CComPtr<Object> made;
  made.attach(new Object(std::forward<Argument>(argument)...));
  return made;
}

}  // namespace korlib
