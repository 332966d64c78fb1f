#include "support/fake_script.h"

#include <gtest/gtest.h>

#include <korlib/ptr.h>

namespace test {
namespace {

constexpr LCID kSystemLocale = 2048;

}  // namespace

HRESULT BareScript::QueryInterface(REFIID riid, void** ppv) {
  return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
}

HRESULT BareScript::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) {
  EXPECT_EQ(IID_NULL, riid);
  EXPECT_EQ(1u, count);
  EXPECT_EQ(kSystemLocale, lcid);
  return on_look_up(names[0], ids);
}

HRESULT BareScript::Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                           EXCEPINFO* excepinfo, UINT* argerr) {
  EXPECT_EQ(IID_NULL, riid);
  EXPECT_EQ(kSystemLocale, lcid);
  EXPECT_EQ(nullptr, excepinfo);
  EXPECT_EQ(nullptr, argerr);
  return on_call({id, flags, *params, result});
}

}  // namespace test
