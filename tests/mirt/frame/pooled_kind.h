// An object kind made for tests of class objects and pools. Defined by pools_test.cpp.
#pragma once

#include <gtest/gtest.h>

#include <new>

#include "frame/class_factory.h"

namespace test {

inline thread_local int sections_held = 0;  // critical sections that the thread is in
inline long live_count = 0;                 // in place of the module's
inline int constructions_to_fail = 0;       // the number of the one that throws, from 1; none is 0
inline thread_local int last_seen_in_memory = 0;

// With external linkage, so that the compiler does not know that it stays null.
extern ITypeInfo* no_type_info;

// Looks at its memory before anything was stored in it, and at what is locked meanwhile.
class Kind : public IDispatch {
 public:
  Kind() {
    EXPECT_EQ(0, sections_held);
    if (constructions_to_fail && --constructions_to_fail == 0) throw std::bad_alloc();
  }
  int untouched;  // by the constructor; what the pool left there
  HRESULT InContext(IGetContextProperties*) { return in_context; }
  static inline HRESULT in_context = S_OK;

 protected:
  ~Kind() {
    EXPECT_EQ(0, sections_held);
    last_seen_in_memory = untouched;
  }
};

using Pooled = GDualImplForPool<IDispatch, Kind, &no_type_info, &live_count>;

}  // namespace test

template <>
IObjectPool* test::Pooled::s_pPool;
