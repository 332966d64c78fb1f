#include <korlib_host/dispatch_object.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <vector>

#include <korlib_host/enumerator.h>

#include "korlib/dispatch/shelf.h"
#include "support/late_bound.h"

namespace {

using test::call;
using test::get;
using test::IGreeter;
using test::invoke;
using test::put;
using test::putref;
using test::Shelf;
using test::Slots;
using test::text_of;
using test::value_of;

constexpr WORD kRead = DISPATCH_PROPERTYGET;
constexpr WORD kCallOrRead = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr WORD kBothPuts = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

LONG number_of(const test::Answer& answer) { return answer.value.vt == VT_I4 ? answer.value.lVal : -999; }

CComVariant left_out() { return CComVariant(korlib::omitted()); }

class DispatchObject : public testing::Test {
 protected:
  CComPtr<Shelf> shelf_ = korlib::make<Shelf>();
  IDispatch* object() { return shelf_.get(); }
};

TEST_F(DispatchObject, FindsNamesInAnyLetterCase) {
  const DISPID id = test::id_of(object(), L"Greet");
  EXPECT_EQ(1, id);
  EXPECT_EQ(id, test::id_of(object(), L"gREET"));
  EXPECT_EQ(DISPID_VALUE, test::id_of(object(), L"slots"));
  EXPECT_EQ(DISPID_UNKNOWN, test::id_of(object(), L"Gree"));
  EXPECT_EQ(DISPID_UNKNOWN, test::id_of(object(), L""));
  EXPECT_EQ(DISPID_NEWENUM, test::id_of(shelf_->slots.get(), L"_newenum"));
}

TEST_F(DispatchObject, RefusesNamesOfArguments) {
  wchar_t first[] = L"Greet";
  wchar_t second[] = L"name";
  LPOLESTR names[] = {first, second};
  DISPID ids[] = {77, 77};
  EXPECT_EQ(DISP_E_UNKNOWNNAME, object()->GetIDsOfNames(IID_NULL, names, 2, 0, ids));
  EXPECT_EQ(1, ids[0]);
  EXPECT_EQ(DISPID_UNKNOWN, ids[1]);
  EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, object()->GetIDsOfNames(IID_IUnknown, names, 1, 0, ids));
}

TEST_F(DispatchObject, TellsMethodsFromProperties) {
  struct Row {
    const wchar_t* name;
    WORD flags;
    HRESULT expected;
  };
  const Row rows[] = {
      {L"CountAll", DISPATCH_METHOD, S_OK},
      {L"CountAll", kRead, DISP_E_MEMBERNOTFOUND},
      {L"CountAll", kCallOrRead, S_OK},
      {L"CountAll", DISPATCH_PROPERTYPUT, DISP_E_MEMBERNOTFOUND},
      {L"Width", kRead, S_OK},
      {L"Width", DISPATCH_METHOD, DISP_E_MEMBERNOTFOUND},
      {L"Width", kCallOrRead, S_OK},
      {L"Only", kRead, DISP_E_MEMBERNOTFOUND},
  };
  for (const Row& row : rows) {
    std::vector<CComVariant> arguments;
    if (row.flags == DISPATCH_PROPERTYPUT) arguments.push_back(value_of(1));
    EXPECT_EQ(row.expected, invoke(object(), row.name, row.flags, arguments).hr)
        << testing::PrintToString(std::wstring(row.name)) << " flags " << row.flags;
  }
}

TEST_F(DispatchObject, AnswersForIdentifiersThatNoMemberHas) {
  for (const DISPID id : {-1, -5, 99, 11}) EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(object(), id, kRead, {}).hr) << id;
}

TEST_F(DispatchObject, ConvertsArguments) {
  EXPECT_EQ(L"Hello, 12", text_of(call(object(), L"Greet", 12)));
  EXPECT_EQ(L"Hello, ", text_of(call(object(), L"Greet", CComVariant())));
  EXPECT_EQ(42, number_of(call(object(), L"Add", L" 40 ", 2.0, 0, false)));
  EXPECT_EQ(-42, number_of(call(object(), L"Add", 40, 1, 1, -1)));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(object(), L"Add", L"x").hr);
  EXPECT_EQ(DISP_E_OVERFLOW, call(object(), L"Add", 1e12).hr);
}

TEST_F(DispatchObject, NamesTheArgumentThatDoesNotConvert) {
  CComVariant arguments[] = {value_of(0), value_of(L"x"), value_of(1)};  // reversed: Add(1, "x", 0)
  DISPPARAMS params{arguments, nullptr, 3, 0};
  UINT bad = 99;
  EXPECT_EQ(DISP_E_TYPEMISMATCH, object()->Invoke(test::id_of(object(), L"Add"), IID_NULL, 0, DISPATCH_METHOD, &params,
                                                  nullptr, nullptr, &bad));
  EXPECT_EQ(1u, bad);
}

TEST_F(DispatchObject, LeavesTheIndexOfABadArgumentAloneWhenAMemberFails) {
  CComVariant argument = value_of(7);  // beyond the slots
  DISPPARAMS params{&argument, nullptr, 1, 0};
  UINT bad = 99;
  CComPtr<Slots> slots = korlib::make<Slots>();
  EXPECT_EQ(DISP_E_BADINDEX,
            slots->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYGET, &params, nullptr, nullptr, &bad));
  EXPECT_EQ(99u, bad);
}

TEST_F(DispatchObject, ReadsAPropertyThatIsCalledOnlyWithItsArguments) {
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(object(), L"Kind", kRead, {}).hr);
  EXPECT_EQ(-1, number_of(invoke(object(), L"Kind", kCallOrRead, {})));
  EXPECT_EQ(VT_I4, number_of(invoke(object(), L"Kind", kRead, {value_of(1)})));
}

TEST_F(DispatchObject, TakesAnOmittedVariantForTheEmptyOneWhereItIsRequired) {
  EXPECT_EQ(VT_EMPTY, number_of(call(object(), L"Required", left_out())));
}

TEST_F(DispatchObject, FillsInOptionalArguments) {
  EXPECT_EQ(-11, number_of(call(object(), L"Add", 1)));
  EXPECT_EQ(-3, number_of(call(object(), L"Add", 1, 2)));
  EXPECT_EQ(-11, number_of(call(object(), L"Add", 1, left_out())));
  EXPECT_EQ(-16, number_of(call(object(), L"Add", 1, left_out(), 5)));
  EXPECT_EQ(-1, number_of(call(object(), L"Describe")));
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, call(object(), L"Add").hr);
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, call(object(), L"Add", 1, 2, 3, 4, 5).hr);
  EXPECT_EQ(DISP_E_PARAMNOTFOUND, call(object(), L"Add", left_out()).hr);
}

TEST_F(DispatchObject, SaysHowManyArgumentsACallTakes) {
  const auto words = [&](const auto&... arguments) {
    const test::Answer answer = call(object(), arguments...);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, answer.hr);
    return answer.description;
  };
  EXPECT_EQ(L"Wrong number of arguments: 'Add' takes 1 to 4, not 0", words(L"Add"));
  EXPECT_EQ(L"Wrong number of arguments: 'Add' takes 1 to 4, not 5", words(L"Add", 1, 2, 3, 4, 5));
  EXPECT_EQ(L"Wrong number of arguments: 'Take' takes 1, not 2", words(L"Take", 1, 2));
  // A reader goes on from it.
  EXPECT_EQ(L"", get(object(), L"Slots", 1, 2).description);
}

TEST_F(DispatchObject, FollowsReferences) {
  CComVariant variable(LONG{5});
  EXPECT_EQ(VT_I4, number_of(call(object(), L"Describe", test::by_reference(&variable))));
  EXPECT_EQ(5, number_of(call(object(), L"Take", test::by_reference(&variable))));
  EXPECT_EQ(7, variable.lVal);
  LONG number = 9;
  CComVariant reference;
  reference.vt = VT_BYREF | VT_I4;
  reference.plVal = &number;
  EXPECT_EQ(VT_I4, number_of(call(object(), L"Describe", reference)));
  EXPECT_EQ(L"Hello, 9", text_of(call(object(), L"Greet", reference)));
}

TEST_F(DispatchObject, PassesObjectsAsTheInterfaceAskedFor) {
  EXPECT_TRUE(test::is_true(call(object(), L"IsSame", object())));
  EXPECT_TRUE(test::is_true(call(object(), L"HasGreeter", object())));
  EXPECT_FALSE(test::is_true(call(object(), L"HasGreeter", test::null_value())));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(object(), L"HasGreeter", shelf_->slots).hr);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(object(), L"HasGreeter", 1).hr);
}

TEST_F(DispatchObject, TakesAnyNumberOfArgumentsWhereTheMemberDoes) {
  EXPECT_EQ(0, number_of(call(object(), L"CountAll")));
  EXPECT_EQ(9, number_of(call(object(), L"CountAll", 1, 2, 3, 4, 5, 6, 7, 8, 9)));
}

TEST_F(DispatchObject, PutsProperties) {
  EXPECT_EQ(S_OK, put(object(), L"width", L"12").hr);
  EXPECT_EQ(12, shelf_->width);
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, putref(object(), L"Width", object()).hr);
  EXPECT_EQ(S_OK, invoke(object(), L"Width", kBothPuts, {value_of(3)}).hr);
  EXPECT_EQ(3, shelf_->width);
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, put(object(), L"Width", 1, 2).hr);
}

TEST_F(DispatchObject, NeedsThePutsOwnNameOnItsValue) {
  CComVariant value(LONG{1});
  DISPID wrong = 3;
  DISPPARAMS params{&value, nullptr, 1, 0};
  const DISPID width = test::id_of(object(), L"Width");
  EXPECT_EQ(DISP_E_PARAMNOTFOUND,
            object()->Invoke(width, IID_NULL, 0, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr, nullptr));
  params = {&value, &wrong, 1, 1};
  EXPECT_EQ(DISP_E_NONAMEDARGS,
            object()->Invoke(width, IID_NULL, 0, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr, nullptr));
  EXPECT_EQ(DISP_E_NONAMEDARGS, object()->Invoke(width, IID_NULL, 0, kRead, &params, nullptr, nullptr, nullptr));
  EXPECT_EQ(3, shelf_->width);
}

TEST_F(DispatchObject, ChoosesBetweenBothPutsByTheValue) {
  IDispatch* slots = shelf_->slots.get();
  EXPECT_EQ(S_OK, invoke(slots, L"Item", kBothPuts, {value_of(0), value_of(object())}).hr);
  EXPECT_EQ("putref", shelf_->slots->last);
  EXPECT_EQ(S_OK, invoke(slots, L"Item", kBothPuts, {value_of(0), value_of(1)}).hr);
  EXPECT_EQ("put", shelf_->slots->last);
  EXPECT_EQ(S_OK, put(slots, L"Item", 0, object()).hr);
  EXPECT_EQ("put", shelf_->slots->last);
  shelf_->slots->values.clear();  // the shelf was in there, which holds the slots
}

TEST_F(DispatchObject, PassesArgumentsOnToTheObjectThatAPropertyHolds) {
  EXPECT_EQ(S_OK, put(object(), L"Slots", 1, L"here").hr);
  EXPECT_EQ(L"here", text_of(get(object(), L"Slots", 1)));
  EXPECT_EQ(L"here", text_of(invoke(object(), L"Slots", kCallOrRead, {value_of(1)})));
  EXPECT_EQ(L"here", text_of(invoke(object(), DISPID_VALUE, kRead, {value_of(1)})));
  EXPECT_EQ(DISP_E_BADINDEX, get(object(), L"Slots", 8).hr);
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, get(object(), L"Slots", 1, 2).hr);
  EXPECT_EQ(DISP_E_BADPARAMCOUNT, get(object(), L"Width", 1).hr);
}

TEST_F(DispatchObject, PassesAFailureOnUnchangedWithItsWords) {
  const test::Answer answer = call(object(), L"Fail");
  EXPECT_EQ(DISP_E_BADINDEX, answer.hr);
  EXPECT_EQ(L"Shelf", answer.source);
  EXPECT_EQ(L"nothing there", answer.description);
  EXPECT_EQ(VT_EMPTY, answer.value.vt);
}

TEST_F(DispatchObject, TurnsAnExceptionIntoAnError) {
  const test::Answer answer = call(object(), L"Throw");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"broken", answer.description);
}

TEST_F(DispatchObject, RunsWithoutAnyOutArgument) {
  CComVariant name(L"x");
  DISPPARAMS params{&name, nullptr, 1, 0};
  EXPECT_EQ(S_OK, object()->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr));
  EXPECT_EQ(E_INVALIDARG, object()->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(DISP_E_UNKNOWNINTERFACE,
            object()->Invoke(1, IID_IUnknown, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr));
}

TEST_F(DispatchObject, OffersItsInterfacesAndNoOthers) {
  CComPtr<IGreeter> greeter;
  CComPtr<IUnknown> unknown;
  EXPECT_EQ(S_OK, shelf_.query(greeter.put()));
  EXPECT_EQ(S_OK, greeter.query(unknown.put()));
  void* poisoned = &greeter;
  EXPECT_EQ(E_NOINTERFACE, shelf_->QueryInterface(IID_ITypeInfo, &poisoned));
  EXPECT_EQ(nullptr, poisoned);
  UINT count = 9;
  EXPECT_EQ(S_OK, shelf_->GetTypeInfoCount(&count));
  EXPECT_EQ(1u, count);
}

TEST_F(DispatchObject, SaysWhatItIsAndWhichMembersItHas) {
  CComPtr<ITypeInfo> info;
  CComPtr<ITypeInfo> same;
  ASSERT_EQ(S_OK, shelf_->GetTypeInfo(0, 0, info.put()));
  CComPtr<Shelf> other = korlib::make<Shelf>();
  EXPECT_EQ(S_OK, other->GetTypeInfo(0, 0, same.put()));
  EXPECT_EQ(info.get(), same.get()) << "one for the class";
  EXPECT_EQ(DISP_E_BADINDEX, shelf_->GetTypeInfo(1, 0, same.put()));
  CComBSTR name;
  EXPECT_EQ(S_OK, info->GetDocumentation(-1, name.put(), nullptr, nullptr, nullptr));
  EXPECT_EQ(L"Shelf", name.view());
  EXPECT_EQ(S_OK, info->GetDocumentation(1, name.put(), nullptr, nullptr, nullptr));
  EXPECT_EQ(L"Greet", name.view());
  UINT count = 9;
  EXPECT_EQ(S_OK, info->GetNames(DISPID_VALUE, name.put(), 1, &count));
  EXPECT_EQ(L"Slots", name.view());
  EXPECT_EQ(1u, count);
  EXPECT_EQ(TYPE_E_ELEMENTNOTFOUND, info->GetNames(99, name.put(), 1, &count));
  EXPECT_EQ(0u, count);
  LPOLESTR wanted = const_cast<wchar_t*>(L"ADD");
  MEMBERID id = 0;
  EXPECT_EQ(S_OK, info->GetIDsOfNames(&wanted, 1, &id));
  EXPECT_EQ(2, id);
  std::vector<CComVariant> reversed{value_of(2), value_of(40)};
  DISPPARAMS params{reversed.data(), nullptr, 2, 0};
  CComVariant sum;
  EXPECT_EQ(S_OK, info->Invoke(shelf_.get(), id, DISPATCH_METHOD, &params, &sum, nullptr, nullptr));
  EXPECT_EQ(-42, sum.lVal);
}

TEST_F(DispatchObject, GoesWithItsLastReference) {
  const auto before = korlib_host::live_objects();
  CComPtr<Shelf> other = korlib::make<Shelf>();
  EXPECT_EQ(before + 2, korlib_host::live_objects());  // its slots with it
  other.reset();
  EXPECT_EQ(before, korlib_host::live_objects());
}

}  // namespace
