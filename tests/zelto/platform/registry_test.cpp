#include <gtest/gtest.h>
#include <korlib/winapi.h>
#include <korlib_host/registry_store.h>

#include <memory>

#include "support/temporary_folder.h"

namespace {

class Registry : public testing::Test {
 protected:
  Registry() {
    store = std::make_shared<korlib_host::RegistryStore>(folder_.path("registry.json"));
    korlib_host::set_registry(store);
  }
  ~Registry() override { korlib_host::set_registry(nullptr); }

  HKEY create(HKEY parent, const wchar_t* name) {
    HKEY key = nullptr;
    EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(parent, name, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr));
    return key;
  }
  LONG set(HKEY key, const wchar_t* name, const wchar_t* text) {
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), 2);
  }

  std::shared_ptr<korlib_host::RegistryStore> store;

 private:
  test::TemporaryFolder folder_;
};

TEST_F(Registry, WritesWhatRegistrationWrites) {
  HKEY key = create(hkey_classes_root(), L"Some.Class");
  HKEY inner = create(key, L"CLSID");
  EXPECT_EQ(ERROR_SUCCESS, set(inner, nullptr, L"{whole text, whatever the length says}"));
  EXPECT_EQ(ERROR_SUCCESS, set(inner, L"ThreadingModel", L"Apartment"));
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(inner));
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(key));
  EXPECT_EQ(L"{whole text, whatever the length says}", store->value(L"Some.Class\\CLSID", L""));
  EXPECT_EQ(L"Apartment", store->value(L"some.class\\clsid", L"threadingmodel"));
}

// Registration opens it without having made it.
TEST_F(Registry, HasTheKeyOfClassIdentifiersFromTheStart) {
  HKEY key = nullptr;
  EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExW(hkey_classes_root(), L"CLSID", 0, 0, &key));
  EXPECT_NE(nullptr, key);
  RegCloseKey(key);
}

TEST_F(Registry, TellsNewKeysFromOldOnes) {
  DWORD disposition = 99;
  HKEY key = nullptr;
  EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(hkey_classes_root(), L"a", 0, nullptr, 0, 0, nullptr, &key, &disposition));
  EXPECT_EQ(1u, disposition);
  RegCloseKey(key);
  EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(hkey_classes_root(), L"a", 0, nullptr, 0, 0, nullptr, &key, &disposition));
  EXPECT_EQ(2u, disposition);
  RegCloseKey(key);
}

TEST_F(Registry, FailsOnKeysThatAreNotThere) {
  HKEY key = reinterpret_cast<HKEY>(1);
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExW(hkey_classes_root(), L"none", 0, 0, &key));
  EXPECT_EQ(nullptr, key);
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyW(hkey_classes_root(), L"none"));
  EXPECT_NE(ERROR_SUCCESS, RegOpenKeyExW(nullptr, L"a", 0, 0, &key));
  EXPECT_NE(ERROR_SUCCESS, RegCloseKey(nullptr));
}

TEST_F(Registry, DeletesOnlyKeysWithoutKeysBelow) {
  HKEY key = create(hkey_classes_root(), L"a");
  RegCloseKey(create(key, L"b"));
  EXPECT_NE(ERROR_SUCCESS, RegDeleteKeyW(hkey_classes_root(), L"a"));
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(key, L"b"));
  RegCloseKey(key);
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(hkey_classes_root(), L"a"));
  EXPECT_FALSE(store->has_key(L"a"));
}

TEST_F(Registry, RefusesToPretendWithoutAStore) {
  korlib_host::set_registry(nullptr);
  HKEY key = reinterpret_cast<HKEY>(1);
  EXPECT_NE(ERROR_SUCCESS, RegCreateKeyExW(hkey_classes_root(), L"a", 0, nullptr, 0, 0, nullptr, &key, nullptr));
  EXPECT_EQ(nullptr, key);
}

}  // namespace
