// A module that does not say when it can be closed stays until the process ends; this process is for that.
#include "korlib/activation/activation_fixture.h"

namespace {

TEST(StayingModule, IsNeverClosed) {
  void* none = &none;
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
            korlib_host::get_class_object_by_name(STAYING_MODULE_PATH, L"x", IID_IClassFactory, &none));
  EXPECT_EQ(nullptr, none);
  EXPECT_EQ(sample::Steps{"attach"}, sample::take_steps());
  CoFreeUnusedLibraries();
  CoFreeUnusedLibraries();
  EXPECT_EQ(sample::Steps(), sample::take_steps());
  EXPECT_EQ(1u, korlib_host::open_modules());
}

}  // namespace
