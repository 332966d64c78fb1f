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
  EXPECT_EQ(TYPE_E_CANTLOADLIBRARY, LoadTypeLib(L"/some/module.so", &library));
  EXPECT_EQ(nullptr, library);
}

TEST(TypeLibraries, AreAskedOfTheProvider) {
  korlib_host::set_type_library_provider(refuse);
  ITypeLib* library = poison();
  EXPECT_EQ(E_ACCESSDENIED, LoadTypeLib(L"/some/module.so\\2", &library));
  EXPECT_EQ(nullptr, library);
  EXPECT_EQ(L"/some/module.so\\2", asked_for);
  korlib_host::set_type_library_provider(nullptr);
  EXPECT_EQ(TYPE_E_CANTLOADLIBRARY, LoadTypeLib(L"x", &library));
}

TEST(TypeLibraries, AnswerNullPointersWithACode) {
  ITypeLib* library = poison();
  EXPECT_EQ(E_POINTER, LoadTypeLib(L"x", nullptr));
  EXPECT_EQ(E_INVALIDARG, LoadTypeLib(nullptr, &library));
  EXPECT_EQ(nullptr, library);
}

}  // namespace
