// Late-bound calls: which arguments are taken, and the members that have no typed counterpart.
#include <korlib/activation.h>
#include <utility>

#include "mirt/frame/type_info_test.h"

namespace test {
namespace {

using LateBoundCalls = TypeInfoTest;
using FireEventMember = TypeInfoTest;
using TypeInformation = TypeInfoTest;

TEST_F(LateBoundCalls, FollowReferencesToVariants) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  ITypeInfo* type = info("g_pTI_IMirt");
  CComVariant text(L"by reference");
  CComVariant object = value_of(script_);
  EXPECT_EQ(S_OK, invoke(type, instance, 36, M, {by_reference(&text)}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 21, M, {by_reference(&object)}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 29, M, {by_reference(&text), by_reference(&text)}).hr);
  EXPECT_EQ(L"Redirect(by reference)AddScript(object)AddMessage(8:by reference,by reference)", page.log);
}

TEST_F(LateBoundCalls, RefuseArgumentsThatDoNotConvert) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  ITypeInfo* type = info("g_pTI_IMirt");
  CComVariant no_object;
  no_object.vt = VT_DISPATCH;
  no_object.pdispVal = nullptr;
  CComVariant no_unknown;
  no_unknown.vt = VT_UNKNOWN;
  no_unknown.punkVal = nullptr;
  const struct {
    DISPID id;
    WORD kind;
    std::vector<CComVariant> arguments;
    HRESULT hr;
  } rows[] = {
      {36, M, {null_value()}, DISP_E_TYPEMISMATCH},         // a string
      {16, P, {value_of(L"maybe")}, DISP_E_TYPEMISMATCH},   // a boolean
      {43, M, {value_of(L"soon")}, DISP_E_TYPEMISMATCH},    // a number
      {43, M, {value_of(1e300)}, DISP_E_TYPEMISMATCH},      // one that is too large
      {21, M, {value_of(L"object")}, DISP_E_TYPEMISMATCH},  // objects
      {21, M, {no_object}, E_INVALIDARG},
      {21, M, {no_unknown}, E_INVALIDARG},
      {10, R, {value_of(1)}, DISP_E_TYPEMISMATCH},
      {10, R, {no_object}, E_INVALIDARG},
      {10, R, {no_unknown}, E_INVALIDARG},
  };
  for (const auto& row : rows) EXPECT_EQ(row.hr, invoke(type, instance, row.id, row.kind, row.arguments).hr) << row.id;
  EXPECT_EQ(L"", page.log);
}

// The place is the one in the block of arguments, which lie in reverse order.
TEST_F(LateBoundCalls, NameTheArgumentThatDoesNotConvert) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  const UINT untouched = 0xFFFFFFFFu;
  const CComVariant good(L"1");
  const CComVariant bad = null_value();
  CComVariant no_object;
  no_object.vt = VT_DISPATCH;
  no_object.pdispVal = nullptr;
  const struct {
    DISPID id;
    WORD kind;
    std::vector<CComVariant> arguments;
    HRESULT hr;
    UINT place;
  } rows[] = {
      {36, M, {bad}, DISP_E_TYPEMISMATCH, 0},        // Redirect(string)
      {25, M, {bad, good}, DISP_E_TYPEMISMATCH, 1},  // Write(string, boolean)
      {25, M, {good, value_of(L"x")}, DISP_E_TYPEMISMATCH, 0},
      {25, M, {bad, value_of(L"x")}, DISP_E_TYPEMISMATCH, 1},         // the first one that does not
      {25, M, {bad, good, good}, DISP_E_TYPEMISMATCH, 2},             // one argument too many moves the places
      {38, M, {good, good, value_of(L"x")}, DISP_E_TYPEMISMATCH, 0},  // NewADOCommand(variant, string, long)
      {41, M, {value_of(L"x"), good}, DISP_E_TYPEMISMATCH, 1},        // MakeKey(long, string), a utility member
      {21, M, {good}, DISP_E_TYPEMISMATCH, 0},                        // AddScript(object)
      {10, R, {good}, DISP_E_TYPEMISMATCH, 0},                        // Output
      {28, M, {bad, good, good}, DISP_E_TYPEMISMATCH, 2},             // FireEvent(string, variant, variant)
      {21, M, {no_object}, E_INVALIDARG, untouched},
      {25, M, {good}, DISP_E_BADPARAMCOUNT, untouched},
      {36, G, {bad}, DISP_E_MEMBERNOTFOUND, untouched},
      {99, M, {bad}, DISP_E_MEMBERNOTFOUND, untouched},
      {36, M, {good}, S_OK, untouched},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.id << " with " << row.arguments.size());
    std::vector<VARIANT> block(row.arguments.rbegin(), row.arguments.rend());
    DISPPARAMS params{block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    UINT place = untouched;
    EXPECT_EQ(row.hr, info("g_pTI_IMirt")->Invoke(instance, row.id, row.kind, &params, nullptr, nullptr, &place));
    EXPECT_EQ(row.place, place);
    EXPECT_EQ(row.hr, info("g_pTI_IMirt")->Invoke(instance, row.id, row.kind, &params, nullptr, nullptr, nullptr));
  }
}

TEST_F(LateBoundCalls, SayHowManyArgumentsAMethodTakes) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  const CComVariant one(L"1");
  const auto words = [&](DISPID id, WORD kind, std::vector<CComVariant> arguments) {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(info("g_pTI_IMirt"), instance, id, kind, std::move(arguments)).hr);
    return test::take_error().description;
  };
  EXPECT_EQ(L"Wrong number of arguments: 'Write' takes 2, not 1", words(25, M, {one}));
  EXPECT_EQ(L"Wrong number of arguments: 'SetView' takes 2, not 0", words(12, M, {}));
  EXPECT_EQ(L"Wrong number of arguments: 'FireEvent' takes 3, not 2", words(28, M, {one, one}));
  // A member's own refusal is told in its own words, or none.
  page.answer = DISP_E_BADPARAMCOUNT;
  EXPECT_EQ(L"", words(36, M, {one}));
}

TEST_F(LateBoundCalls, NameNoArgumentWhenTheMemberItselfRefuses) {
  RecordingMirt page;
  page.answer = DISP_E_TYPEMISMATCH;
  VARIANT argument{};
  DISPPARAMS params{&argument, nullptr, 1, 0};
  UINT place = 0xFFFFFFFFu;
  EXPECT_EQ(DISP_E_TYPEMISMATCH,
            info("g_pTI_IMirt")->Invoke(static_cast<IMirt*>(&page), 36, M, &params, nullptr, nullptr, &place));
  EXPECT_EQ(0xFFFFFFFFu, place);
  EXPECT_EQ(L"Redirect()", page.log);
}

TEST_F(LateBoundCalls, MayLeaveTheKeyOfMessageExistsOut) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  EXPECT_TRUE(is_true(invoke(info("g_pTI_IMirt"), instance, 30, M, {})));
  EXPECT_EQ(S_OK, info("g_pTI_IMirt")->Invoke(instance, 30, M, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(L"MessageExists(10)MessageExists(10)", page.log);
}

TEST_F(LateBoundCalls, TakeObjectsUnderEitherType) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  ITypeInfo* type = info("g_pTI_IMirt");
  const CComVariant as_unknown = value_of(static_cast<IUnknown*>(script_.get()));
  EXPECT_EQ(S_OK, invoke(type, instance, 21, M, {as_unknown}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 10, R, {as_unknown}).hr);
  EXPECT_EQ(L"AddScript(object)putref_Output(object)", page.log);
}

TEST_F(FireEventMember, GivesItsResultThroughAReference) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  ITypeInfo* type = info("g_pTI_IMirt");
  CComVariant outcome(L"before");
  const Answer answer = invoke(type, instance, 28, M, {value_of(L"name"), value_of(1), by_reference(&outcome)});
  EXPECT_TRUE(is_true(answer));
  EXPECT_EQ(L"FireEvent(name,3:1,8:before)", page.log);
  EXPECT_EQ(L"fired", shown(outcome.bstrVal));
  // By value the caller's argument stays as it was.
  const CComVariant kept(L"before");
  EXPECT_TRUE(is_true(invoke(type, instance, 28, M, {value_of(L"name"), value_of(1), kept})));
  EXPECT_EQ(L"before", shown(kept.bstrVal));
}

class ViewMember : public TypeInfoTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER,
                                     korlib::iid_of<IKorLibDictionary>, dictionary_.put_void()));
    page_.view = dictionary_.get();
  }
  Answer view(DISPID id, WORD kind, std::vector<CComVariant> arguments) {
    return invoke(info("g_pTI_IMirt"), static_cast<IMirt*>(&page_), id, kind, std::move(arguments));
  }
  CComVariant item(const CComVariant& key) {
    CComVariant value;
    EXPECT_EQ(S_OK, dictionary_->get_Item(key, &value));
    return value;
  }

  RecordingMirt page_;
  CComPtr<IKorLibDictionary> dictionary_;
};

TEST_F(ViewMember, IsTheDictionaryOrAnItemOfIt) {
  EXPECT_EQ(11, id_in(info("g_pTI_IMirt"), L"View"));
  EXPECT_EQ(12, id_in(info("g_pTI_IMirt"), L"setview"));
  EXPECT_TRUE(object_of(view(11, G, {})) == page_.view);
  // Named, not temporaries: a VARIANT that is passed by value owns nothing, but takes a temporary's value.
  CComVariant key(L"title");
  const CComVariant hello(L"Hello");
  ASSERT_EQ(S_OK, dictionary_->put_Item(key, hello));
  EXPECT_EQ(L"Hello", text_of(view(11, G, {value_of(L"title")})));
  EXPECT_EQ(L"Hello", text_of(view(11, G, {by_reference(&key)})));
  EXPECT_EQ(VT_EMPTY, view(11, G, {value_of(L"new")}).value.vt);
}

TEST_F(ViewMember, StoresThroughSetViewAndThroughAWrite) {
  EXPECT_EQ(S_OK, view(12, M, {value_of(L"a"), value_of(1)}).hr);
  EXPECT_EQ(S_OK, view(11, P, {value_of(L"b"), value_of(2)}).hr);
  EXPECT_EQ(S_OK, view(11, R, {value_of(L"c"), value_of(script_)}).hr);
  EXPECT_EQ(S_OK, view(12, M, {value_of(L"d"), value_of(script_)}).hr);
  CComVariant replacement(L"3");
  EXPECT_EQ(S_OK, view(12, M, {value_of(L"a"), by_reference(&replacement)}).hr);
  EXPECT_EQ(L"3", shown(item(CComVariant(L"a")).bstrVal));
  EXPECT_EQ(2, item(CComVariant(L"b")).lVal);
  EXPECT_EQ(script_.get(), item(CComVariant(L"c")).pdispVal);
  EXPECT_EQ(script_.get(), item(CComVariant(L"d")).pdispVal);
}

TEST_F(ViewMember, NeedsItsArgumentsAndItsKinds) {
  for (const auto& arguments : {std::vector<CComVariant>{}, std::vector<CComVariant>{value_of(L"a")}}) {
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, view(12, M, arguments).hr);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, view(11, P, arguments).hr);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, view(11, R, arguments).hr);
  }
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, view(11, M, {}).hr);
  for (const WORD kind : {G, P, R}) EXPECT_EQ(DISP_E_MEMBERNOTFOUND, view(12, kind, {value_of(1), value_of(2)}).hr);
}

TEST_F(ViewMember, NeedsADictionaryForItems) {
  page_.view = nullptr;
  EXPECT_EQ(E_FAIL, view(11, G, {}).hr);
  EXPECT_EQ(E_NOINTERFACE, view(11, G, {value_of(L"a")}).hr);
  EXPECT_EQ(E_NOINTERFACE, view(12, M, {value_of(L"a"), value_of(1)}).hr);
  page_.view = script_.get();  // an object, but none that keeps items
  EXPECT_EQ(E_NOINTERFACE, view(11, G, {value_of(L"a")}).hr);
  EXPECT_EQ(E_NOINTERFACE, view(11, P, {value_of(L"a"), value_of(1)}).hr);
}

TEST_F(TypeInformation, IsStaticAndBare) {
  for (const char* type_name : {"g_pTI_IMirt", "g_pTI_IMirtedTemplator", "g_pTI_IFormFile", "g_pTI_ITextTemplator",
                                "g_pTI_IUtility", "g_pTI_IStringList", "g_pTI_IRequestDictionary"}) {
    ITypeInfo* type = info(type_name);
    ASSERT_NE(nullptr, type) << type_name;
    EXPECT_EQ(2u, type->AddRef());
    EXPECT_EQ(1u, type->Release());
    EXPECT_EQ(1u, type->Release());
    CComPtr<ITypeInfo> same;
    EXPECT_EQ(S_OK, type->QueryInterface(IID_ITypeInfo, same.put_void()));
    EXPECT_EQ(type, same.get());
    CComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, type->QueryInterface(IID_IUnknown, unknown.put_void()));
    void* other = type;
    EXPECT_EQ(E_NOINTERFACE, type->QueryInterface(IID_IDispatch, &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_EQ(E_INVALIDARG, type->QueryInterface(IID_ITypeInfo, nullptr));

    EXPECT_EQ(E_NOTIMPL, type->GetTypeAttr(nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetTypeComp(nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetFuncDesc(0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetVarDesc(0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetNames(0, nullptr, 0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetRefTypeOfImplType(0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetImplTypeFlags(0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetDocumentation(0, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetDllEntry(0, INVOKE_FUNC, nullptr, nullptr, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetRefTypeInfo(0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->AddressOfMember(0, INVOKE_FUNC, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->CreateInstance(nullptr, IID_IUnknown, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetMops(0, nullptr));
    EXPECT_EQ(E_NOTIMPL, type->GetContainingTypeLib(nullptr, nullptr));
    type->ReleaseTypeAttr(nullptr);
    type->ReleaseFuncDesc(nullptr);
    type->ReleaseVarDesc(nullptr);
  }
}

}  // namespace
}  // namespace test
