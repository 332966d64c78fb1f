// Objects of every kind of member, for tests of late binding.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <korlib_host/dispatch_object.h>
#include <korlib_host/enumerator.h>

namespace test {

struct IGreeter : IDispatch {
  virtual HRESULT Greet(BSTR name, BSTR* greeting) = 0;

 protected:
  ~IGreeter() = default;
};

}  // namespace test
KORLIB_IID(test::IGreeter, "3F0A2E52-9B1B-4B29-8A58-2B6C1C4E9E11");
namespace test {

// Holds values by number; the default member of a shelf.
class Slots final : public korlib::DispatchObject<Slots> {
 public:
  static std::span<const korlib::Member> members();

  HRESULT get_Item(LONG at, VARIANT* value) {
    if (at < 0 || static_cast<std::size_t>(at) >= values.size()) return DISP_E_BADINDEX;
    return VariantCopy(value, &values[static_cast<std::size_t>(at)]);
  }
  HRESULT put_Item(LONG at, VARIANT value) {
    values[static_cast<std::size_t>(at)] = value;
    last = "put";
    return S_OK;
  }
  HRESULT putref_Item(LONG at, VARIANT value) {
    values[static_cast<std::size_t>(at)] = value;
    last = "putref";
    return S_OK;
  }
  HRESULT get__NewEnum(IUnknown** values_out) { return korlib::make_enumerator(values, values_out); }

  std::vector<CComVariant> values = std::vector<CComVariant>(3);
  std::string last;
};

inline std::span<const korlib::Member> Slots::members() {
  static constexpr korlib::Member table[] = {
      property<&Slots::get_Item, &Slots::put_Item, &Slots::putref_Item>(L"Item").is_default(),
      new_enum<&Slots::get__NewEnum>(),
  };
  return table;
}

class Shelf final : public korlib::DispatchObject<Shelf, IGreeter> {
 public:
  static constexpr const wchar_t* kClassName = L"Shelf";
  static std::span<const korlib::Member> members();

  HRESULT Greet(BSTR name, BSTR* greeting) override {
    *greeting = korlib::new_bstr(L"Hello, " + std::wstring(korlib::view_of(name)));
    return S_OK;
  }
  HRESULT Add(LONG a, LONG b, double c, VARIANT_BOOL negate, LONG* sum) {
    *sum = static_cast<LONG>(a + b + c) * (negate ? -1 : 1);
    return S_OK;
  }
  HRESULT Describe(VARIANT value, VARIANT* description) {
    description->vt = VT_I4;
    description->lVal = korlib::is_omitted(value) ? -1 : value.vt;
    return S_OK;
  }
  HRESULT Take(VARIANT* count, LONG* before) {
    *before = count->lVal;
    count->lVal = 7;
    return S_OK;
  }
  HRESULT CountAll(const korlib::Arguments& arguments, VARIANT* result) {
    *result = korlib::long_variant(static_cast<LONG>(arguments.count()));
    return S_OK;
  }
  HRESULT Fail() { return korlib::raise(DISP_E_BADINDEX, L"Shelf", L"nothing there"); }
  HRESULT Throw() { throw std::runtime_error("broken"); }
  HRESULT IsSame(IDispatch* other, VARIANT_BOOL* same) {
    *same = other == static_cast<IDispatch*>(this) ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  HRESULT HasGreeter(IGreeter* other, VARIANT_BOOL* has) {
    *has = other ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  HRESULT get_Width(LONG* value) {
    *value = width;
    return S_OK;
  }
  HRESULT put_Width(LONG value) {
    width = value;
    return S_OK;
  }
  HRESULT get_Slots(IDispatch** value) { return CComPtr<IDispatch>(slots.get()).copy_to(value); }
  HRESULT put_Only(BSTR) { return S_OK; }

  LONG width = 3;
  CComPtr<Slots> slots = korlib::make<Slots>();
};

inline std::span<const korlib::Member> Shelf::members() {
  static constexpr korlib::Member table[] = {
      method<&Shelf::Greet>(L"Greet"),
      method<&Shelf::Add>(L"Add").optional(10, 0, 1),
      method<&Shelf::Describe>(L"Describe").optional(0),
      method<&Shelf::Take>(L"Take"),
      method<&Shelf::CountAll>(L"CountAll"),
      method<&Shelf::Fail>(L"Fail"),
      method<&Shelf::Throw>(L"Throw"),
      method<&Shelf::IsSame>(L"IsSame"),
      method<&Shelf::HasGreeter>(L"HasGreeter"),
      property<&Shelf::get_Width, &Shelf::put_Width>(L"Width"),
      property<&Shelf::get_Slots>(L"Slots").is_default(),
      property<nullptr, &Shelf::put_Only>(L"Only"),
      property<&Shelf::Describe>(L"Kind").optional(0).is_called(),
      method<&Shelf::Describe>(L"Required"),
  };
  return table;
}

}  // namespace test
