// A module that does not say when it can be closed stays until the process ends; this process is for that.
#include "activation_test.h"

namespace {

TEST(StayingModule, IsNeverClosed) {
  void* none = &none;
  EXPECT_EQ(korlib_host::get_class_object_by_name(STAYING_MODULE_PATH, L"x", IID_IClassFactory, &none),
            CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(sample::take_steps(), sample::Steps{"attach"});
  CoFreeUnusedLibraries();
  CoFreeUnusedLibraries();
  EXPECT_EQ(sample::take_steps(), sample::Steps());
  EXPECT_EQ(korlib_host::open_modules(), 1u);
}

}  // namespace
