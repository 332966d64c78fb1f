// The module's entry points, class objects and pools, on a host that supplies only the runtime.
#include <mirt/mirt.h>

#include <cwchar>
#include <vector>

#include <korlib/typeinfo.h>

#include "support/late_bound.h"
#include "support/module.h"

namespace test {
namespace {

using EntryPoints = ModuleTest;

TEST_F(EntryPoints, AClassIsFoundByIdentifierAndByName) {
  const struct {
    const char* clsid;
    const wchar_t* name;
    const char* object;
  } rows[] = {
      {"CLSID_Mirt", L"Mirt", "g_oCF_Mirt"},
      {"CLSID_TextTemplator", L"TextTemplator", "g_oCF_TextTemplator"},
      {"CLSID_Utility", L"Utility", "g_oCF_Utility"},
  };
  for (const auto& row : rows) {
    CComPtr<IClassFactory> by_identifier;
    CComPtr<IClassFactory> by_name;
    EXPECT_EQ(S_OK, module_.class_object(*module_.symbol<const CLSID>(row.clsid), by_identifier.put()));
    EXPECT_EQ(S_OK, module_.class_object(row.name, by_name.put()));
    EXPECT_EQ(by_identifier.get(), by_name.get());
    EXPECT_EQ(static_cast<void*>(by_name.get()), module_.symbol<void>(row.object));
  }
}

TEST_F(EntryPoints, WithoutANameTheFirstClassIsMeant) {
  for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L""}) {
    CComPtr<IClassFactory> object;
    EXPECT_EQ(S_OK, module_.class_object(name, object.put()));
    EXPECT_EQ(static_cast<void*>(object.get()), module_.symbol<void>("g_oCF_Mirt"));
  }
}

TEST_F(EntryPoints, UnknownClassesAreRefused) {
  for (const wchar_t* name : {L"utility", L"UTILITY", L"Mirt.Utility", L"MirtedTemplator", L" Mirt", L"Mirt "}) {
    IClassFactory* object = nullptr;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, module_.class_object(name, &object));
    EXPECT_EQ(nullptr, object);
  }
  auto* object = reinterpret_cast<IClassFactory*>(&module_);
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, module_.class_object(korlib::iid_of<IMirt>, &object));
  EXPECT_EQ(nullptr, object);
}

TEST_F(EntryPoints, ClassObjectsAnswerToTwoInterfaces) {
  const auto get = module_.symbol<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject");
  CComPtr<IUnknown> unknown;
  EXPECT_EQ(S_OK, get(*module_.symbol<const CLSID>("CLSID_Utility"), IID_IUnknown, unknown.put_void()));
  void* none = &module_;
  EXPECT_EQ(E_NOINTERFACE, get(*module_.symbol<const CLSID>("CLSID_Utility"), IID_IDispatch, &none));
  EXPECT_EQ(nullptr, none);
  none = &module_;
  EXPECT_EQ(E_NOINTERFACE, unknown->QueryInterface(korlib::iid_of<IMirt>, &none));
  EXPECT_EQ(nullptr, none);
  EXPECT_EQ(E_POINTER, unknown->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(EntryPoints, TheModuleStaysWhileAnythingIsHeld) {
  auto* const can_unload_now = module_.symbol<HRESULT()>("DllCanUnloadNow");
  EXPECT_EQ(S_OK, can_unload_now());
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(S_OK, module_.class_object(L"Utility", factory.put()));
  EXPECT_EQ(1, module_.count());
  EXPECT_EQ(S_FALSE, can_unload_now());
  EXPECT_EQ(2u, factory->AddRef());
  EXPECT_EQ(1u, factory->Release());

  CComPtr<IDispatch> object;
  ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  factory.reset();
  EXPECT_EQ(1, module_.count());
  EXPECT_EQ(S_FALSE, can_unload_now());
  EXPECT_EQ(2u, object->AddRef());  // of the object, not of the module
  EXPECT_EQ(1, module_.count());
  EXPECT_EQ(1u, object->Release());
  object.reset();
  EXPECT_EQ(S_OK, can_unload_now());
}

TEST_F(EntryPoints, LockingAClassObjectDoesNothing) {
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(S_OK, module_.class_object(L"Utility", factory.put()));
  EXPECT_EQ(S_OK, factory->LockServer(TRUE));
  EXPECT_EQ(1, module_.count());
  EXPECT_EQ(S_OK, factory->LockServer(FALSE));
}

TEST_F(EntryPoints, ObjectsAreMadeAloneAndForTheirInterfaces) {
  for (const wchar_t* name : {L"Utility", L"TextTemplator", L"Mirt"}) {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, module_.class_object(name, factory.put()));
    void* object = &module_;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.get(), IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);
    object = &module_;
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IUnknown, nullptr));
    EXPECT_EQ(1, module_.count()) << "a failed query destroys the object";
  }
}

TEST_F(EntryPoints, AnObjectHasOneAddress) {
  CComPtr<IUtility> utility = module_.create<IUtility>(L"Utility");
  CComPtr<IDispatch> dispatch;
  CComPtr<IUnknown> unknown;
  EXPECT_EQ(S_OK, utility.query(dispatch.put()));
  EXPECT_EQ(S_OK, utility.query(unknown.put()));
  EXPECT_EQ(static_cast<void*>(utility.get()), static_cast<void*>(dispatch.get()));
  EXPECT_EQ(static_cast<void*>(utility.get()), static_cast<void*>(unknown.get()));
  void* other = &module_;
  EXPECT_EQ(E_NOINTERFACE, utility->QueryInterface(korlib::iid_of<IMirt>, &other));
  EXPECT_EQ(nullptr, other);

  UINT count = 7;
  EXPECT_EQ(S_OK, utility->GetTypeInfoCount(&count));
  EXPECT_EQ(1u, count);
  EXPECT_EQ(S_OK, utility->GetTypeInfoCount(nullptr));
  for (const UINT index : {0u, 1u, 99u}) {
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(S_OK, utility->GetTypeInfo(index, 0, info.put()));
    EXPECT_EQ(*module_.symbol<ITypeInfo*>("g_pTI_IUtility"), info.get());
  }
  EXPECT_EQ(E_POINTER, utility->GetTypeInfo(0, 0, nullptr));
}

TEST_F(EntryPoints, APageObjectOutsideOfARequestIsToldSoAndComesAllTheSame) {
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(S_OK, module_.class_object(L"Mirt", factory.put()));
  CComPtr<IDispatch> object;
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, factory->CreateInstance(nullptr, IID_IDispatch, object.put_void()));
  EXPECT_TRUE(object);
  EXPECT_EQ(2, module_.count());
}

// The last block given back is the first one taken.
TEST_F(EntryPoints, MemoryOfReleasedObjectsIsUsedAgain) {
  for (const wchar_t* name : {L"Utility", L"TextTemplator"}) {
    CComPtr<IDispatch> object = module_.create(name);
    const IDispatch* const address = object.get();
    object.reset();
    object = module_.create(name);
    EXPECT_EQ(address, object.get());
    object.reset();

    std::vector<CComPtr<IDispatch>> three;
    for (int i = 0; i < 3; ++i) three.push_back(module_.create(name));
    const std::vector<IDispatch*> addresses = {three[0].get(), three[1].get(), three[2].get()};
    for (CComPtr<IDispatch>& each : three) each.reset();
    for (std::size_t i = 0; i < 3; ++i) {
      three[i] = module_.create(name);
      EXPECT_EQ(addresses[2 - i], three[i].get());
    }
  }
}

TEST_F(EntryPoints, BlocksOfOneClassServeNoOther) {
  CComPtr<IDispatch> utility = module_.create(L"Utility");
  const void* const address = utility.get();
  utility.reset();
  CComPtr<IDispatch> templator = module_.create(L"TextTemplator");
  EXPECT_NE(address, templator.get());
}

TEST_F(EntryPoints, AttachingWithoutTypeLibrariesIsFalseAndHarmless) {
  EXPECT_EQ(FALSE, module_.attached());
  EXPECT_EQ(module_.handle(), *module_.symbol<void*>("g_hDLL"));
  EXPECT_EQ(0, *module_.symbol<wchar_t>("g_aDLLPath"));
  EXPECT_EQ(L"x", text_of(call(module_.create(L"Utility").get(), L"Trim", L" x ")));
}

TEST_F(EntryPoints, OtherReasonsAreTrue) {
  const auto main = module_.symbol<int(void*, unsigned int, void*)>("DllMain");
  for (const unsigned int reason : {2u, 3u, 99u}) EXPECT_EQ(TRUE, main(module_.handle(), reason, nullptr));
}

TEST_F(EntryPoints, DetachingKeepsTheTypeInformation) {
  CComPtr<IDispatch> utility = module_.create(L"Utility");
  EXPECT_EQ(TRUE, module_.symbol<int(void*, unsigned int, void*)>("DllMain")(module_.handle(), 0, nullptr));
  EXPECT_EQ(L"x", text_of(call(utility.get(), L"Trim", L" x ")));
}

// Without a store of its own the host's registry accepts everything.
TEST_F(EntryPoints, RegistrationSucceedsWhereThereIsNoRegistry) {
  EXPECT_EQ(S_OK, module_.symbol<HRESULT()>("DllRegisterServer")());
  EXPECT_EQ(S_OK, module_.symbol<HRESULT()>("DllUnregisterServer")());
}

TEST_F(EntryPoints, IdentifiersAreTheDocumentedOnes) {
  const struct {
    const char* name;
    GUID value;
  } rows[] = {
      {"CLSID_Mirt", korlib::guid("717FA104-3BC5-4B9E-8112-106B75FD22C4")},
      {"CLSID_TextTemplator", korlib::guid("6F026685-9E59-4111-9964-05B121FFD6EB")},
      {"CLSID_Utility", korlib::guid("97F90828-1121-4EF7-98B3-75F95DABFDEB")},
      {"IID_IMirt", korlib::guid("A3B7006E-AE12-46B5-A908-98133BA64CF1")},
      {"IID_IMirtedTemplator", korlib::guid("FBB21FA5-D144-4303-AA67-323AEE297098")},
      {"IID_IFormFile", korlib::guid("B7B7E305-18A2-4190-9BF6-2E7172F8C03A")},
      {"IID_ITextTemplator", korlib::guid("54709AC5-EFD1-4D7E-A2E9-378EBFB3FF17")},
      {"IID_IUtility", korlib::guid("1C042E3B-E315-4D29-992F-4851DDF01EF1")},
  };
  for (const auto& row : rows) EXPECT_TRUE(row.value == *module_.symbol<const GUID>(row.name)) << row.name;
}

}  // namespace
}  // namespace test
