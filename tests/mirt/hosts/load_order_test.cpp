// The order in which the module's process-wide objects come and go. Each of those that are built at load
// has a lock, and this host's locks write down whose they are.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <korlib/plain_typeinfo.h>
#include <korlib/winapi.h>

#include "support/module.h"

namespace test {
namespace {

using Names = std::vector<std::string>;

struct Order {
  Names built;
  Names destroyed;
  bool had_type_information = true;  // each time one was built
};
Order* order = nullptr;  // of a test that looks

// What the module exports at an address within it.
std::string name_at(const void* address) {
  Dl_info info{};
  return dladdr(address, &info) && info.dli_sname ? info.dli_sname : "<no name>";
}

// Whether the module, which is being loaded, has its type information.
bool has_type_information() {
  void* module = dlopen(MIRT_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
  if (!module) return false;
  bool has_all = true;
  for (const char* name : {"g_pTI_IMirt", "g_pTI_IMirtedTemplator", "g_pTI_IFormFile", "g_pTI_ITextTemplator",
                           "g_pTI_IUtility", "g_pTI_IStringList", "g_pTI_IRequestDictionary"}) {
    has_all = has_all && *static_cast<void**>(dlsym(module, name)) != nullptr;
  }
  dlclose(module);
  return has_all;
}

}  // namespace
}  // namespace test

void InitializeCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_init(section, nullptr);
  if (!test::order) return;
  test::order->built.push_back(test::name_at(section));
  test::order->had_type_information = test::order->had_type_information && test::has_type_information();
}
void DeleteCriticalSection(CRITICAL_SECTION* section) {
  if (test::order) test::order->destroyed.push_back(test::name_at(section));
  pthread_mutex_destroy(section);
}
void EnterCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_lock(section); }
void LeaveCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(section); }

namespace test {
namespace {

class LoadOrder : public testing::Test {
 protected:
  void SetUp() override { order = &order_; }
  void TearDown() override { order = nullptr; }

  const Names expected_ = {"g_oTemplateCache",
                           "g_oCF_Mirt",
                           "g_oCF_MirtedTemplator",
                           "g_oCF_FormFile",
                           "g_oCF_MultipartFormStringList",
                           "g_oCF_MultipartForm",
                           "g_oCF_TextTemplator",
                           "g_oCF_Utility"};
  Order order_;
};

TEST_F(LoadOrder, ObjectsAreBuiltInIt) {
  const Module module;
  EXPECT_EQ(expected_, order_.built);
  EXPECT_TRUE(order_.had_type_information) << "it is set before any of them";
  EXPECT_EQ(Names(), order_.destroyed);
}

// Writes down when it is let go of.
class TypeInformation final : public korlib::PlainTypeInfo {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ITypeInfo, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override {
    order->destroyed.push_back(name);
    return 1;
  }
  HRESULT GetIDsOfNames(LPOLESTR*, UINT, MEMBERID*) override { return E_NOTIMPL; }
  HRESULT Invoke(void*, MEMBERID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override { return E_NOTIMPL; }

  std::string name;
};

// At the unloading, when the last object has gone that might ask it, the type information goes too.
TEST_F(LoadOrder, ObjectsGoInItsReverseAndTypeInformationBehindThem) {
  const char* const slots[] = {
      "g_pTI_IMirt",    "g_pTI_IMirtedTemplator", "g_pTI_IFormFile",         "g_pTI_ITextTemplator",
      "g_pTI_IUtility", "g_pTI_IStringList",      "g_pTI_IRequestDictionary"};
  TypeInformation informations[std::size(slots)];
  auto module = std::make_unique<Module>();
  Names expected(expected_.rbegin(), expected_.rend());
  const Names detached(std::begin(slots), std::end(slots));
  expected.insert(expected.begin(), detached.begin(), detached.end());
  expected.insert(expected.end(), detached.begin(), detached.end());
  for (std::size_t i = 0; i < std::size(slots); ++i) {
    informations[i].name = slots[i];
    *module->symbol<ITypeInfo*>(slots[i]) = &informations[i];
  }
  module.reset();
  EXPECT_EQ(expected, order_.destroyed);
}

// A host may have taken one out.
TEST_F(LoadOrder, TypeInformationThatIsNotThereIsPassedOver) {
  auto module = std::make_unique<Module>();
  for (const char* slot : {"g_pTI_IMirt", "g_pTI_IUtility", "g_pTI_IRequestDictionary"}) {
    *module->symbol<ITypeInfo*>(slot) = nullptr;
  }
  module.reset();
  EXPECT_EQ(Names(expected_.rbegin(), expected_.rend()), order_.destroyed);
}

}  // namespace
}  // namespace test
