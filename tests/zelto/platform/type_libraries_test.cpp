#include "platform/type_libraries.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <korlib/ptr.h>
#include <korlib/typeinfo.h>
#include <korlib/winapi.h>
#include <mirt/mirt.h>
#include <zelto/asp.h>

#include "support/module.h"
#include "text/charset.h"

namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

class TypeLibraries : public testing::Test {
 protected:
  TypeLibraries() { zelto::install_type_libraries(); }
  const std::wstring path_ = zelto::to_wide(MIRT_MODULE_PATH);
};

TEST_F(TypeLibraries, LetTheModuleAttachWithAllItsTypeInformation) {
  const test::Module module;
  EXPECT_EQ(1, module.attached());
  EXPECT_EQ(zelto::string_list_type_info(), *module.symbol<ITypeInfo*>("g_pTI_IStringList"));
  EXPECT_EQ(zelto::request_dictionary_type_info(), *module.symbol<ITypeInfo*>("g_pTI_IRequestDictionary"));
}

TEST_F(TypeLibraries, KeepTheModulesOwnTypeInformation) {
  const test::Module module;
  CComPtr<ITypeLib> library;
  ASSERT_EQ(S_OK, LoadTypeLib(path_.c_str(), library.put()));
  EXPECT_EQ(5u, library->GetTypeInfoCount());
  for (const auto& [iid, name] :
       {std::pair{korlib::iid_of<IMirt>, "g_pTI_IMirt"}, std::pair{korlib::iid_of<IUtility>, "g_pTI_IUtility"},
        std::pair{korlib::iid_of<IFormFile>, "g_pTI_IFormFile"}}) {
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(S_OK, library->GetTypeInfoOfGuid(iid, info.put()));
    EXPECT_EQ(*module.symbol<ITypeInfo*>(name), info.get());
  }
}

TEST_F(TypeLibraries, MayBeAttachedToAgain) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(1, test::Module().attached());
}

TEST_F(TypeLibraries, SayWhatTheyDoNotDescribe) {
  const test::Module module;
  CComPtr<ITypeLib> library;
  ASSERT_EQ(S_OK, LoadTypeLib(path_.c_str(), library.put()));
  CComPtr<ITypeInfo> info;
  EXPECT_EQ(TYPE_E_ELEMENTNOTFOUND, library->GetTypeInfoOfGuid(korlib::iid_of<IStringList>, info.put()));
  EXPECT_EQ(TYPE_E_CANTLOADLIBRARY, LoadTypeLib(L"/nowhere/module.so", library.put()));
  EXPECT_FALSE(library);
}

TEST_F(TypeLibraries, DescribeTheHostsCollections) {
  CComPtr<ITypeLib> library;
  ASSERT_EQ(S_OK, LoadTypeLib((path_ + L"\\2").c_str(), library.put()));
  CComPtr<ITypeInfo> info;
  ASSERT_EQ(S_OK, library->GetTypeInfoOfGuid(korlib::iid_of<IRequestDictionary>, info.put()));
  wchar_t item[] = L"iTEM";
  wchar_t* name = item;
  MEMBERID id = 99;
  EXPECT_EQ(S_OK, info->GetIDsOfNames(&name, 1, &id));
  EXPECT_EQ(2, id);
  wchar_t none[] = L"None";
  name = none;
  EXPECT_EQ(DISP_E_UNKNOWNNAME, info->GetIDsOfNames(&name, 1, &id));
}

TEST(ModuleFileName, IsThePathOfAModuleAndOfTheProgram) {
  const test::Module module;
  wchar_t buffer[MAX_PATH];
  const DWORD length = GetModuleFileNameW(module.handle(), buffer, MAX_PATH);
  EXPECT_EQ(zelto::to_wide(MIRT_MODULE_PATH), std::wstring(buffer));
  EXPECT_EQ(std::wstring(buffer).size(), length);
  EXPECT_GT(GetModuleFileNameW(nullptr, buffer, MAX_PATH), 0u);
  EXPECT_NE(std::wstring::npos, std::wstring(buffer).find(L"test_zelto_platform"));
}

TEST(ModuleFileName, IsEmptyWhenItDoesNotFitOrIsNone) {
  const test::Module module;
  wchar_t buffer[4] = L"xxx";
  EXPECT_EQ(0u, GetModuleFileNameW(module.handle(), buffer, 4));
  EXPECT_STREQ(L"", buffer);
  int no_module = 0;
  EXPECT_EQ(0u, GetModuleFileNameW(&no_module, buffer, 4));
}

}  // namespace
