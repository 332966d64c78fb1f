#include <korlib/activation.h>

#include <dlfcn.h>
#include <link.h>
#include <pthread.h>

#include <fstream>

#include <korlib_host/class_table.h>
#include <korlib_host/diagnostics.h>

#include "activation_test.h"

namespace {

constexpr CLSID kHostClass = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E10");

HRESULT create_host_object(REFIID riid, void** ppv) {
  const auto object = DefaultObject::holding({});
  return object->QueryInterface(riid, ppv);
}

const korlib_host::ClassRow kHostRows[] = {{kHostClass, L"Test.HostClass", create_host_object}};
const korlib_host::ClassRegistration kRegistration(kHostRows);

class Activation : public ActivationTest {};

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

// Whatever else is registered under their names.
TEST_F(Activation, PutsHostClassesFirst) {
  register_class(L"Test.HostClass", sample::kFirst, sample_file().wstring());
  CLSID clsid;
  EXPECT_EQ(CLSIDFromProgID(L"Test.HostClass", &clsid), S_OK);
  EXPECT_EQ(clsid, kHostClass);
  register_class(L"Other.Name", kHostClass, sample_file().wstring());
  CComPtr<IDispatch> object;
  EXPECT_EQ(CoCreateInstance(kHostClass, nullptr, kContext, IID_IDispatch, object.put_void()), S_OK);
  CComPtr<IClassFactory> factory;
  EXPECT_EQ(CoGetClassObject(kHostClass, kContext, nullptr, IID_IClassFactory, factory.put_void()), S_OK);
  EXPECT_EQ(take_steps(), Steps()) << "the module was opened";
}

TEST_F(Activation, TakesTheRowOfAHostClassThatCameLast) {
  constexpr CLSID kReplaced = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E11");
  const auto refuse = [](REFIID, void** ppv) {
    *ppv = nullptr;
    return HRESULT{E_ACCESSDENIED};
  };
  const korlib_host::ClassRow first[] = {{kReplaced, L"Test.Replaced", refuse}};
  const korlib_host::ClassRow second[] = {{kReplaced, L"Test.Other", create_host_object},
                                          {kHostClass, L"TEST.replaced", create_host_object}};
  korlib_host::register_classes(first);
  void* none = nullptr;
  EXPECT_EQ(CoCreateInstance(kReplaced, nullptr, kContext, IID_IUnknown, &none), E_ACCESSDENIED);
  korlib_host::register_classes(second);
  CComPtr<IUnknown> object;
  EXPECT_EQ(CoCreateInstance(kReplaced, nullptr, kContext, IID_IUnknown, object.put_void()), S_OK);
  CLSID clsid;
  EXPECT_EQ(CLSIDFromProgID(L"Test.Replaced", &clsid), S_OK);
  EXPECT_EQ(clsid, kHostClass);
}

TEST_F(Activation, OffersClassObjectsOfHostClasses) {
  const auto before = korlib_host::live_objects();
  {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(CoGetClassObject(kHostClass, kContext, nullptr, IID_IClassFactory, factory.put_void()), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    CComPtr<IUnknown> identity;
    EXPECT_EQ(factory->QueryInterface(IID_IUnknown, identity.put_void()), S_OK);
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
  EXPECT_EQ(last_source_, L"Activation");
}

// It is told neither that it is opened nor that it is closed: it never was a module.
TEST_F(Activation, RunsNoCodeOfALibraryThatIsNoComponent) {
  register_class(L"No.Component", kNowhere, std::filesystem::path(MAIN_ONLY_MODULE_PATH).wstring());
  CComPtr<ISample> object;
  EXPECT_EQ(create(L"No.Component", &object), CO_E_ERRORINDLL);
  EXPECT_EQ(take_steps(), Steps());
}

// That code may run when the module has nothing alive.
TEST_F(Activation, KeepsAModuleOpenWhileItsCodeRuns) {
  sample::on_step([](const std::string& step) {
    if (step == "register") CoFreeUnusedLibraries();
  });
  EXPECT_EQ(korlib_host::register_module(sample_file()), S_OK);
  EXPECT_EQ(take_steps(), (Steps{"attach", "register"}));
  EXPECT_EQ(korlib_host::open_modules(), 1u);
}

TEST_F(Activation, LetsAModuleUseAnotherWhileItIsOpened) {
  const auto other = folder_.path() / "other.so";
  std::filesystem::copy_file(sample_file(), other);
  register_sample();
  register_class(L"Sample.Second", sample::kSecond, other.wstring());
  LONG number = 0;
  bool is_outer = true;
  sample::on_step([&](const std::string& step) {
    if (step != "attach" || !std::exchange(is_outer, false)) return;
    CComPtr<ISample> second;
    EXPECT_EQ(create(sample::kSecond, &second), S_OK);
    number = second ? number_of(second) : 0;
  });
  CComPtr<ISample> first;
  EXPECT_EQ(create(sample::kFirst, &first), S_OK);
  EXPECT_EQ(number, 2);
  EXPECT_EQ(take_steps(), (Steps{"attach", "attach"}));
  EXPECT_EQ(korlib_host::open_modules(), 2u);
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
  void* none = &none;
  EXPECT_EQ(CoGetClassObject(sample::kSecond, kContext, nullptr, IID_IDispatch, &none), E_NOINTERFACE)
      << "the module that has the class is the one that answers";
  EXPECT_EQ(none, nullptr);
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
  char name[] = "/not/loaded";
  link_map looks_like_one{};
  looks_like_one.l_name = name;
  EXPECT_EQ(korlib_host::module_file(&looks_like_one), std::filesystem::path());
}

// Makes objects from deeper and deeper frames until one is refused.
HRESULT create_at_depth(int depth) {
  void* object = nullptr;
  const HRESULT hr = CoCreateInstance(kHostClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object);
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
