// Which dictionaries hold each other: what sharing one means for those in it, and how cycles of them are found.
#pragma once

#include <atomic>
#include <boost/intrusive/list.hpp>
#include <cstddef>

#include <korlib/safearray.h>
#include <korlib/variant.h>

namespace korlib {

// Whether the value can hold objects at all: asked for every value that is stored.
inline bool may_hold_objects(const VARIANT& value) {
  return value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN || (value.vt & (VT_ARRAY | VT_BYREF)) != 0;
}

// Calls `each` with every object in the value, in arrays as well; with null for a reference to memory of somebody else.
template <class Each>
void for_each_object(const VARIANT& value, Each& each) {
  if (value.vt & VT_BYREF) return each(nullptr);
  if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) {
    if (value.punkVal) each(value.punkVal);
    return;
  }
  if (!(value.vt & VT_ARRAY) || !value.parray) return;
  const SAFEARRAY& array = *value.parray;
  std::size_t count = 1;
  for (USHORT dim = 0; dim < array.cDims; ++dim) count *= array.rgsabound[dim].cElements;
  const int elements = value.vt & ~VT_ARRAY;
  for (std::size_t i = 0; i < count && elements == VT_VARIANT; ++i) {
    for_each_object(static_cast<const VARIANT*>(array.pvData)[i], each);
  }
  for (std::size_t i = 0; i < count && (elements == VT_DISPATCH || elements == VT_UNKNOWN); ++i) {
    if (IUnknown* const object = static_cast<IUnknown* const*>(array.pvData)[i]) each(object);
  }
}

// What may be part of a cycle, in the list of the thread that saw it last. Any thread may destroy it.
class CycleCandidate {
 public:
  CycleCandidate() = default;
  CycleCandidate(const CycleCandidate&) = delete;
  CycleCandidate& operator=(const CycleCandidate&) = delete;

  // Puts it into the calling thread's list, unless it is in one.
  void enter() noexcept;
  // Takes it out; called before any part of it goes.
  void leave() noexcept;

 private:
  friend class CandidateList;
  using Hook = boost::intrusive::list_member_hook<boost::intrusive::link_mode<boost::intrusive::auto_unlink>>;

  Hook hook_;                             // under the lock of all lists
  std::atomic<bool> has_entered_{false};  // ever: most never do, and go without the lock
};

}  // namespace korlib
