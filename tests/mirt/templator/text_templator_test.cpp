// "Mirt.TextTemplator" as a script uses it.
#include <functional>
#include <utility>

#include <korlib/dictionary.h>
#include <mirt/mirt.h>

#include "mirt/templator/text_templator_fixture.h"
#include "support/fake.h"
#include "support/fake_script.h"
#include "support/module.h"

namespace test {
namespace {

TEST_F(TextTemplator, HoldsNothingAtFirst) { EXPECT_EQ(L"", flush()); }

// It was never released then: the fixture looks at what is alive in the end.
TEST_F(TextTemplator, MayBeItsOwnScript) {
  EXPECT_EQ(S_OK, putref(templator_.get(), L"Script", templator_).hr);
  EXPECT_EQ(templator_.get(), object_of(get(templator_.get(), L"Script")).get());
  process(L"so far(#Flush#)");
  EXPECT_EQ(L"so farso far", flush());
}

TEST_F(TextTemplator, FlushesEverythingWrittenSoFar) {
  EXPECT_EQ(S_OK, call(templator_.get(), L"Write", L"a").hr);
  EXPECT_EQ(S_OK, call(templator_.get(), L"Write", L"b").hr);
  EXPECT_EQ(L"ab", flush());
  EXPECT_EQ(L"ab", flush());
  EXPECT_EQ(S_OK, call(templator_.get(), L"Write", L"\u00e9\U0001F600").hr);
  EXPECT_EQ(L"ab\u00e9\U0001F600", flush());
}

TEST_F(TextTemplator, LeavesCommentsOut) {
  EXPECT_EQ(L"xy", draw(L"x(# comment #)y"));
  EXPECT_EQ(L"xy", draw(L"x(#\tname#)y"));
  EXPECT_EQ(L"xy", draw(L"x(#\nname#)y"));
  EXPECT_EQ(L"xy", draw(L"x(#\rname|a#|#b#)y"));
  EXPECT_TRUE(script_->calls().empty());
}

TEST_F(TextTemplator, WritesVariables) {
  script_->value(L"Title", L"Hello");
  script_->value(L"Number", 12);
  script_->value(L"Yes", true);
  script_->value(L"Nothing", CComVariant());
  EXPECT_EQ(L"Hello|12|True||", draw(L"(#Title#)|(#Number#)|(#Yes#)|(#Nothing#)|"));
}

TEST_F(TextTemplator, WalksAVariableByTheParameters) {
  const CComPtr<FakeScript> row = FakeScript::make();
  row->value(L"Name", L"Ada");
  script_->value(L"Rows", value_of(std::vector<CComVariant>{value_of(0), value_of(1), value_of(row)}));
  EXPECT_EQ(L"Ada", draw(L"(#Rows|2#|#Name#)"));
  EXPECT_EQ(L"1", draw(L"(#Rows#|#1#)"));
  EXPECT_EQ(L"<code 8002000B>", draw(L"(#Rows|3#)"));
  EXPECT_EQ(L"<code 80020005>", draw(L"(#Rows|x#)"));
}

TEST_F(TextTemplator, TakesAMemberFromTheScriptAddedLast) {
  const CComPtr<FakeScript> later = FakeScript::make();
  script_->value(L"Both", L"first");
  script_->value(L"Only", L"kept");
  later->value(L"Both", L"second");
  add(script_);
  add(later);
  EXPECT_EQ(S_OK, process(L"(#Both#) (#Only#)").hr);
  EXPECT_EQ(L"second kept", flush());
}

TEST_F(TextTemplator, CallsAFunctionWithItselfAndTheParameters) {
  script_->function(L"Row", [&](const Arguments& arguments) {
    EXPECT_EQ(2u, arguments.size());
    EXPECT_EQ(templator_.get(), arguments.at(0).pdispVal);
    EXPECT_EQ(VT_ARRAY | VT_VARIANT, arguments.at(1).vt);
    const SAFEARRAY* array = arguments[1].parray;
    std::wstring text = std::to_wstring(array->rgsabound[0].cElements);
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i) {
      const VARIANT& param = static_cast<const VARIANT*>(array->pvData)[i];
      EXPECT_EQ(VT_BSTR, param.vt);
      text += L"," + std::wstring(korlib::view_of(param.bstrVal));
    }
    return value_of(text);
  });
  script_->function(L"Silent", [](const Arguments&) { return CComVariant(); });
  EXPECT_EQ(L"2,a,b", draw(L"(#Row|a#|#b#)"));
  EXPECT_EQ(L"0", draw(L"(#Row#)"));
  EXPECT_EQ(L"[]", draw(L"[(#Silent#)]"));
}

TEST_F(TextTemplator, LetsAFunctionWriteAndProcess) {
  script_->value(L"Inner", L"i");
  script_->function(L"Outer", [&](const Arguments&) {
    call(templator_.get(), L"Write", L"<");
    process(L"(#Inner#)");
    return value_of(L">");
  });
  EXPECT_EQ(L"a<i>b", draw(L"a(#Outer#)b"));
}

TEST_F(TextTemplator, AsksForAValueByKeyWhereNoMemberHasTheName) {
  script_->function(L"", [](const Arguments& arguments) {
    EXPECT_EQ(1u, arguments.size());
    return value_of(L"item " + std::wstring(korlib::view_of(arguments.at(0).bstrVal)));
  });
  EXPECT_EQ(L"item key", draw(L"(#key#)"));
  EXPECT_EQ(L"item key", draw(L"(#key|ignored#)"));
}

TEST_F(TextTemplator, ReadsADictionary) {
  CComPtr<IKorLibDictionary> dictionary;
  ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER,
                                   korlib::iid_of<IKorLibDictionary>, dictionary.put_void()));
  CComBSTR key(L"Title");
  CComBSTR text(L"Hello");
  ASSERT_EQ(S_OK, dictionary->put_Item(korlib::borrowed(key.get()), korlib::borrowed(text.get())));
  EXPECT_EQ(S_OK, putref(templator_.get(), L"Script", dictionary).hr);
  EXPECT_EQ(S_OK, process(L"(#Title#)").hr);
  EXPECT_EQ(L"Hello", flush());
}

TEST_F(TextTemplator, FailsAMarkWhoseItemHasNoText) {
  script_->function(L"", [](const Arguments&) { return null_value(); });
  EXPECT_EQ(L"<code 80020005>", draw(L"a(#key#)b"));
}

// Every name is an empty variable, with a say in what reading it does. Calling one succeeds.
void define_variables(BareScript& script, std::function<HRESULT()> read) {
  script.on_call = [read = std::move(read)](const BareScript::Call& call) {
    return call.flags == DISPATCH_PROPERTYGET ? read() : S_OK;
  };
}

TEST_F(TextTemplator, FailsAMarkWhoseVariableCannotBeRead) {
  BareScript script;
  define_variables(script, [] { return DISP_E_DIVBYZERO; });
  EXPECT_EQ(S_OK, putref(templator_.get(), L"Script", static_cast<IDispatch*>(&script)).hr);
  EXPECT_EQ(DISP_E_DIVBYZERO, process(L"a(#x#)b").hr);
  EXPECT_EQ(L"a", flush());
  templator_.reset();
  EXPECT_EQ(1u, script.references);
}

TEST_F(TextTemplator, LivesUntilItHasDrawn) {
  BareScript script;
  define_variables(script, [&] {
    templator_.reset();
    EXPECT_EQ(1, module_.count());
    return S_OK;
  });
  CComPtr<ITextTemplator> typed;
  ASSERT_EQ(S_OK, templator_.query(typed.put()));
  ASSERT_EQ(S_OK, typed->putref_Script(&script));
  ITextTemplator* const lent = typed.get();
  typed.reset();
  EXPECT_EQ(S_OK, lent->ProcessTemplate(CComBSTR(L"a(#x#)b")));
  EXPECT_EQ(0, module_.count());
  EXPECT_EQ(1u, script.references);
}

TEST_F(TextTemplator, FailsAMarkThatNobodyKnows) {
  EXPECT_EQ(DISP_E_UNKNOWNNAME, process(L"a(#Unknown#)b").hr);
  EXPECT_EQ(L"a", flush());
}

TEST_F(TextTemplator, PassesFailuresOn) {
  script_->failing(L"Broken", DISP_E_DIVBYZERO, L"cannot");
  script_->value(L"Null", null_value());
  EXPECT_EQ(L"<code 80020012>cannot", draw(L"(#Broken#)"));
  EXPECT_EQ(L"<code 80020005>", draw(L"a(#Null#)b"));
  const CComPtr<FakeScript> refusing = FakeScript::make();
  refusing->failing(L"", E_ACCESSDENIED);
  add(refusing);
  script_->remove(L"Broken");
  EXPECT_EQ(L"<code 80020003>", draw(L"(#Broken#)"));  // of the script asked last, which has no items
}

TEST_F(TextTemplator, NamesAFaultInTheTemplate) {
  const Answer answer = process(L"a#)b");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Templator", answer.source);
  EXPECT_EQ(L"Invalid mark order.", answer.description);
  EXPECT_EQ(L"a", flush());
}

TEST_F(TextTemplator, HandsOutTheScriptAddedLast) {
  EXPECT_EQ(VT_DISPATCH, get(templator_.get(), L"Script").value.vt);
  EXPECT_EQ(nullptr, get(templator_.get(), L"Script").value.pdispVal);
  const CComPtr<FakeScript> later = FakeScript::make();
  add(script_);
  add(later);
  EXPECT_EQ(later.get(), object_of(get(templator_.get(), L"Script")).get());
  CComPtr<ITextTemplator> typed;
  ASSERT_EQ(S_OK, templator_.query(typed.put()));
  EXPECT_EQ(S_OK, typed->putref_Script(nullptr));
  IDispatch* last = templator_.get();  // poison
  EXPECT_EQ(S_OK, typed->get_Script(&last));
  EXPECT_EQ(nullptr, last);
  EXPECT_EQ(E_POINTER, typed->get_Script(nullptr));
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, process(L"(#x#)").hr);  // of the first, asked last, which has no items
}

// An object whose late-bound side, where it has one, is another object.
class Front final : public IUnknown {
 public:
  explicit Front(IDispatch* late_bound) : late_bound_(late_bound) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    if (riid == IID_IDispatch && late_bound_) return late_bound_->QueryInterface(riid, ppv);
    return korlib::query_list<IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

 private:
  IDispatch* late_bound_;
};

TEST_F(TextTemplator, AsksAnObjectForItsLateBoundSide) {
  Front front(script_.get());
  EXPECT_EQ(S_OK, putref(templator_.get(), L"Script", static_cast<IUnknown*>(&front)).hr);
  EXPECT_EQ(script_.get(), object_of(get(templator_.get(), L"Script")).get());
  Front bare(nullptr);
  EXPECT_EQ(E_NOINTERFACE, putref(templator_.get(), L"Script", static_cast<IUnknown*>(&bare)).hr);
  EXPECT_EQ(script_.get(), object_of(get(templator_.get(), L"Script")).get());
}

TEST_F(TextTemplator, ComesOutOfThePoolLikeNew) {
  add(script_);
  EXPECT_EQ(S_OK, call(templator_.get(), L"Write", L"old").hr);
  const IDispatch* block = templator_.get();
  templator_.reset();
  templator_ = module_.create(L"TextTemplator");
  EXPECT_EQ(block, templator_.get()) << "the pool gave another block";
  EXPECT_EQ(L"", flush());
  EXPECT_EQ(nullptr, get(templator_.get(), L"Script").value.pdispVal);
}

// Any other character is the first one of a name. Every blank of Unicode is among these.
TEST_F(TextTemplator, TakesFourCharactersForACommentAndNoMore) {
  std::wstring asked;
  script_->function(L"", [&](const Arguments& arguments) {
    asked = korlib::view_of(arguments.at(0).bstrVal);
    return CComVariant();
  });
  add(script_);
  std::wstring others;
  for (wchar_t c = 1; c <= 0x3000; ++c) others += c;
  others += L"\uFEFF\uFFFD\U0001F600\U000E0020\U0010FFFF";
  std::wstring comments;
  for (const wchar_t c : others) {
    if (c == L'|') continue;  // ends the name
    asked.clear();
    const std::wstring name = c + std::wstring(L"name");
    ASSERT_EQ(S_OK, process((L"(#" + name + L"#)").c_str()).hr) << static_cast<int>(c);
    if (asked.empty()) {
      comments += c;
    } else {
      ASSERT_EQ(name, asked);
    }
  }
  EXPECT_EQ(L"\t\n\r ", comments);
}

TEST_F(TextTemplator, AsksForAValueByKeyWhateverTheLookUpFailedWith) {
  for (const HRESULT hr : {DISP_E_UNKNOWNNAME, E_ACCESSDENIED, E_FAIL, DISP_E_MEMBERNOTFOUND, DISP_E_PARAMNOTFOUND}) {
    script_->fail_unknown_names(hr);
    script_->function(L"", [](const Arguments& arguments) { return arguments.at(0); });
    EXPECT_EQ(L"[key]", draw(L"[(#key#)]")) << hr;
    script_->failing(L"", E_ABORT);
    EXPECT_EQ(L"<code 80004004>", draw(L"(#key#)")) << "what the value's failure was, not the name's";
  }
}

TEST_F(TextTemplator, FindsAMemberBehindAScriptThatRefusesToLook) {
  script_->value(L"x", L"found");
  add(script_);
  const CComPtr<FakeScript> refusing = FakeScript::make();
  refusing->fail_unknown_names(E_ACCESSDENIED);
  add(refusing);
  EXPECT_EQ(S_OK, process(L"(#x#)").hr);
  EXPECT_EQ(L"found", flush());
}

}  // namespace
}  // namespace test
