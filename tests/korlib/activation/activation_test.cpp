#include <korlib/activation.h>

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <fstream>

#include <korlib_host/class_table.h>
#include <korlib_host/diagnostics.h>

#include "base/thread.h"
#include "korlib/activation/activation_fixture.h"

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
    EXPECT_EQ(S_OK, CLSIDFromProgID(prog_id, &clsid));
    EXPECT_EQ(kHostClass, clsid);
  }
  CComPtr<IDispatch> object;
  EXPECT_EQ(S_OK, CoCreateInstance(kHostClass, nullptr, kContext, IID_IDispatch, object.put_void()));
  EXPECT_TRUE(object);
  EXPECT_EQ(1, DefaultObject::alive());
}

// Whatever else is registered under their names.
TEST_F(Activation, PutsHostClassesFirst) {
  register_class(L"Test.HostClass", sample::kFirst, sample_file().wstring());
  CLSID clsid;
  EXPECT_EQ(S_OK, CLSIDFromProgID(L"Test.HostClass", &clsid));
  EXPECT_EQ(kHostClass, clsid);
  register_class(L"Other.Name", kHostClass, sample_file().wstring());
  CComPtr<IDispatch> object;
  EXPECT_EQ(S_OK, CoCreateInstance(kHostClass, nullptr, kContext, IID_IDispatch, object.put_void()));
  CComPtr<IClassFactory> factory;
  EXPECT_EQ(S_OK, CoGetClassObject(kHostClass, kContext, nullptr, IID_IClassFactory, factory.put_void()));
  EXPECT_EQ(Steps(), take_steps()) << "the module was opened";
}

TEST_F(Activation, ListsTheProgIdsThatItKnows) {
  register_class(L"Registered.Here", sample::kFirst, sample_file().wstring());
  EXPECT_EQ(S_OK, store_->create_key(L"Not.A.Class\\Other"));
  const std::vector<std::wstring> all = korlib_host::prog_ids();
  for (const wchar_t* name : {L"Test.HostClass", L"Registered.Here"}) {
    EXPECT_EQ(1, std::ranges::count(all, name));
  }
  EXPECT_EQ(0, std::ranges::count(all, L"Not.A.Class"));
  EXPECT_EQ(0, std::ranges::count(all, L"CLSID"));
  EXPECT_TRUE(std::ranges::is_sorted(all));
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
  EXPECT_EQ(E_ACCESSDENIED, CoCreateInstance(kReplaced, nullptr, kContext, IID_IUnknown, &none));
  korlib_host::register_classes(second);
  CComPtr<IUnknown> object;
  EXPECT_EQ(S_OK, CoCreateInstance(kReplaced, nullptr, kContext, IID_IUnknown, object.put_void()));
  CLSID clsid;
  EXPECT_EQ(S_OK, CLSIDFromProgID(L"Test.Replaced", &clsid));
  EXPECT_EQ(kHostClass, clsid);
}

TEST_F(Activation, OffersClassObjectsOfHostClasses) {
  const auto before = korlib_host::live_objects();
  {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, CoGetClassObject(kHostClass, kContext, nullptr, IID_IClassFactory, factory.put_void()));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    CComPtr<IUnknown> identity;
    EXPECT_EQ(S_OK, factory->QueryInterface(IID_IUnknown, identity.put_void()));
    CComPtr<IDispatch> object;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IDispatch, object.put_void()));
    PlainObject outer;
    void* none = &none;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer, IID_IUnknown, &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(E_NOINTERFACE, CoGetClassObject(kHostClass, kContext, nullptr, IID_IDispatch, &none));
  }
  EXPECT_EQ(before, korlib_host::live_objects());
}

TEST_F(Activation, RefusesAggregationAndMissingInterfacesOfHostClasses) {
  PlainObject outer;
  void* none = &none;
  EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(kHostClass, &outer, kContext, IID_IUnknown, &none));
  EXPECT_EQ(nullptr, none);
  none = &none;
  EXPECT_EQ(E_NOINTERFACE, CoCreateInstance(kHostClass, nullptr, kContext, korlib::iid_of<ISample>, &none));
  EXPECT_EQ(nullptr, none);
}

TEST_F(Activation, SaysThatAClassIsNotThere) {
  void* none = &none;
  EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(kNowhere, nullptr, kContext, IID_IUnknown, &none));
  EXPECT_EQ(nullptr, none);
  none = &none;
  EXPECT_EQ(REGDB_E_CLASSNOTREG, CoGetClassObject(kNowhere, kContext, nullptr, IID_IUnknown, &none));
  EXPECT_EQ(nullptr, none);
  CLSID clsid = kNowhere;
  EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(L"No.Such.Class", &clsid));
  EXPECT_EQ(CLSID_NULL, clsid);
  EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(nullptr, &clsid));
  EXPECT_EQ(E_POINTER, CLSIDFromProgID(L"x", nullptr));
  EXPECT_EQ(E_POINTER, CoCreateInstance(kNowhere, nullptr, kContext, IID_IUnknown, nullptr));
  EXPECT_EQ(E_POINTER, CoGetClassObject(kNowhere, kContext, nullptr, IID_IUnknown, nullptr));
}

TEST_F(Activation, OpensTheRegisteredModuleOnFirstUse) {
  register_sample();
  EXPECT_EQ(Steps(), take_steps());
  {
    CComPtr<ISample> first;
    EXPECT_EQ(S_OK, create(L"Sample.First", &first));
    EXPECT_EQ(Steps{"attach"}, take_steps());  // that DllMain answered FALSE did not matter
    EXPECT_EQ(1, number_of(first));
    CComPtr<ISample> second;
    EXPECT_EQ(S_OK, create(L"sample.second", &second));
    EXPECT_EQ(2, number_of(second));
    EXPECT_EQ(Steps(), take_steps());
    EXPECT_EQ(1u, korlib_host::open_modules());
  }
}

TEST_F(Activation, ClosesAModuleOnceNothingOfItIsLeft) {
  register_sample();
  CComPtr<ISample> object;
  ASSERT_EQ(S_OK, create(sample::kFirst, &object));
  take_steps();
  CoFreeUnusedLibraries();
  EXPECT_EQ(1u, korlib_host::open_modules());
  object.reset();
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(S_OK, CoGetClassObject(sample::kFirst, kContext, nullptr, IID_IClassFactory, factory.put_void()));
  CoFreeUnusedLibraries();
  EXPECT_EQ(Steps(), take_steps());
  factory.reset();
  CoFreeUnusedLibraries();
  EXPECT_EQ(Steps{"detach"}, take_steps());
  EXPECT_EQ(0u, korlib_host::open_modules());
  EXPECT_EQ(nullptr, dlopen(SAMPLE_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD));
  ASSERT_EQ(S_OK, create(sample::kFirst, &object));  // and opens it again when it is needed
  EXPECT_EQ(Steps{"attach"}, take_steps());
}

TEST_F(Activation, LeavesTheObjectThatItsClassCouldNotBind) {
  register_sample();
  CComPtr<ISample> object;
  EXPECT_EQ(E_ABORT, create(L"Sample.Unbound", &object));
  ASSERT_TRUE(object);
  EXPECT_EQ(3, number_of(object));
}

TEST_F(Activation, ClearsThePointerWhenAModuleRefuses) {
  register_sample();
  PlainObject outer;
  void* none = &none;
  EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(sample::kFirst, &outer, kContext, IID_IUnknown, &none));
  EXPECT_EQ(nullptr, none);
  none = &none;
  EXPECT_EQ(E_NOINTERFACE, CoCreateInstance(sample::kFirst, nullptr, kContext, IID_IDispatch, &none));
  EXPECT_EQ(nullptr, none);
}

TEST_F(Activation, SaysWhichModuleCannotBeOpened) {
  register_class(L"Gone.Class", kNowhere, (folder_.path() / "gone.so").wstring());
  CComPtr<ISample> object;
  EXPECT_EQ(CO_E_DLLNOTFOUND, create(L"Gone.Class", &object));
  EXPECT_NE(std::wstring::npos, last_error().find(L"gone.so"));

  std::ofstream(folder_.path() / "text.so") << "no shared object";
  register_class(L"Gone.Class", kNowhere, (folder_.path() / "text.so").wstring());
  EXPECT_EQ(CO_E_DLLNOTFOUND, create(L"Gone.Class", &object));
  EXPECT_NE(std::wstring::npos, last_error().find(L"text.so"));
}

TEST_F(Activation, SaysThatALibraryIsNoComponent) {
  register_class(L"No.Component", kNowhere, L"libicuuc.so.72");
  CComPtr<ISample> object;
  EXPECT_EQ(CO_E_ERRORINDLL, create(L"No.Component", &object));
  EXPECT_EQ(L"libicuuc.so.72 is not a component: it does not export DllGetClassObject.", last_error());
  EXPECT_EQ(L"Activation", last_source_);
}

// It is told neither that it is opened nor that it is closed: it never was a module.
TEST_F(Activation, RunsNoCodeOfALibraryThatIsNoComponent) {
  register_class(L"No.Component", kNowhere, std::filesystem::path(MAIN_ONLY_MODULE_PATH).wstring());
  CComPtr<ISample> object;
  EXPECT_EQ(CO_E_ERRORINDLL, create(L"No.Component", &object));
  EXPECT_EQ(Steps(), take_steps());
}

// That code may run when the module has nothing alive.
TEST_F(Activation, KeepsAModuleOpenWhileItsCodeRuns) {
  sample::on_step([](const std::string& step) {
    if (step == "register") CoFreeUnusedLibraries();
  });
  EXPECT_EQ(S_OK, korlib_host::register_module(sample_file()));
  EXPECT_EQ((Steps{"attach", "register"}), take_steps());
  EXPECT_EQ(1u, korlib_host::open_modules());
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
    EXPECT_EQ(S_OK, create(sample::kSecond, &second));
    number = second ? number_of(second) : 0;
  });
  CComPtr<ISample> first;
  EXPECT_EQ(S_OK, create(sample::kFirst, &first));
  EXPECT_EQ(2, number);
  EXPECT_EQ((Steps{"attach", "attach"}), take_steps());
  EXPECT_EQ(2u, korlib_host::open_modules());
}

TEST_F(Activation, SeesARegistrationThatComesLater) {
  CComPtr<ISample> object;
  EXPECT_EQ(REGDB_E_CLASSNOTREG, create(sample::kFirst, &object));
  register_sample();
  EXPECT_EQ(S_OK, create(sample::kFirst, &object));
  EXPECT_EQ(S_OK, store_->delete_key(L"CLSID\\" + braced(sample::kFirst) + L"\\InProcServer32"));
  EXPECT_EQ(REGDB_E_CLASSNOTREG, create(sample::kFirst, &object));
}

TEST_F(Activation, PassesARegistrationToTheModule) {
  EXPECT_EQ(S_OK, korlib_host::register_module(sample_file()));
  EXPECT_EQ(E_ACCESSDENIED, korlib_host::unregister_module(sample_file()));
  EXPECT_EQ((Steps{"attach", "register", "unregister"}), take_steps());
  EXPECT_EQ(CO_E_DLLNOTFOUND, korlib_host::register_module(folder_.path() / "gone.so"));
}

TEST_F(Activation, AsksAModuleByBareClassName) {
  const struct {
    const wchar_t* name;
    LONG number;
  } cases[] = {{nullptr, 1}, {L"First", 1}, {L"Second", 2}};
  for (const auto& c : cases) {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK,
              korlib_host::get_class_object_by_name(sample_file(), c.name, IID_IClassFactory, factory.put_void()));
    CComPtr<ISample> object;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, korlib::iid_of<ISample>, object.put_void()));
    EXPECT_EQ(c.number, number_of(object));
  }
  void* none = &none;
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
            korlib_host::get_class_object_by_name(sample_file(), L"second", IID_IClassFactory, &none));
  EXPECT_EQ(nullptr, none);
  EXPECT_EQ(E_POINTER, korlib_host::get_class_object_by_name(sample_file(), L"First", IID_IClassFactory, nullptr));
}

// Modules that are found without being registered stay so until the process ends, so this is one test.
TEST_F(Activation, FindsAModuleThatIsNotRegistered) {
  korlib_host::add_unregistered_module(folder_.path() / "gone.so", {{L"Gone", L"First"}});
  korlib_host::add_unregistered_module(sample_file(), {{L"Bare", L"First"}, {L"Bare.Second", L"Second"}});
  CComPtr<ISample> object;
  ASSERT_EQ(S_OK, create(L"Bare", &object));
  EXPECT_EQ(1, number_of(object));
  ASSERT_EQ(S_OK, create(L"BARE.second", &object));
  EXPECT_EQ(2, number_of(object));
  void* none = &none;
  EXPECT_EQ(E_NOINTERFACE, CoGetClassObject(sample::kSecond, kContext, nullptr, IID_IDispatch, &none))
      << "the module that has the class is the one that answers";
  EXPECT_EQ(nullptr, none);
  // By identifier as well, past the module that is not there, and without a trace of it.
  ASSERT_EQ(S_OK, create(sample::kSecond, &object));
  EXPECT_EQ(2, number_of(object));
  EXPECT_EQ(REGDB_E_CLASSNOTREG, create(kNowhere, &object));
  EXPECT_EQ(L"", last_error());
  EXPECT_EQ(CO_E_DLLNOTFOUND, create(L"Gone", &object));
  EXPECT_NE(std::wstring::npos, last_error().find(L"gone.so"));
  // What is registered comes first.
  register_class(L"Bare", sample::kSecond, sample_file().wstring());
  ASSERT_EQ(S_OK, create(L"Bare", &object));
  EXPECT_EQ(2, number_of(object));
  EXPECT_EQ(1, std::ranges::count(korlib_host::prog_ids(), L"Bare.Second"));
}

TEST_F(Activation, KnowsTheFileOfAModule) {
  void* const handle = dlopen(SAMPLE_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, handle);
  EXPECT_TRUE(std::filesystem::equivalent(korlib_host::module_file(handle), sample_file()));
  dlclose(handle);
  EXPECT_EQ(std::filesystem::path(), korlib_host::module_file(nullptr));
  int no_handle = 0;
  EXPECT_EQ(std::filesystem::path(), korlib_host::module_file(&no_handle));
  char name[] = "/not/loaded";
  link_map looks_like_one{};
  looks_like_one.l_name = name;
  EXPECT_EQ(std::filesystem::path(), korlib_host::module_file(&looks_like_one));
}

// Makes objects from deeper and deeper frames until one is refused.
HRESULT create_at_depth(int depth) {
  void* object = nullptr;
  const HRESULT hr = CoCreateInstance(kHostClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object);
  if (FAILED(hr)) return hr;
  static_cast<IUnknown*>(object)->Release();
  if (depth == 0) return S_OK;
  volatile HRESULT below = create_at_depth(depth - 1);  // read again, so that this does not become a tail call
  return below;
}

TEST_F(Activation, RefusesBeforeTheStackIsUsedUp) {
  HRESULT hr = S_OK;
  std::wstring description;
  base::run_on_thread(std::size_t{2} << 20, [&] {
    hr = create_at_depth(100'000);
    description = last_error();
  });
  EXPECT_EQ(korlib::hresult(0x800A001C), hr);
  EXPECT_EQ(L"Out of stack space.", description);
}

}  // namespace
