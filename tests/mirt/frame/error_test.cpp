// RaiseError, also on a host short of memory, and the codes of exceptions.
#include "frame/error.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <stdexcept>

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

#include "support/late_bound.h"

namespace {

enum class ErrorObjects { kOfTheHost, kNone, kNoneWithSuccess, kWriteOnly };
ErrorObjects error_objects = ErrorObjects::kOfTheHost;

// Takes text and cannot be read.
class WriteOnlyError final : public ICreateErrorInfo {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ICreateErrorInfo, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT SetGUID(REFGUID) override { return S_OK; }
  HRESULT SetSource(LPOLESTR) override { return S_OK; }
  HRESULT SetDescription(LPOLESTR) override { return S_OK; }
  HRESULT SetHelpFile(LPOLESTR) override { return S_OK; }
  HRESULT SetHelpContext(DWORD) override { return S_OK; }
  ULONG references = 0;
};
WriteOnlyError write_only_error;

}  // namespace

// In front of the runtime's, which is asked unless a test says otherwise.
HRESULT CreateErrorInfo(ICreateErrorInfo** info) {
  *info = nullptr;
  if (error_objects == ErrorObjects::kNone) return E_OUTOFMEMORY;
  if (error_objects == ErrorObjects::kNoneWithSuccess) return S_OK;
  if (error_objects == ErrorObjects::kWriteOnly) {
    write_only_error.AddRef();
    *info = &write_only_error;
    return S_OK;
  }
  static const auto next = reinterpret_cast<HRESULT (*)(ICreateErrorInfo**)>(dlsym(RTLD_NEXT, "CreateErrorInfo"));
  return next(info);
}

namespace test {
namespace {

TEST(RaiseErrors, LeavesSourceAndDescription) {
  EXPECT_EQ(E_FAIL, RaiseError(E_FAIL, L"Mirt", L"x"));
  const ErrorText error = take_error();
  EXPECT_EQ(L"Mirt", error.source);
  EXPECT_EQ(L"x", error.description);
  EXPECT_EQ(7, RaiseError(7, L"Templator", L""));
  EXPECT_EQ(L"Templator", take_error().source);
}

TEST(RaiseErrors, AnswersTheCodeWithoutAnErrorObject) {
  for (const ErrorObjects kind : {ErrorObjects::kNone, ErrorObjects::kNoneWithSuccess, ErrorObjects::kWriteOnly}) {
    SetErrorInfo(0, nullptr);
    error_objects = kind;
    EXPECT_EQ(E_FAIL, RaiseError(E_FAIL, L"Mirt", L"x"));
    error_objects = ErrorObjects::kOfTheHost;
    EXPECT_EQ(L"", take_error().description);
  }
  EXPECT_EQ(0u, write_only_error.references);
}

TEST(Exceptions, BecomeCodes) {
  const auto code_of = [](auto exception) { return mirt::guarded([&]() -> HRESULT { throw exception; }); };
  EXPECT_EQ(E_OUTOFMEMORY, code_of(std::bad_alloc()));
  EXPECT_EQ(E_OUTOFMEMORY, code_of(std::length_error("too long")));
  EXPECT_EQ(E_FAIL, code_of(std::runtime_error("other")));
  EXPECT_EQ(E_FAIL, code_of(1));
}

TEST(Guarded, ClearsTheResultBeforeTheBody) {
  wchar_t old[] = L"old";
  BSTR text = old;
  EXPECT_EQ(E_FAIL, mirt::guarded(&text, [&]() -> HRESULT { throw 1; }));
  EXPECT_EQ(nullptr, text);
  VARIANT value;
  std::memset(static_cast<void*>(&value), 0xA5, sizeof value);
  EXPECT_EQ(E_ABORT, mirt::guarded(&value, [] { return E_ABORT; }));
  EXPECT_EQ(VARTYPE{VT_EMPTY}, value.vt);
  VARIANT_BOOL found = VARIANT_TRUE;
  EXPECT_EQ(S_FALSE, mirt::guarded(&found, [] { return S_FALSE; }));
  EXPECT_EQ(VARIANT_FALSE, found);
}

TEST(Guarded, RunsNoBodyWithoutAPlaceForTheResult) {
  bool ran = false;
  const auto body = [&] {
    ran = true;
    return S_OK;
  };
  EXPECT_EQ(E_POINTER, mirt::guarded(static_cast<BSTR*>(nullptr), body));
  EXPECT_FALSE(ran);
  EXPECT_EQ(S_OK, mirt::guarded(body));
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace test
