#include "platform/type_libraries.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <korlib/ptr.h>
#include <korlib/winapi.h>
#include <mirt/mirt.h>
#include <zelto/asp.h>

#include "intrinsics/text.h"
#include "support/module.h"

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
  EXPECT_EQ(module.attached(), 1);
  EXPECT_EQ(*module.symbol<ITypeInfo*>("g_pTI_IStringList"), zelto::string_list_type_info());
  EXPECT_EQ(*module.symbol<ITypeInfo*>("g_pTI_IRequestDictionary"), zelto::request_dictionary_type_info());
}

TEST_F(TypeLibraries, KeepTheModulesOwnTypeInformation) {
  const test::Module module;
  CComPtr<ITypeLib> library;
  ASSERT_EQ(LoadTypeLib(path_.c_str(), library.put()), S_OK);
  EXPECT_EQ(library->GetTypeInfoCount(), 5u);
  for (const auto& [iid, name] :
       {std::pair{korlib::iid_of<IMirt>, "g_pTI_IMirt"}, std::pair{korlib::iid_of<IUtility>, "g_pTI_IUtility"},
        std::pair{korlib::iid_of<IFormFile>, "g_pTI_IFormFile"}}) {
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(library->GetTypeInfoOfGuid(iid, info.put()), S_OK);
    EXPECT_EQ(info.get(), *module.symbol<ITypeInfo*>(name));
  }
}

TEST_F(TypeLibraries, MayBeAttachedToAgain) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(test::Module().attached(), 1);
}

TEST_F(TypeLibraries, SayWhatTheyDoNotDescribe) {
  const test::Module module;
  CComPtr<ITypeLib> library;
  ASSERT_EQ(LoadTypeLib(path_.c_str(), library.put()), S_OK);
  CComPtr<ITypeInfo> info;
  EXPECT_EQ(library->GetTypeInfoOfGuid(korlib::iid_of<IStringList>, info.put()), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(LoadTypeLib(L"/nowhere/module.so", library.put()), TYPE_E_CANTLOADLIBRARY);
  EXPECT_FALSE(library);
}

TEST_F(TypeLibraries, DescribeTheHostsCollections) {
  CComPtr<ITypeLib> library;
  ASSERT_EQ(LoadTypeLib((path_ + L"\\2").c_str(), library.put()), S_OK);
  CComPtr<ITypeInfo> info;
  ASSERT_EQ(library->GetTypeInfoOfGuid(korlib::iid_of<IRequestDictionary>, info.put()), S_OK);
  wchar_t item[] = L"iTEM";
  wchar_t* name = item;
  MEMBERID id = 99;
  EXPECT_EQ(info->GetIDsOfNames(&name, 1, &id), S_OK);
  EXPECT_EQ(id, 2);
  wchar_t none[] = L"None";
  name = none;
  EXPECT_EQ(info->GetIDsOfNames(&name, 1, &id), DISP_E_UNKNOWNNAME);
}

TEST(ModuleFileName, IsThePathOfAModuleAndOfTheProgram) {
  const test::Module module;
  wchar_t buffer[MAX_PATH];
  const DWORD length = GetModuleFileNameW(module.handle(), buffer, MAX_PATH);
  EXPECT_EQ(std::wstring(buffer), zelto::to_wide(MIRT_MODULE_PATH));
  EXPECT_EQ(length, std::wstring(buffer).size());
  EXPECT_GT(GetModuleFileNameW(nullptr, buffer, MAX_PATH), 0u);
  EXPECT_NE(std::wstring(buffer).find(L"test_zelto_platform"), std::wstring::npos);
}

TEST(ModuleFileName, IsEmptyWhenItDoesNotFitOrIsNone) {
  const test::Module module;
  wchar_t buffer[4] = L"xxx";
  EXPECT_EQ(GetModuleFileNameW(module.handle(), buffer, 4), 0u);
  EXPECT_STREQ(buffer, L"");
  int no_module = 0;
  EXPECT_EQ(GetModuleFileNameW(&no_module, buffer, 4), 0u);
}

}  // namespace
