// Request fields into the bag, the view and the script's variables.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class PutInto : public PageTest {
 protected:
  void SetUp() override {
    with_name();
    process();  // a session, so that there is a bag
    asp_.calls->log.clear();
  }
  CComVariant bag_item(const std::wstring& name) {
    const CComPtr<IDispatch> bag = object_of(get(page(), L"Bag"));
    if (!is_true(call(bag.get(), L"Exists", name))) return CComVariant(L"(none)");
    return get(bag.get(), L"Item", name).value;
  }
  std::wstring bag_text(const std::wstring& name) {
    CComVariant item = bag_item(name);
    if (item.vt != VT_BSTR) return L"(type " + std::to_wstring(item.vt) + L")";
    return std::wstring(korlib::view_of(item.bstrVal));
  }
  int bag_size() {
    const Answer count = get(object_of(get(page(), L"Bag")).get(), L"Count");
    return count.value.lVal;
  }
  HRESULT into_bag(const wchar_t* name, bool as_array) { return call(page(), L"PutIntoBag", name, as_array).hr; }
  static std::wstring texts_of(const CComVariant& value) {
    if (value.vt != (VT_ARRAY | VT_VARIANT)) return L"(no array)";
    std::wstring all;
    const auto* elements = static_cast<const VARIANT*>(value.parray->pvData);
    for (ULONG i = 0; i < value.parray->rgsabound[0].cElements; ++i) {
      const bool is_text = elements[i].vt == VT_BSTR;
      all += (is_text ? std::wstring(korlib::view_of(elements[i].bstrVal)) : L"?") + L";";
    }
    return all;
  }
  void decode() { put(page(), L"SubmitDecodeOnPutInto", true); }
  fake::RequestDictionary& query() { return *asp_.request->query_string; }
};

TEST_F(PutInto, OneFieldIsStoredAsTheObjectThatHoldsItsValues) {
  query().set(L"f", {L"1", L"2"});
  EXPECT_EQ(S_OK, into_bag(L"f", false));
  const CComVariant item = bag_item(L"f");
  ASSERT_EQ(VT_DISPATCH, item.vt);
  EXPECT_TRUE(CComQIPtr<ZeltoTypeLibrary::IStringList>(item.pdispVal));
}

TEST_F(PutInto, OneFieldAsAnArray) {
  query().set(L"f", {L"1", L"2"});
  EXPECT_EQ(S_OK, into_bag(L"f", true));
  EXPECT_EQ(L"1;2;", texts_of(bag_item(L"f")));
  EXPECT_EQ(S_OK, into_bag(L"missing", true));
  EXPECT_EQ(L"", texts_of(bag_item(L"missing")));
}

TEST_F(PutInto, OneFieldDecodedIsItsJoinedText) {
  decode();
  query().set(L"f", {L"&#12354;", L"2"});
  EXPECT_EQ(S_OK, into_bag(L"f", false));
  EXPECT_EQ(L"あ, 2", bag_text(L"f"));
  EXPECT_EQ(S_OK, into_bag(L"f", true));
  EXPECT_EQ(L"あ;2;", texts_of(bag_item(L"f")));
}

TEST_F(PutInto, OnlyTheLastElementsFailureCounts) {
  decode();
  query().set_values(L"f", {null_value(), CComVariant(L"&#65;")});
  EXPECT_EQ(S_OK, into_bag(L"f", true));
  EXPECT_EQ(L"?;A;", texts_of(bag_item(L"f")));
  query().set_values(L"g", {CComVariant(L"&#65;"), null_value()});
  EXPECT_EQ(DISP_E_TYPEMISMATCH, into_bag(L"g", true));
  EXPECT_EQ(L"(none)", bag_text(L"g"));
}

TEST_F(PutInto, AValueWithoutATextCannotBeDecoded) {
  decode();
  query().set_raw(L"f", null_value());
  EXPECT_EQ(DISP_E_TYPEMISMATCH, into_bag(L"f", false));
  EXPECT_EQ(L"(none)", bag_text(L"f"));
}

TEST_F(PutInto, AValueThatIsNoObjectIsStoredAsItIs) {
  query().set_raw(L"f", CComVariant(LONG{5}));
  EXPECT_EQ(S_OK, into_bag(L"f", true));
  EXPECT_EQ(5, bag_item(L"f").lVal);
}

TEST_F(PutInto, AnObjectThatIsNoListCannotBecomeAnArray) {
  query().set_raw(L"f", CComVariant(static_cast<IDispatch*>(script_.get())));
  EXPECT_EQ(E_NOINTERFACE, into_bag(L"f", true));
  EXPECT_EQ(L"(none)", bag_text(L"f"));
  query().clear();
}

TEST_F(PutInto, AnExistingItemIsReplaced) {
  for (const wchar_t* value : {L"old", L"new"}) {
    query().set_raw(L"f", CComVariant(value));
    EXPECT_EQ(S_OK, into_bag(L"f", false));
  }
  EXPECT_EQ(L"new", bag_text(L"f"));
  EXPECT_EQ(1, bag_size());
}

TEST_F(PutInto, AllFieldsButTheCommand) {
  query().set_raw(L"a", CComVariant(L"1"));
  query().set_raw(L"c", CComVariant(L"Save"));
  query().set_raw(L"C", CComVariant(L"replaced c"));  // names are found in any case
  query().set_raw(L"b", CComVariant(L"2"));
  put(page(), L"CommandName", L"C");
  EXPECT_EQ(S_OK, into_bag(L"", false));
  EXPECT_EQ(L"1", bag_text(L"a"));
  EXPECT_EQ(L"2", bag_text(L"b"));
  EXPECT_EQ(2, bag_size());
  put(page(), L"CommandName", L"c");
  EXPECT_EQ(S_OK, into_bag(L"", false));
  EXPECT_EQ(3, bag_size()) << "the comparison is exact";
}

TEST_F(PutInto, TheCommandIsCopiedWhenItIsNamed) {
  query().set_raw(L"c", CComVariant(L"Save"));
  EXPECT_EQ(S_OK, into_bag(L"c", false));
  EXPECT_EQ(L"Save", bag_text(L"c"));
}

TEST_F(PutInto, ANotBackablePageSkipsTheFieldOfItsKey) {
  put(page(), L"Backable", false);
  const std::wstring field = draw(L"(#?#)");
  query().set_raw(field, CComVariant(L"Save"));
  query().set_raw(L"c", CComVariant(L"plain"));
  EXPECT_EQ(S_OK, into_bag(L"", false));
  EXPECT_EQ(1, bag_size());
  EXPECT_EQ(L"plain", bag_text(L"c"));
}

TEST_F(PutInto, AllFieldsAreNeverArrays) {
  query().set(L"f", {L"1", L"2"});
  EXPECT_EQ(S_OK, into_bag(L"", true));
  EXPECT_EQ(VT_DISPATCH, bag_item(L"f").vt);
}

TEST_F(PutInto, AllFieldsOfAnEmptyRequestAreNone) {
  EXPECT_EQ(S_OK, into_bag(L"", false));
  EXPECT_EQ(0, bag_size());
}

TEST_F(PutInto, AFieldWithoutANameIsOneFieldToo) {
  query().set_raw(L"", CComVariant(L"nameless"));
  query().set_raw(L"b", CComVariant(L"2"));
  EXPECT_EQ(S_OK, into_bag(L"", false));
  EXPECT_EQ(L"nameless", bag_text(L""));
  EXPECT_EQ(L"2", bag_text(L"b"));
}

TEST_F(PutInto, AFailureStopsWithWhatWasCopied) {
  query().set_raw(L"a", CComVariant(L"1"));
  query().set_raw(L"b", CComVariant(L"2"));
  for (const char* name : {"QueryString.Key", "QueryString.Item"}) {
    asp_.calls->fail(name, E_ABORT, 1);
    EXPECT_EQ(E_ABORT, into_bag(L"", false)) << name;
    EXPECT_EQ(L"1", bag_text(L"a"));
    EXPECT_EQ(L"(none)", bag_text(L"b"));
    asp_.calls->succeed(name);
  }
}

TEST_F(PutInto, FailuresOnTheWayToTheFieldsWriteNothing) {
  query().set_raw(L"a", CComVariant(L"1"));
  for (const char* name : {"Request.ServerVariables", "Request.QueryString", "QueryString.Count"}) {
    asp_.calls->fail(name, E_ABORT);
    EXPECT_EQ(E_ABORT, into_bag(L"", false)) << name;
    asp_.calls->succeed(name);
  }
  asp_.calls->fail("QueryString.Item", E_ABORT);
  EXPECT_EQ(E_ABORT, into_bag(L"a", false));
  EXPECT_EQ(0, bag_size());
}

TEST_F(PutInto, OneCollectionIsReadAndNoOther) {
  query().set_raw(L"f", CComVariant(L"query"));
  asp_.request->form->set_raw(L"f", CComVariant(L"form"));
  into_bag(L"f", false);
  EXPECT_EQ(L"query", bag_text(L"f"));
  asp_.post_form();
  into_bag(L"f", false);
  EXPECT_EQ(L"form", bag_text(L"f"));
}

TEST_F(PutInto, TheViewNeedsAProcess) {
  const Answer answer = call(page(), L"PutIntoView", L"f", false);
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"", answer.description);
  EXPECT_EQ(0, asp_.calls->count("Request.QueryString")) << "nothing is read";
  query().set_raw(L"f", CComVariant(L"1"));
  in_process([&] {
    EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"f", false).hr);
    EXPECT_EQ(L"1", text_of(get(page(), L"View", L"f")));
  });
}

TEST_F(PutInto, AFieldBecomesAScriptVariable) {
  query().set_raw(L"f", CComVariant(L"1"));
  EXPECT_EQ(DISP_E_UNKNOWNNAME, call(page(), L"PutIntoProp", L"f", false).hr);
  script().value(L"f", CComVariant());
  EXPECT_EQ(S_OK, call(page(), L"PutIntoProp", L"f", false).hr);
  EXPECT_EQ(L"1", std::wstring(korlib::view_of(script().current(L"f").bstrVal)));
  EXPECT_EQ(DISPATCH_PROPERTYPUT, script().calls().back().flags);
}

TEST_F(PutInto, AllFieldsStopAtTheFirstThatNoVariableHas) {
  query().set_raw(L"a", CComVariant(L"1"));
  query().set_raw(L"b", CComVariant(L"2"));
  query().set_raw(L"d", CComVariant(L"3"));
  script().value(L"a", CComVariant());
  script().value(L"d", CComVariant());
  EXPECT_EQ(DISP_E_UNKNOWNNAME, call(page(), L"PutIntoProp", L"", false).hr);
  EXPECT_EQ(VT_BSTR, script().current(L"a").vt);
  EXPECT_EQ(VT_EMPTY, script().current(L"d").vt);
}

TEST_F(PutInto, AVariableThatRefusesEndsTheCopying) {
  for (const wchar_t* name : {L"a", L"b", L"d"}) query().set_raw(name, CComVariant(L"1"));
  script().value(L"a", CComVariant());
  script().refuse(L"b", E_ABORT);
  script().value(L"d", CComVariant());
  EXPECT_EQ(E_ABORT, call(page(), L"PutIntoProp", L"b", false).hr);
  EXPECT_EQ(E_ABORT, call(page(), L"PutIntoProp", L"", false).hr);
  EXPECT_EQ(VT_BSTR, script().current(L"a").vt);
  EXPECT_EQ(VT_EMPTY, script().current(L"d").vt);
}

// The bag and the name of the command's field belong to the session; without one, they fail with its error text.
TEST_F(PutInto, NeedsASessionForTheBagAndForTheKey) {
  put(page(), L"Name", L"");
  query().set_raw(L"a", CComVariant(L"1"));
  in_process([&] {
    asp_.calls->log.clear();
    const Answer bag = call(page(), L"PutIntoBag", L"a", false);
    EXPECT_EQ(E_FAIL, bag.hr);
    EXPECT_EQ(L"Could not get Bag. Please specify property 'Name'.", bag.description);
    EXPECT_EQ(0, asp_.calls->count("Request.QueryString")) << "nothing is read";

    EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"", false).hr);
    put(page(), L"Backable", false);
    const Answer all = call(page(), L"PutIntoView", L"", false);
    EXPECT_EQ(E_FAIL, all.hr);
    EXPECT_EQ(L"Could not get Command Name. Please specify property 'Name'.", all.description);
    EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"a", false).hr) << "one field has no need of the key";
    query().clear();
    EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"", false).hr) << "nor has a request without fields";
    put(page(), L"Backable", true);
  });
}

TEST_F(PutInto, ANullNameMeansEveryField) {
  query().set_raw(L"a", CComVariant(L"1"));
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  EXPECT_EQ(S_OK, typed->PutIntoBag(nullptr, VARIANT_FALSE));
  EXPECT_EQ(L"1", bag_text(L"a"));
}

// As a caller that counts up to the terminator sees it.
TEST_F(PutInto, ANameThatBeginsWithANulMeansEveryField) {
  query().set_raw(L"a", CComVariant(L"1"));
  query().set_raw(L"b", CComVariant(L"2"));
  EXPECT_EQ(S_OK, call(page(), L"PutIntoBag", std::wstring(L"\0a", 2), false).hr);
  EXPECT_EQ(L"1", bag_text(L"a"));
  EXPECT_EQ(L"2", bag_text(L"b"));
  EXPECT_EQ(2, bag_size());
}

TEST_F(PutInto, NullIsEmptyPlaysNoPart) {
  put(page(), L"NullIsEmpty", true);
  query().set_raw(L"f", null_value());
  EXPECT_EQ(S_OK, into_bag(L"f", false));
  EXPECT_EQ(VT_NULL, bag_item(L"f").vt);
}

TEST_F(PutInto, NamesMayHoldAnything) {
  const std::wstring name(L"a\xD800 '<>&=\x1F600", 9);
  query().set_raw(name, CComVariant(L"1"));
  EXPECT_EQ(S_OK, call(page(), L"PutIntoBag", name, false).hr);
  EXPECT_EQ(L"1", bag_text(name));
  EXPECT_EQ(S_OK, into_bag(L"", false));
  EXPECT_EQ(1, bag_size());
}

}  // namespace
}  // namespace test
