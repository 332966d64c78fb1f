#include "intrinsics/value_text.h"

#include <cmath>
#include <limits>

#include "text/locale.h"
#include "zelto/intrinsics/calls.h"

#include <korlib_host/dispatch_object.h>

namespace {

using namespace test;

constexpr LONG kGerman = 1031;
constexpr double kDay = 36925;  // 2001-02-03: 25569 days to 1970, 31 * 365 + 8 to 2001, 33 more
constexpr double kTime = (4 * 3600 + 5 * 60 + 6) / 86400.0;

std::wstring text(const VARIANT& value, LONG lcid = zelto::kNeutralLocale) {
  std::wstring out = L"<";
  const HRESULT hr = zelto::append_value_text(value, lcid, out);
  return SUCCEEDED(hr) ? out + L">" : L"failed";
}

CComVariant typed(VARTYPE vt, LONGLONG bits) {
  CComVariant value;
  value.vt = vt;
  value.llVal = bits;
  return value;
}
CComVariant date(double days) {
  CComVariant value(days);
  value.vt = VT_DATE;
  return value;
}
CComVariant list(const std::vector<CComVariant>& elements) { return value_of(elements); }

// Its default member answers what it is given.
class Holder final : public korlib::DispatchObject<Holder> {
 public:
  static std::span<const korlib::Member> members() {
    static constexpr korlib::Member table[] = {property<&Holder::get_Value>(L"Value").is_default()};
    return table;
  }
  HRESULT get_Value(VARIANT* value) {
    ++reads;
    if (FAILED(failure)) return korlib::raise(failure, L"Holder", L"not today");
    const CComVariant self(static_cast<IDispatch*>(this));
    return VariantCopy(value, is_cyclic ? &self : &held);
  }
  CComVariant held;
  HRESULT failure = S_OK;
  bool is_cyclic = false;
  int reads = 0;
};

// Has members, but none for its own value.
class Plain final : public korlib::DispatchObject<Plain> {
 public:
  static std::span<const korlib::Member> members() {
    static constexpr korlib::Member table[] = {method<&Plain::Do>(L"Do").is_default()};
    return table;
  }
  HRESULT Do() {
    ++calls;
    return S_OK;
  }
  int calls = 0;
};

CComPtr<Holder> holder(const CComVariant& held) {
  auto made = korlib::make<Holder>();
  made->held = held;
  return made;
}

TEST(ValueText, IsNothingForWhatIsNoValue) {
  EXPECT_EQ(L"<>", text(CComVariant()));
  EXPECT_EQ(L"<>", text(null_value()));
  EXPECT_EQ(L"<>", text(korlib::omitted()));
  EXPECT_EQ(L"<>", text(typed(VT_DISPATCH, 0)));
  EXPECT_EQ(L"<>", text(typed(VT_UNKNOWN, 0)));
  EXPECT_EQ(L"<>", text(typed(VT_BSTR, 0)));
}

TEST(ValueText, WritesPlainValues) {
  EXPECT_EQ(L"<True>", text(value_of(true)));
  EXPECT_EQ(L"<False>", text(value_of(false)));
  EXPECT_EQ(std::wstring(L"<a\0b>", 5), text(value_of(std::wstring(L"a\0b", 3))));
  EXPECT_EQ(L"<-12>", text(value_of(-12)));
  EXPECT_EQ(L"<1234567.25>", text(value_of(1234567.25)));
  EXPECT_EQ(L"<1E+21>", text(value_of(1e21)));
  EXPECT_EQ(L"<NaN>", text(value_of(std::nan(""))));
  EXPECT_EQ(L"<Infinity>", text(value_of(std::numeric_limits<double>::infinity())));
  EXPECT_EQ(L"<-Infinity>", text(value_of(-std::numeric_limits<double>::infinity())));
  EXPECT_EQ(L"<9007199254740993>", text(typed(VT_I8, 9007199254740993)));
  EXPECT_EQ(L"<200>", text(typed(VT_UI1, 200)));
  EXPECT_EQ(L"<1234.5>", text(typed(VT_CY, 12345000)));  // ten-thousandths
  CComVariant code = typed(VT_ERROR, 0);
  code.scode = -7;
  EXPECT_EQ(L"<-7>", text(code));
}

TEST(ValueText, WritesDatesInOneForm) {
  EXPECT_EQ(L"<2001-02-03 04:05:06>", text(date(kDay + kTime)));
  EXPECT_EQ(L"<2001-02-03>", text(date(kDay)));
  EXPECT_EQ(L"<04:05:06>", text(date(kTime)));
  EXPECT_EQ(L"<00:00:00>", text(date(0)));
  std::wstring out;
  EXPECT_EQ(DISP_E_OVERFLOW, zelto::append_value_text(date(1e7), zelto::kNeutralLocale, out));
  EXPECT_EQ(L"A date outside the years 100 to 9999 has no text.", take_error().description);
  EXPECT_EQ(DISP_E_OVERFLOW, zelto::append_value_text(date(std::nan("")), kGerman, out));
}

TEST(ValueText, WritesDatesAndNumbersAsTheLocaleDoes) {
  EXPECT_EQ(L"<03.02.2001 04:05:06>", text(date(kDay + kTime), kGerman));
  EXPECT_EQ(L"<1234,5>", text(value_of(1234.5), kGerman));
  EXPECT_EQ(L"<1234,5>", text(typed(VT_CY, 12345000), kGerman));
  EXPECT_EQ(L"<True>", text(value_of(true), kGerman));
  EXPECT_EQ(L"<1.5>", text(value_of(L"1.5"), kGerman));
  EXPECT_EQ(L"<1,5,03.02.2001>", text(list({value_of(1.5), date(kDay)}), kGerman));
  EXPECT_EQ(L"<1,5>", text(value_of(holder(value_of(1.5))), kGerman));
}

TEST(ValueText, JoinsTheElementsOfArrays) {
  EXPECT_EQ(L"<1,,b,,True>", text(list({value_of(1), null_value(), value_of(L"b"), CComVariant(), value_of(true)})));
  EXPECT_EQ(L"<>", text(list({})));
  EXPECT_EQ(L"<>", text(list({null_value()})));
  EXPECT_EQ(L"<,>", text(list({CComVariant(), CComVariant()})));
  EXPECT_EQ(L"<1,2,3,4>", text(list({value_of(1), list({value_of(2), list({value_of(3)})}), value_of(4)})));
  EXPECT_EQ(L"<0,255,128>", text(value_of(std::vector<std::uint8_t>{0, 255, 128})));
  EXPECT_EQ(L"<,x>", text(list({value_of(holder(null_value())), value_of(holder(value_of(L"x")))})));
  EXPECT_EQ(L"<>", text(typed(VT_ARRAY | VT_VARIANT, 0)));
}

TEST(ValueText, WritesEveryTypeOfElementAndDimension) {
  const SAFEARRAYBOUND bounds[] = {{2, 1}, {3, -1}};
  CComVariant grid;
  grid.vt = VT_ARRAY | VT_R8;
  grid.parray = SafeArrayCreate(VT_R8, 2, bounds);
  for (LONG row = 1; row <= 2; ++row) {
    for (LONG column = -1; column <= 1; ++column) {
      const LONG at[] = {row, column};
      double value = row * 10 + column + 0.5;
      ASSERT_EQ(S_OK, SafeArrayPutElement(grid.parray, at, &value));
    }
  }
  EXPECT_EQ(L"<9.5,10.5,11.5,19.5,20.5,21.5>", text(grid));
  CComSafeArray names(VT_BSTR, 2);
  for (LONG i = 0; i < 2; ++i) {
    CComBSTR name(i == 0 ? L"a" : L"b");
    ASSERT_EQ(S_OK, SafeArrayPutElement(names.get(), &i, name));
  }
  CComVariant value;
  names.detach_to(&value);
  EXPECT_EQ(L"<a,b>", text(value));
}

TEST(ValueText, IsThatOfAnObjectsDefaultValue) {
  EXPECT_EQ(L"<text>", text(value_of(holder(value_of(L"text")))));
  EXPECT_EQ(L"<>", text(value_of(holder(null_value()))));
  EXPECT_EQ(L"<False>", text(value_of(holder(value_of(false)))));
  EXPECT_EQ(L"<1,2>", text(value_of(holder(value_of(holder(list({value_of(1), value_of(2)})))))));
  CComPtr<Holder> object = holder(value_of(5));
  EXPECT_EQ(L"<5>", text(value_of(static_cast<IUnknown*>(object.get()))));
  EXPECT_EQ(1, object->reads);
}

TEST(ValueText, SaysThatAnObjectHasNoneWithoutCallingIt) {
  CComPtr<Plain> object = korlib::make<Plain>();
  EXPECT_EQ(L"<[object Object]>", text(value_of(object)));
  EXPECT_EQ(0, object->calls);
  // What the refusal has said is not left for the next failure.
  CComPtr<Holder> refusing = holder(CComVariant());
  refusing->failure = DISP_E_MEMBERNOTFOUND;
  EXPECT_EQ(L"<[object Object]>", text(value_of(refusing)));
  EXPECT_EQ(L"", take_error().description);
}

TEST(ValueText, FailsAsTheObjectDoes) {
  CComPtr<Holder> object = holder(CComVariant());
  object->failure = E_ACCESSDENIED;
  std::wstring out;
  EXPECT_EQ(E_ACCESSDENIED, zelto::append_value_text(list({value_of(object)}), zelto::kNeutralLocale, out));
  EXPECT_EQ(L"not today", take_error().description);
}

TEST(ValueText, FollowsReferences) {
  CComVariant number(1.5);
  EXPECT_EQ(L"<1.5>", text(by_reference(&number)));
  CComVariant array = list({value_of(1), value_of(2)});
  EXPECT_EQ(L"<1,2>", text(by_reference(&array)));
  EXPECT_EQ(L"<a,1.5>", text(list({value_of(L"a"), value_of(holder(by_reference(&number)))})));
}

TEST(ValueText, EndsWhereThingsHoldThemselves) {
  CComPtr<Holder> object = korlib::make<Holder>();
  object->is_cyclic = true;
  std::wstring out;
  EXPECT_EQ(E_INVALIDARG, zelto::append_value_text(value_of(object), zelto::kNeutralLocale, out));
  EXPECT_EQ(L"The object's default value is an object, and so on without an end.", take_error().description);
  EXPECT_EQ(16, object->reads);

  CComVariant nested = value_of(L"x");
  for (int i = 0; i < 200; ++i) nested = list({nested});
  EXPECT_EQ(L"<x>", text(nested));
  EXPECT_EQ(E_INVALIDARG, zelto::append_value_text(list({nested}), zelto::kNeutralLocale, out));
  EXPECT_EQ(L"The array is nested too deeply to be written.", take_error().description);
  // What stands beside each other is not nested.
  EXPECT_EQ(2 + 300 + 299u, text(list(std::vector<CComVariant>(300, list({value_of(1)})))).size());
  EXPECT_EQ(2 + 20 + 19u, text(list(std::vector<CComVariant>(20, value_of(holder(value_of(1)))))).size());
}

}  // namespace
