// A script object for which a test's own functions answer: what it finds, and what a call of it does, with the
// arguments as they come, references included. FakeScript (support/fake.h) is the one with members of its own.
//
//   BareScript script;  // has every name; reading, writing and calling succeed and give nothing
//   script.on_call = [](const BareScript::Call& call) { return call.flags == DISPATCH_METHOD ? S_OK : E_FAIL; };
//
// It lies in the test, which counts what is held: a count of zero frees nothing.
#pragma once

#include <functional>

#include <korlib/dispatch.h>

namespace test {

class BareScript final : public IDispatch {
 public:
  static constexpr DISPID kEveryName = 5;

  struct Call {
    DISPID id;
    WORD flags;
    DISPPARAMS& params;
    VARIANT* result;
  };

  BareScript() = default;
  BareScript(const BareScript&) = delete;
  BareScript& operator=(const BareScript&) = delete;

  std::function<HRESULT(const wchar_t* name, DISPID* id)> on_look_up = [](const wchar_t*, DISPID* id) {
    *id = kEveryName;
    return S_OK;
  };
  std::function<HRESULT(const Call& call)> on_call = [](const Call&) { return S_OK; };
  ULONG references = 1;

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  // These two expect to be asked as the component asks a script: for one name, in the system's locale, without a
  // wish for more about a failure.
  HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) override;
  HRESULT Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* excepinfo, UINT* argerr) override;
};

}  // namespace test
