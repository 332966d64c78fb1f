// libmirt.so as a host sees it: opened by path, attached, asked for class objects.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include <korlib/activation.h>
#include <korlib/dispatch.h>
#include <korlib/ptr.h>

namespace test {

// The module between its loading and its unloading. Each object opens it anew, so one at a time gives a
// module in its first state. Everything taken from it must be released before it goes.
class Module {
 public:
  Module();   // opens and attaches; a module that can't be opened ends the test program
  ~Module();  // detaches and closes
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  int attached() const { return attached_; }  // what DllMain answered
  void* handle() const { return handle_; }

  // An exported function or variable.
  template <class Symbol>
  Symbol* symbol(const char* name) const {
    return reinterpret_cast<Symbol*>(find(name));
  }

  // DllGetClassObject with an identifier, or with a bare name (null for the first class).
  HRESULT class_object(REFCLSID clsid, IClassFactory** factory) const;
  HRESULT class_object(const wchar_t* name, IClassFactory** factory) const;

  // A new object of the class of that bare name; a failure fails the test and gives null.
  template <class Interface = IDispatch>
  CComPtr<Interface> create(const wchar_t* name) const {
    CComPtr<IClassFactory> factory;
    CComPtr<Interface> object;
    EXPECT_EQ(S_OK, class_object(name, factory.put()));
    if (factory) {
      EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, korlib::iid_of<Interface>, object.put_void()));
    }
    return object;
  }

  // Objects and class-object references that are alive.
  long count() const { return *symbol<long>("g_nRefCount"); }
  bool can_unload() const { return symbol<HRESULT()>("DllCanUnloadNow")() == S_OK; }

 private:
  void* find(const char* name) const;

  void* handle_ = nullptr;
  int attached_ = 0;
};

// Tests of the module: opened before each test; after it nothing of it may be alive.
class ModuleTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(0, module_.count()) << "an object or class object is still held"; }

  Module module_;
};

// The name of a file in the folder of the build's programs and modules.
std::string built_file(const char* name);

}  // namespace test
