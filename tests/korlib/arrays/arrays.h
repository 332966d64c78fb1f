// Safe arrays that free themselves.
#pragma once

#include <korlib/hresult.h>
#include <korlib/safearray.h>

#include <gtest/gtest.h>

#include <memory>

namespace test {

struct Destroy {
  void operator()(SAFEARRAY* array) const { EXPECT_EQ(S_OK, SafeArrayDestroy(array)); }
};
using Array = std::unique_ptr<SAFEARRAY, Destroy>;

inline Array vector_of(VARTYPE vt, ULONG elements, LONG lower = 0) {
  return Array(SafeArrayCreateVector(vt, lower, elements));
}

}  // namespace test
