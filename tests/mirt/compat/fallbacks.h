// The fallbacks of libmirt.so, called through its exported names.
#pragma once

#include <gtest/gtest.h>

#include <korlib/winapi.h>
#include <korlib/wincrypt.h>

#include "support/module.h"

namespace test {

class Fallbacks : public ModuleTest {
 protected:
  template <class Function>
  Function* fallback(const char* name) {
    return module_.symbol<Function>(name);
  }
};

// The fallback of that name with the declared type.
#define FALLBACK(Name) (*fallback<decltype(::Name)>(#Name))

}  // namespace test
