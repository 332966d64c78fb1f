// From a script's value, along a mark's parameters, to text.
#include <memory>

#include "mirt/templator/engine.h"
#include "support/fake.h"

namespace test {
namespace {

// A mark's parameters.
class Path {
 public:
  Path(std::initializer_list<std::wstring> entries) {
    for (const std::wstring& entry : entries) {
      streams_.push_back(std::make_unique<std::wstringstream>(entry));
      params_.push_back(streams_.back().get());
    }
  }
  const MarkParams* operator&() const { return &params_; }

 private:
  std::vector<std::unique_ptr<std::wstringstream>> streams_;
  MarkParams params_;
};

CComVariant array_from(LONG lower, const std::vector<CComVariant>& elements) {
  CComSafeArray array;
  array.attach(SafeArrayCreateVector(VT_VARIANT, lower, static_cast<ULONG>(elements.size())));
  for (std::size_t i = 0; i < elements.size(); ++i) VariantCopy(array.data<VARIANT>() + i, &elements[i]);
  CComVariant value;
  array.detach_to(&value);
  return value;
}

// Indexes itself: the item of a key is the key in brackets. "count" is a property as well.
CComPtr<FakeScript> collection() {
  CComPtr<FakeScript> object = FakeScript::make();
  object->function(L"", [](const Arguments& arguments) {
    EXPECT_EQ(1u, arguments.size());
    return CComVariant((L"[" + std::wstring(korlib::view_of(arguments[0].bstrVal)) + L"]").c_str());
  });
  object->value(L"count", 7);
  return object;
}

// A plain object: no items, two properties.
CComPtr<FakeScript> record() {
  CComPtr<FakeScript> object = FakeScript::make();
  object->value(L"name", L"Ada");
  object->value(L"list", value_of(std::vector<CComVariant>{value_of(L"first"), value_of(2)}));
  return object;
}

class ChangeToBSTR : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(0, FakeScript::alive()); }
};

struct Outcome {
  HRESULT hr;
  CComVariant value;
};

Outcome change(CComVariant value, const MarkParams* path, bool empty_on_fail) {
  const HRESULT hr = CTemplatorConcept::ChangeToBSTR(&value, path, empty_on_fail);
  return {hr, std::move(value)};
}

std::wstring text_of(const Outcome& outcome) {
  if (FAILED(outcome.hr)) return L"<failure>";
  return outcome.value.vt == VT_BSTR ? std::wstring(korlib::view_of(outcome.value.bstrVal)) : L"<no text>";
}

TEST_F(ChangeToBSTR, ShowsValuesAsText) {
  EXPECT_EQ(L"abc", text_of(change(value_of(L"abc"), nullptr, false)));
  EXPECT_EQ(L"12", text_of(change(value_of(12), nullptr, false)));
  EXPECT_EQ(L"0.5", text_of(change(value_of(0.5), nullptr, false)));
  EXPECT_EQ(L"True", text_of(change(value_of(true), nullptr, false)));
  EXPECT_EQ(L"", text_of(change(CComVariant(), nullptr, false)));
}

TEST_F(ChangeToBSTR, FollowsAPath) {
  const CComVariant list = array_from(0, {value_of(L"zero"), value_of(record()), value_of(collection())});
  struct Row {
    const char* about;
    CComVariant value;
    Path path;
    const wchar_t* text;
  };
  const Row rows[] = {
      {"no entries", value_of(L"abc"), {}, L"abc"},
      {"an index", list, {L"0"}, L"zero"},
      {"an index with blanks", list, {L" 0 "}, L"zero"},
      {"an index below zero", array_from(-1, {value_of(L"m"), value_of(L"z")}), {L"-1"}, L"m"},
      {"the last index", array_from(5, {value_of(L"five"), value_of(L"six")}), {L"6"}, L"six"},
      {"an object's item", value_of(collection()), {L"key"}, L"[key]"},
      {"an item before a property of that name", value_of(collection()), {L"count"}, L"[count]"},
      {"an object's property", value_of(record()), {L"name"}, L"Ada"},
      {"a property of an element", list, {L"1", L"name"}, L"Ada"},
      {"an item of an element", list, {L"2", L"x"}, L"[x]"},
      {"an element of a property", value_of(record()), {L"list", L"0"}, L"first"},
      {"a number at the end", value_of(record()), {L"list", L"1"}, L"2"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.about);
    EXPECT_EQ(row.text, text_of(change(row.value, &row.path, false)));
    EXPECT_EQ(row.text, text_of(change(row.value, &row.path, true)));
  }
}

TEST_F(ChangeToBSTR, ReportsTheFirstStepThatFails) {
  const CComVariant three = array_from(0, {value_of(1), value_of(2), value_of(3)});
  const CComPtr<FakeScript> refusing = FakeScript::make();
  refusing->failing(L"", DISP_E_DIVBYZERO);
  refusing->value(L"name", L"never asked");
  const CComPtr<FakeScript> functions = FakeScript::make();
  functions->failing(L"name", DISP_E_OVERFLOW);

  SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
  CComSafeArray square;
  square.attach(SafeArrayCreate(VT_VARIANT, 2, bounds));
  CComVariant two_dimensions;
  square.detach_to(&two_dimensions);

  struct Row {
    const char* about;
    CComVariant value;
    Path path;
    HRESULT hr;
  };
  const Row rows[] = {
      {"after the end", three, {L"3"}, DISP_E_BADINDEX},
      {"before the beginning", three, {L"-1"}, DISP_E_BADINDEX},
      {"an empty array", array_from(0, {}), {L"0"}, DISP_E_BADINDEX},
      {"no number", three, {L"x"}, DISP_E_TYPEMISMATCH},
      {"a number too large", three, {L"4294967296"}, DISP_E_OVERFLOW},
      {"an array of two dimensions", two_dimensions, {L"0"}, DISP_E_BADINDEX},
      {"into a number", value_of(5), {L"x"}, DISP_E_TYPEMISMATCH},
      {"into a text", value_of(L"abc"), {L"0"}, DISP_E_TYPEMISMATCH},
      {"into nothing", CComVariant(), {L"x"}, DISP_E_TYPEMISMATCH},
      {"into bytes", value_of(std::vector<std::uint8_t>{1, 2}), {L"0"}, DISP_E_TYPEMISMATCH},
      {"into no object", value_of(static_cast<IDispatch*>(nullptr)), {L"x"}, DISP_E_TYPEMISMATCH},
      {"beyond an element", three, {L"0", L"x"}, DISP_E_TYPEMISMATCH},
      {"an unknown name", value_of(record()), {L"nickname"}, DISP_E_UNKNOWNNAME},
      {"an object that refuses", value_of(refusing), {L"name"}, DISP_E_DIVBYZERO},
      {"a property that refuses", value_of(functions), {L"name"}, DISP_E_OVERFLOW},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.about);
    EXPECT_EQ(row.hr, change(row.value, &row.path, false).hr);
    EXPECT_EQ(row.hr, change(row.value, &row.path, true).hr);  // only the last conversion is forgiven
  }
}

TEST_F(ChangeToBSTR, ShowsWhatHasNoTextAsNothingWhenAsked) {
  const CComVariant array = array_from(0, {value_of(1)});
  for (const CComVariant& value : {null_value(), array, value_of(record())}) {
    EXPECT_EQ(DISP_E_TYPEMISMATCH, change(value, nullptr, false).hr);
    const Outcome empty = change(value, nullptr, true);
    EXPECT_EQ(S_OK, empty.hr);
    ASSERT_EQ(VT_BSTR, empty.value.vt);
    EXPECT_EQ(nullptr, empty.value.bstrVal);
  }
}

TEST_F(ChangeToBSTR, LeavesTheValueAsFarAsItGot) {
  const Path path{L"1", L"nickname"};
  const Outcome outcome = change(array_from(0, {value_of(1), value_of(record())}), &path, false);
  EXPECT_EQ(DISP_E_UNKNOWNNAME, outcome.hr);
  EXPECT_EQ(VT_DISPATCH, outcome.value.vt);
}

TEST_F(ChangeToBSTR, AsksObjectsAsAutomationDoes) {
  const CComPtr<FakeScript> object = collection();
  const Path path{L"key"};
  change(value_of(object), &path, false);
  ASSERT_EQ(1u, object->calls().size());
  EXPECT_EQ(DISPATCH_METHOD | DISPATCH_PROPERTYGET, object->calls()[0].flags);
  ASSERT_EQ(1u, object->calls()[0].arguments.size());
  EXPECT_EQ(VT_BSTR, object->calls()[0].arguments[0].vt);
}

TEST_F(ChangeToBSTR, AsksForAMemberWithoutArguments) {
  const CComPtr<FakeScript> object = FakeScript::make();
  object->function(L"key", [](const Arguments&) { return CComVariant(L"answer"); });
  const Path path{L"key"};
  EXPECT_EQ(L"answer", text_of(change(value_of(object), &path, false)));
  ASSERT_EQ(1u, object->calls().size());
  EXPECT_EQ(DISPATCH_METHOD | DISPATCH_PROPERTYGET, object->calls()[0].flags);
  EXPECT_TRUE(object->calls()[0].arguments.empty());
}

TEST_F(ChangeToBSTR, RefusesNoValue) { EXPECT_EQ(E_POINTER, CTemplatorConcept::ChangeToBSTR(nullptr, nullptr, true)); }

}  // namespace
}  // namespace test
