// What tests of activation have in common: a registry store of their own, and what the sample module reports.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <korlib/combstr.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/modules.h>
#include <korlib_host/registry_store.h>

#include "korlib/activation/sample_module.h"
#include "korlib/variant/default_object.h"
#include "support/temporary_folder.h"

namespace sample {

using Steps = std::vector<std::string>;

// What the module has reported since the last call.
Steps take_steps();
// Called at each step, on its thread, until the next call; empty for nothing.
void on_step(std::function<void(const std::string& step)> call);

}  // namespace sample

class ActivationTest : public testing::Test {
 protected:
  using ISample = sample::ISample;
  using Steps = sample::Steps;

  static constexpr DWORD kContext = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER;
  static constexpr CLSID kNowhere = korlib::guid("9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1EFF");

  void SetUp() override {
    store_ = std::make_shared<korlib_host::RegistryStore>(folder_.path() / "registry.json");
    korlib_host::set_registry(store_);
    SetErrorInfo(0, nullptr);
  }
  void TearDown() override {
    sample::on_step(nullptr);
    CoFreeUnusedLibraries();
    EXPECT_EQ(0u, korlib_host::open_modules());
    EXPECT_EQ(0, DefaultObject::alive());
    korlib_host::set_registry(nullptr);
    SetErrorInfo(0, nullptr);
    take_steps();
  }
  static Steps take_steps() { return sample::take_steps(); }
  static std::filesystem::path sample_file() { return SAMPLE_MODULE_PATH; }

  static std::wstring braced(REFCLSID clsid) {
    wchar_t text[39];
    StringFromGUID2(clsid, text, 39);
    return text;
  }
  // The words of the thread's error, taken; its source is in last_source_.
  std::wstring last_error() {
    last_source_.clear();
    CComPtr<IErrorInfo> error;
    if (GetErrorInfo(0, error.put()) != S_OK) return {};
    CComBSTR text;
    error->GetDescription(text.put());
    CComBSTR source;
    error->GetSource(source.put());
    last_source_ = source.view();
    return std::wstring(text.view());
  }

  void register_class(const std::wstring& prog_id, REFCLSID clsid, const std::wstring& path) {
    const std::wstring key = L"CLSID\\" + braced(clsid);
    EXPECT_EQ(S_OK, store_->create_key(prog_id + L"\\CLSID"));
    EXPECT_EQ(S_OK, store_->set_value(prog_id + L"\\CLSID", L"", braced(clsid)));
    EXPECT_EQ(S_OK, store_->create_key(key + L"\\InProcServer32"));
    EXPECT_EQ(S_OK, store_->set_value(key + L"\\InProcServer32", L"", path));
  }
  void register_sample() {
    register_class(L"Sample.First", sample::kFirst, sample_file().wstring());
    register_class(L"Sample.Second", sample::kSecond, sample_file().wstring());
    register_class(L"Sample.Unbound", sample::kUnbound, sample_file().wstring());
  }

  static LONG number_of(const CComPtr<ISample>& object) {
    LONG number = 0;
    EXPECT_EQ(S_OK, object->Number(&number));
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

  test::TemporaryFolder folder_;
  std::shared_ptr<korlib_host::RegistryStore> store_;
  std::wstring last_source_;
};
