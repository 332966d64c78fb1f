// Automation objects for scripts to play with.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <korlib_host/dispatch_object.h>
#include <korlib_host/enumerator.h>
#include <zelto/asp.h>

#include "support/unused_members.h"

namespace test {

// A bit of everything: properties, methods, a default member with an argument, an enumeration.
class Probe final : public korlib::DispatchObject<Probe> {
 public:
  static std::span<const korlib::Member> members();
  static std::atomic<int> alive;

  Probe() { ++alive; }
  ~Probe() override { --alive; }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;

  // The last value that was handed over, and what Give hands back.
  CComVariant kept;
  std::map<std::wstring, CComVariant> items;  // of the default member
  std::function<HRESULT()> action;            // what Act does
  int closed = 0;
  VARTYPE put_type = VT_EMPTY;
  std::wstring how;  // "put" or "putref": how the last item was set
  CComPtr<IDispatch> held;

  HRESULT Keep(VARIANT value);
  HRESULT Give(VARIANT* value);
  HRESULT TypeOf(VARIANT value, LONG* type);
  HRESULT Close();
  HRESULT Act();
  HRESULT ReadText(LONG count, BSTR* text);
  HRESULT Fail(LONG code, BSTR description);
  HRESULT Call(IDispatch* function, VARIANT argument, VARIANT* result);
  HRESULT CallMember(IDispatch* object, BSTR name, VARIANT* result);
  HRESULT Hold(IDispatch* object);
  HRESULT get_Item(VARIANT key, VARIANT* value);
  HRESULT put_Item(VARIANT key, VARIANT value);
  HRESULT putref_Item(VARIANT key, VARIANT value);
  HRESULT get_Name(BSTR* name);
  HRESULT put_Name(BSTR name);
  HRESULT get_Inner(IDispatch** inner);
  HRESULT get__NewEnum(IUnknown** items);

  CComPtr<IDispatch> inner;
  CComBSTR name{L"probe"};
};

// A default member without arguments, as a field of a recordset has.
class Field final : public korlib::DispatchObject<Field> {
 public:
  static std::span<const korlib::Member> members();
  CComVariant value;
  HRESULT get_Value(VARIANT* out) { return VariantCopy(out, &value); }
  HRESULT put_Value(VARIANT in) { return VariantCopy(&value, &in); }
};

// Gives its one field for any name, as a default member that can only be read.
class Row final : public korlib::DispatchObject<Row> {
 public:
  static std::span<const korlib::Member> members();
  CComPtr<IDispatch> field;
  HRESULT get_Item(VARIANT, IDispatch** out) { return field.copy_to(out); }
  HRESULT get_Fields(IDispatch** out) {
    AddRef();
    *out = this;
    return S_OK;
  }
};

// Response, as far as the engine writes to it.
class Page final : public UnusedResponse<korlib::DispatchObject<Page, ZeltoTypeLibrary::IResponse>> {
 public:
  static std::span<const korlib::Member> members();

  std::wstring text;

  HRESULT Write(VARIANT value) override;
  HRESULT End();
};

}  // namespace test
