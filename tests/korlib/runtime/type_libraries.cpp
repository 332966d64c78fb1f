#include <korlib_host/typelib.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring asked_for;

HRESULT refuse(const OLECHAR* path, ITypeLib** library) {
  asked_for = path;
  *library = nullptr;
  return E_ACCESSDENIED;
}

// Not null, and never called.
ITypeLib* poison() { return reinterpret_cast<ITypeLib*>(&asked_for); }

TEST(TypeLibraries, CannotBeLoadedWithoutAProvider) {
  ITypeLib* library = poison();
  EXPECT_EQ(LoadTypeLib(L"/some/module.so", &library), TYPE_E_CANTLOADLIBRARY);
  EXPECT_EQ(library, nullptr);
}

TEST(TypeLibraries, AreAskedOfTheProvider) {
  korlib_host::set_type_library_provider(refuse);
  ITypeLib* library = poison();
  EXPECT_EQ(LoadTypeLib(L"/some/module.so\\2", &library), E_ACCESSDENIED);
  EXPECT_EQ(library, nullptr);
  EXPECT_EQ(asked_for, L"/some/module.so\\2");
  korlib_host::set_type_library_provider(nullptr);
  EXPECT_EQ(LoadTypeLib(L"x", &library), TYPE_E_CANTLOADLIBRARY);
}

TEST(TypeLibraries, AnswerNullPointersWithACode) {
  ITypeLib* library = poison();
  EXPECT_EQ(LoadTypeLib(L"x", nullptr), E_POINTER);
  EXPECT_EQ(LoadTypeLib(nullptr, &library), E_INVALIDARG);
  EXPECT_EQ(library, nullptr);
}

}  // namespace
