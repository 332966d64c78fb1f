#include <korlib/activation.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <pthread.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include <korlib/combstr.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/class_table.h>
#include <korlib_host/diagnostics.h>
#include <korlib_host/modules.h>
#include <korlib_host/registry_store.h>

#include "default_object.h"
#include "sample_module.h"
#include "temporary_folder.h"

namespace {

std::mutex steps_lock;
std::vector<std::string> steps;

using sample::ISample;
using Steps = std::vector<std::string>;

constexpr DWORD kContext = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER;
constexpr CLSID kNowhere = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1EFF");
constexpr CLSID kHostClass = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E10");

std::filesystem::path sample_file() { return SAMPLE_MODULE_PATH; }

HRESULT create_host_object(REFIID riid, void** ppv) {
  const auto object = DefaultObject::holding({});
  return object->QueryInterface(riid, ppv);
}

const korlib_host::ClassRow kHostRows[] = {{kHostClass, L"Test.HostClass", create_host_object}};
const korlib_host::ClassRegistration kRegistration(kHostRows);

std::wstring braced(REFCLSID clsid) {
  wchar_t text[39];
  StringFromGUID2(clsid, text, 39);
  return text;
}

std::wstring last_error() {
  CComPtr<IErrorInfo> error;
  if (GetErrorInfo(0, error.put()) != S_OK) return {};
  CComBSTR text;
  error->GetDescription(text.put());
  return std::wstring(text.view());
}

class Activation : public testing::Test {
 protected:
  void SetUp() override {
    store_ = std::make_shared<korlib_host::RegistryStore>(folder_.path() / "registry.json");
    korlib_host::set_registry(store_);
    SetErrorInfo(0, nullptr);
  }
  void TearDown() override {
    CoFreeUnusedLibraries();
    EXPECT_EQ(korlib_host::open_modules(), 0u);
    EXPECT_EQ(DefaultObject::alive(), 0);
    korlib_host::set_registry(nullptr);
    SetErrorInfo(0, nullptr);
    take_steps();
  }
  static Steps take_steps() {
    const std::lock_guard guard(steps_lock);
    return std::exchange(steps, {});
  }

  void register_class(const std::wstring& prog_id, REFCLSID clsid, const std::wstring& path) {
    const std::wstring key = L"CLSID\\" + braced(clsid);
    EXPECT_EQ(store_->create_key(prog_id + L"\\CLSID"), S_OK);
    EXPECT_EQ(store_->set_value(prog_id + L"\\CLSID", L"", braced(clsid)), S_OK);
    EXPECT_EQ(store_->create_key(key + L"\\InProcServer32"), S_OK);
    EXPECT_EQ(store_->set_value(key + L"\\InProcServer32", L"", path), S_OK);
  }
  void register_sample() {
    register_class(L"Sample.First", sample::kFirst, sample_file().wstring());
    register_class(L"Sample.Second", sample::kSecond, sample_file().wstring());
    register_class(L"Sample.Unbound", sample::kUnbound, sample_file().wstring());
  }

  static LONG number_of(const CComPtr<ISample>& object) {
    LONG number = 0;
    EXPECT_EQ(object->Number(&number), S_OK);
    return number;
  }
  static HRESULT create(REFCLSID clsid, CComPtr<ISample>* object) {
    return CoCreateInstance(clsid, nullptr, kContext, korlib::iid_of<ISample>, object->put_void());
  }
  static HRESULT create(const wchar_t* prog_id, CComPtr<ISample>* object) {
    CLSID clsid;
    RETURN_IF_FAILED(CLSIDFromProgID(prog_id, &clsid));
    return create(clsid, object);
  }

  TemporaryFolder folder_;
  std::shared_ptr<korlib_host::RegistryStore> store_;
};

TEST_F(Activation, FindsHostClassesByIdentifierAndProgId) {
  CLSID clsid;
  for (const wchar_t* prog_id : {L"Test.HostClass", L"test.hostclass", L"TEST.HOSTCLASS"}) {
    EXPECT_EQ(CLSIDFromProgID(prog_id, &clsid), S_OK);
    EXPECT_EQ(clsid, kHostClass);
  }
  CComPtr<IDispatch> object;
  EXPECT_EQ(CoCreateInstance(kHostClass, nullptr, kContext, IID_IDispatch, object.put_void()), S_OK);
  EXPECT_TRUE(object);
  EXPECT_EQ(DefaultObject::alive(), 1);
}

TEST_F(Activation, OffersClassObjectsOfHostClasses) {
  const auto before = korlib_host::live_objects();
  {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(CoGetClassObject(kHostClass, kContext, nullptr, IID_IClassFactory, factory.put_void()), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    CComPtr<IDispatch> object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, object.put_void()), S_OK);
    PlainObject outer;
    void* none = &none;
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IUnknown, &none), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(CoGetClassObject(kHostClass, kContext, nullptr, IID_IDispatch, &none), E_NOINTERFACE);
  }
  EXPECT_EQ(korlib_host::live_objects(), before);
}

TEST_F(Activation, RefusesAggregationAndMissingInterfacesOfHostClasses) {
  PlainObject outer;
  void* none = &none;
  EXPECT_EQ(CoCreateInstance(kHostClass, &outer, kContext, IID_IUnknown, &none), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(none, nullptr);
  none = &none;
  EXPECT_EQ(CoCreateInstance(kHostClass, nullptr, kContext, korlib::iid_of<ISample>, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
}

TEST_F(Activation, SaysThatAClassIsNotThere) {
  void* none = &none;
  EXPECT_EQ(CoCreateInstance(kNowhere, nullptr, kContext, IID_IUnknown, &none), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(none, nullptr);
  none = &none;
  EXPECT_EQ(CoGetClassObject(kNowhere, kContext, nullptr, IID_IUnknown, &none), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(none, nullptr);
  CLSID clsid = kNowhere;
  EXPECT_EQ(CLSIDFromProgID(L"No.Such.Class", &clsid), CO_E_CLASSSTRING);
  EXPECT_EQ(clsid, CLSID_NULL);
  EXPECT_EQ(CLSIDFromProgID(nullptr, &clsid), CO_E_CLASSSTRING);
  EXPECT_EQ(CLSIDFromProgID(L"x", nullptr), E_POINTER);
  EXPECT_EQ(CoCreateInstance(kNowhere, nullptr, kContext, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(CoGetClassObject(kNowhere, kContext, nullptr, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(Activation, OpensTheRegisteredModuleOnFirstUse) {
  register_sample();
  EXPECT_EQ(take_steps(), Steps());
  {
    CComPtr<ISample> first;
    EXPECT_EQ(create(L"Sample.First", &first), S_OK);
    EXPECT_EQ(take_steps(), Steps{"attach"});  // that DllMain answered FALSE did not matter
    EXPECT_EQ(number_of(first), 1);
    CComPtr<ISample> second;
    EXPECT_EQ(create(L"sample.second", &second), S_OK);
    EXPECT_EQ(number_of(second), 2);
    EXPECT_EQ(take_steps(), Steps());
    EXPECT_EQ(korlib_host::open_modules(), 1u);
  }
}

TEST_F(Activation, ClosesAModuleOnceNothingOfItIsLeft) {
  register_sample();
  CComPtr<ISample> object;
  ASSERT_EQ(create(sample::kFirst, &object), S_OK);
  take_steps();
  CoFreeUnusedLibraries();
  EXPECT_EQ(korlib_host::open_modules(), 1u);
  object.reset();
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(CoGetClassObject(sample::kFirst, kContext, nullptr, IID_IClassFactory, factory.put_void()), S_OK);
  CoFreeUnusedLibraries();
  EXPECT_EQ(take_steps(), Steps());
  factory.reset();
  CoFreeUnusedLibraries();
  EXPECT_EQ(take_steps(), Steps{"detach"});
  EXPECT_EQ(korlib_host::open_modules(), 0u);
  EXPECT_EQ(dlopen(SAMPLE_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr);
  ASSERT_EQ(create(sample::kFirst, &object), S_OK);  // and opens it again when it is needed
  EXPECT_EQ(take_steps(), Steps{"attach"});
}

TEST_F(Activation, LeavesTheObjectThatItsClassCouldNotBind) {
  register_sample();
  CComPtr<ISample> object;
  EXPECT_EQ(create(L"Sample.Unbound", &object), E_ABORT);
  ASSERT_TRUE(object);
  EXPECT_EQ(number_of(object), 3);
}

TEST_F(Activation, ClearsThePointerWhenAModuleRefuses) {
  register_sample();
  PlainObject outer;
  void* none = &none;
  EXPECT_EQ(CoCreateInstance(sample::kFirst, &outer, kContext, IID_IUnknown, &none), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(none, nullptr);
  none = &none;
  EXPECT_EQ(CoCreateInstance(sample::kFirst, nullptr, kContext, IID_IDispatch, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
}

TEST_F(Activation, SaysWhichModuleCannotBeOpened) {
  register_class(L"Gone.Class", kNowhere, (folder_.path() / "gone.so").wstring());
  CComPtr<ISample> object;
  EXPECT_EQ(create(L"Gone.Class", &object), CO_E_DLLNOTFOUND);
  EXPECT_NE(last_error().find(L"gone.so"), std::wstring::npos);

  std::ofstream(folder_.path() / "text.so") << "no shared object";
  register_class(L"Gone.Class", kNowhere, (folder_.path() / "text.so").wstring());
  EXPECT_EQ(create(L"Gone.Class", &object), CO_E_DLLNOTFOUND);
  EXPECT_NE(last_error().find(L"text.so"), std::wstring::npos);
}

TEST_F(Activation, SaysThatALibraryIsNoComponent) {
  register_class(L"No.Component", kNowhere, L"libicuuc.so.72");
  CComPtr<ISample> object;
  EXPECT_EQ(create(L"No.Component", &object), CO_E_ERRORINDLL);
  EXPECT_EQ(last_error(), L"libicuuc.so.72 is no component: it does not export DllGetClassObject.");
}

TEST_F(Activation, SeesARegistrationThatComesLater) {
  CComPtr<ISample> object;
  EXPECT_EQ(create(sample::kFirst, &object), REGDB_E_CLASSNOTREG);
  register_sample();
  EXPECT_EQ(create(sample::kFirst, &object), S_OK);
  EXPECT_EQ(store_->delete_key(L"CLSID\\" + braced(sample::kFirst) + L"\\InProcServer32"), S_OK);
  EXPECT_EQ(create(sample::kFirst, &object), REGDB_E_CLASSNOTREG);
}

TEST_F(Activation, PassesARegistrationToTheModule) {
  EXPECT_EQ(korlib_host::register_module(sample_file()), S_OK);
  EXPECT_EQ(korlib_host::unregister_module(sample_file()), E_ACCESSDENIED);
  EXPECT_EQ(take_steps(), (Steps{"attach", "register", "unregister"}));
  EXPECT_EQ(korlib_host::register_module(folder_.path() / "gone.so"), CO_E_DLLNOTFOUND);
}

TEST_F(Activation, AsksAModuleByBareClassName) {
  const struct {
    const wchar_t* name;
    LONG number;
  } cases[] = {{nullptr, 1}, {L"First", 1}, {L"Second", 2}};
  for (const auto& c : cases) {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(korlib_host::get_class_object_by_name(sample_file(), c.name, IID_IClassFactory, factory.put_void()),
              S_OK);
    CComPtr<ISample> object;
    EXPECT_EQ(factory->CreateInstance(nullptr, korlib::iid_of<ISample>, object.put_void()), S_OK);
    EXPECT_EQ(number_of(object), c.number);
  }
  void* none = &none;
  EXPECT_EQ(korlib_host::get_class_object_by_name(sample_file(), L"second", IID_IClassFactory, &none),
            CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(korlib_host::get_class_object_by_name(sample_file(), L"First", IID_IClassFactory, nullptr), E_POINTER);
}

// Modules that are found without being registered stay so until the process ends, so this is one test.
TEST_F(Activation, FindsAModuleThatIsNotRegistered) {
  korlib_host::add_unregistered_module(folder_.path() / "gone.so", {{L"Gone", L"First"}});
  korlib_host::add_unregistered_module(sample_file(), {{L"Bare", L"First"}, {L"Bare.Second", L"Second"}});
  CComPtr<ISample> object;
  ASSERT_EQ(create(L"Bare", &object), S_OK);
  EXPECT_EQ(number_of(object), 1);
  ASSERT_EQ(create(L"BARE.second", &object), S_OK);
  EXPECT_EQ(number_of(object), 2);
  // By identifier as well, past the module that is not there, and without a trace of it.
  ASSERT_EQ(create(sample::kSecond, &object), S_OK);
  EXPECT_EQ(number_of(object), 2);
  EXPECT_EQ(create(kNowhere, &object), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(last_error(), L"");
  EXPECT_EQ(create(L"Gone", &object), CO_E_DLLNOTFOUND);
  EXPECT_NE(last_error().find(L"gone.so"), std::wstring::npos);
  // What is registered comes first.
  register_class(L"Bare", sample::kSecond, sample_file().wstring());
  ASSERT_EQ(create(L"Bare", &object), S_OK);
  EXPECT_EQ(number_of(object), 2);
}

TEST_F(Activation, KnowsTheFileOfAModule) {
  void* const handle = dlopen(SAMPLE_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(handle, nullptr);
  EXPECT_TRUE(std::filesystem::equivalent(korlib_host::module_file(handle), sample_file()));
  dlclose(handle);
  EXPECT_EQ(korlib_host::module_file(nullptr), std::filesystem::path());
  int no_handle = 0;
  EXPECT_EQ(korlib_host::module_file(&no_handle), std::filesystem::path());
}

// Makes objects from deeper and deeper frames until one is refused.
HRESULT create_at_depth(int depth) {
  void* object = nullptr;
  const HRESULT hr = CoCreateInstance(kHostClass, nullptr, kContext, IID_IUnknown, &object);
  if (FAILED(hr)) return hr;
  static_cast<IUnknown*>(object)->Release();
  if (depth == 0) return S_OK;
  volatile HRESULT below = create_at_depth(depth - 1);  // read again, so that this is no tail call
  return below;
}

TEST_F(Activation, RefusesBeforeTheStackIsUsedUp) {
  HRESULT hr = S_OK;
  std::wstring description;
  const auto run = [&] {
    hr = create_at_depth(100'000);
    description = last_error();
  };
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 2 << 20), 0);
  pthread_t thread;
  const auto start = [](void* function) -> void* {
    (*static_cast<decltype(run)*>(function))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, start, const_cast<void*>(static_cast<const void*>(&run))), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(hr, korlib::hresult(0x800A001C));
  EXPECT_EQ(description, L"Out of stack space.");
}

}  // namespace

void sample_step(const char* step) {
  const std::lock_guard guard(steps_lock);
  steps.emplace_back(step);
}
