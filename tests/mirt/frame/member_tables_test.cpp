// The members of every interface: names, identifiers, kinds of call, arguments and results.
#include <cwchar>
#include <cwctype>

#include <korlib/activation.h>
#include <korlib/typeinfo.h>

#include "mirt/frame/recording_objects.h"
#include "support/fake.h"
#include "support/module.h"

namespace test {

std::wstring shown(const VARIANT* value) {
  CComVariant text;
  if (FAILED(VariantChangeType(&text, value, 0, VT_BSTR))) return std::to_wstring(value->vt);
  return std::to_wstring(value->vt) + L":" + std::wstring(korlib::view_of(text.bstrVal));
}

namespace {

constexpr WORD M = DISPATCH_METHOD;
constexpr WORD G = DISPATCH_PROPERTYGET;
constexpr WORD P = DISPATCH_PROPERTYPUT;
constexpr WORD R = DISPATCH_PROPERTYPUTREF;

// One row of a member table: a kind of call that is served. `inputs` has a letter a parameter: s string,
// b boolean, l long, v variant, o object; `result` likewise, with u for IUnknown, a for an array and a
// dash for none.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the columns
struct Row {
  DISPID id;
  const wchar_t* name;
  WORD kind;
  const char* inputs;
  char result;
};

const Row kUtilityRows[] = {
    {41, L"MakeKey", M, "ls", 's'},   {42, L"MakeGUID", M, "b", 's'},      {43, L"Sleep", M, "l", '-'},
    {44, L"MD5", M, "vl", 's'},       {45, L"SHA1", M, "vl", 's'},         {46, L"FindString", M, "vv", 'b'},
    {47, L"HanToZen", M, "s", 's'},   {48, L"ZenToHan", M, "s", 's'},      {49, L"SubmitDecode", M, "s", 's'},
    {50, L"Trim", M, "s", 's'},       {51, L"HTMLEncode", M, "s", 's'},    {52, L"Base64Encode", M, "vl", 's'},
    {53, L"URLEncode", M, "vl", 's'}, {54, L"Base64Decode", M, "sl", 'v'}, {55, L"URLDecode", M, "sl", 'v'},
};

const Row kMirtRows[] = {
    {0, L"Bag", G, "", 'o'},
    {1, L"Script", G, "", 'o'},
    {1, L"Script", R, "o", '-'},
    {2, L"Command", G, "", 's'},
    {2, L"Command", P, "s", '-'},
    {3, L"Template", G, "", 's'},
    {3, L"Template", P, "s", '-'},
    {4, L"TemplateFolder", G, "", 's'},
    {4, L"TemplateFolder", P, "s", '-'},
    {5, L"TemplateExt", G, "", 's'},
    {5, L"TemplateExt", P, "s", '-'},
    {6, L"TemplateCharset", G, "", 's'},
    {6, L"TemplateCharset", P, "s", '-'},
    {7, L"DefaultTemplate", G, "", 's'},
    {7, L"DefaultTemplate", P, "s", '-'},
    {8, L"TemplatePermissionPath", G, "", 's'},
    {8, L"TemplatePermissionPath", P, "s", '-'},
    {9, L"CommandName", G, "", 's'},
    {9, L"CommandName", P, "s", '-'},
    {10, L"Output", G, "", 'u'},
    {10, L"Output", R, "o", '-'},
    {13, L"Include", G, "", 'o'},
    {14, L"Request", G, "", 'o'},
    {15, L"Name", G, "", 's'},
    {15, L"Name", P, "s", '-'},
    {16, L"Backable", G, "", 'b'},
    {16, L"Backable", P, "b", '-'},
    {17, L"NullIsEmpty", G, "", 'b'},
    {17, L"NullIsEmpty", P, "b", '-'},
    {18, L"SubmitDecodeOnPutInto", G, "", 'b'},
    {18, L"SubmitDecodeOnPutInto", P, "b", '-'},
    {19, L"CacheTemplate", G, "", 'b'},
    {19, L"CacheTemplate", P, "b", '-'},
    {20, L"SelfEncode", G, "", 'b'},
    {20, L"SelfEncode", P, "b", '-'},
    {21, L"AddScript", M, "o", '-'},
    {22, L"PutIntoBag", M, "sb", '-'},
    {23, L"PutIntoView", M, "sb", '-'},
    {24, L"PutIntoProp", M, "sb", '-'},
    {25, L"Write", M, "sb", '-'},
    {26, L"Abandon", M, "", '-'},
    {27, L"AddLog", M, "ss", '-'},
    {28, L"FireEvent", M, "svv", 'b'},
    {29, L"AddMessage", M, "vs", '-'},
    {30, L"MessageExists", M, "v", 'b'},
    {31, L"ProcessTemplate", M, "s", '-'},
    {32, L"Process", M, "", '-'},
    {33, L"ToArray", M, "o", 'a'},
    {34, L"ToCommand", M, "s", 's'},
    {35, L"ToParameter", M, "ss", 's'},
    {36, L"Redirect", M, "s", '-'},
    {37, L"DrawTemplate", M, "s", '-'},
    {38, L"NewADOCommand", M, "vsl", 'o'},
    {39, L"NewTemplator", M, "s", 'o'},
    {40, L"NewMail", M, "sl", 'o'},
};

const Row kTextTemplatorRows[] = {
    {1, L"Script", G, "", 'o'},
    {1, L"Script", R, "o", '-'},
    {2, L"Stream", G, "", 'u'},
    {2, L"Stream", R, "o", '-'},
    {3, L"ProcessTemplateFile", M, "ss", '-'},
    {4, L"ProcessTemplate", M, "s", '-'},
    {5, L"Write", M, "s", '-'},
    {6, L"Flush", M, "", 's'},
};

const Row kMirtedTemplatorRows[] = {
    {1, L"Script", G, "", 'o'},           {1, L"Script", R, "o", '-'}, {2, L"Main", G, "", 'o'},
    {3, L"Stream", G, "", 'u'},           {3, L"Stream", R, "o", '-'}, {4, L"ProcessTemplateFile", M, "ss", '-'},
    {5, L"ProcessTemplate", M, "s", '-'}, {6, L"Write", M, "sb", '-'}, {7, L"Flush", M, "", 's'},
};

const Row kFormFileRows[] = {
    {1, L"FileName", G, "", 's'},
    {2, L"FileName2", G, "", 's'},
    {3, L"ContentType", G, "", 's'},
    {4, L"Stream", G, "", 'o'},
};

class MemberTables : public ModuleTest {
 protected:
  ITypeInfo* info(const char* name) { return *module_.symbol<ITypeInfo*>(name); }

  // An argument of that kind, and how a member logs it: given in a form that needs conversion.
  CComVariant argument(char kind, std::wstring* logged) {
    switch (kind) {
      case 's':
        *logged = L"7";
        return value_of(7);
      case 'b':
        *logged = L"-1";
        return value_of(L"True");
      case 'l':
        *logged = L"12";
        return value_of(L"12");
      case 'o':
        *logged = L"object";
        return value_of(script_);
      default:
        *logged = L"8:v";
        return value_of(L"v");
    }
  }

  Answer invoke(ITypeInfo* type, void* object, DISPID id, WORD flags, std::vector<CComVariant> arguments) {
    std::vector<VARIANT> block(arguments.rbegin(), arguments.rend());
    DISPPARAMS params{block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    Answer answer;
    VARIANT result;
    result.vt = 0xA5A5;
    answer.hr = type->Invoke(object, id, flags, &params, &result, nullptr, nullptr);
    EXPECT_NE(0xA5A5, result.vt);
    answer.value.attach(&result);
    return answer;
  }

  static VARTYPE type_of(char result) {
    switch (result) {
      case 's':
      case 'v':
        return VT_BSTR;
      case 'b':
        return VT_BOOL;
      case 'o':
        return VT_DISPATCH;
      case 'u':
        return VT_UNKNOWN;
      case 'a':
        return VT_ARRAY | VT_VARIANT;
      default:
        return VT_EMPTY;
    }
  }

  static std::wstring member_name(const Row& row) {
    return (row.kind == G   ? L"get_"
            : row.kind == P ? L"put_"
            : row.kind == R ? L"putref_"
                            : L"") +
           std::wstring(row.name);
  }

  // Every row of the table, on an object that records.
  template <class Object, std::size_t Size>
  void check(const char* type_name, const Row (&rows)[Size]) {
    ITypeInfo* type = info(type_name);
    for (const Row& row : rows) {
      SCOPED_TRACE(testing::Message() << type_name << " " << row.id << " kind " << row.kind);
      Object object;
      void* instance = static_cast<typename Object::interface_type*>(&object);
      std::vector<CComVariant> arguments;
      std::wstring expected = member_name(row) + L"(";
      for (const char* kind = row.inputs; *kind; ++kind) {
        std::wstring logged;
        arguments.push_back(argument(*kind, &logged));
        expected += (kind == row.inputs ? L"" : L",") + logged;
      }
      expected += L")";

      {
        const Answer answer = invoke(type, instance, row.id, row.kind, arguments);
        EXPECT_EQ(S_OK, answer.hr);
        EXPECT_EQ(expected, object.log);
        EXPECT_EQ(type_of(row.result), answer.value.vt);
        if (answer.value.vt == VT_BSTR) {
          EXPECT_EQ(member_name(row), shown(answer.value.bstrVal));
        }
      }
      EXPECT_EQ(1u, object.references);

      // Without a place for the result it is freed.
      std::vector<VARIANT> block(arguments.rbegin(), arguments.rend());
      DISPPARAMS params{block.data(), nullptr, static_cast<UINT>(block.size()), 0};
      EXPECT_EQ(S_OK, type->Invoke(instance, row.id, row.kind, &params, nullptr, nullptr, nullptr));
      EXPECT_EQ(1u, object.references);

      // The member's own failure comes through.
      object.answer = DISP_E_DIVBYZERO;
      EXPECT_EQ(DISP_E_DIVBYZERO, invoke(type, instance, row.id, row.kind, arguments).hr);
      object.answer = S_OK;
      object.log.clear();

      // One argument too few, for each number of them.
      while (!arguments.empty()) {
        arguments.pop_back();
        EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(type, instance, row.id, row.kind, arguments).hr);
      }
      if (*row.inputs) {
        EXPECT_EQ(DISP_E_BADPARAMCOUNT, type->Invoke(instance, row.id, row.kind, nullptr, nullptr, nullptr, nullptr));
      }
      EXPECT_EQ(L"", object.log);
      check_kinds(type, instance, rows, row);
    }
    check_names(type, rows);
  }

  // A kind that no row of that identifier has is refused.
  template <std::size_t Size>
  void check_kinds(ITypeInfo* type, void* instance, const Row (&rows)[Size], const Row& row) {
    for (const WORD kind : {M, G, P, R}) {
      bool served = false;
      for (const Row& other : rows) served |= other.id == row.id && other.kind == kind;
      if (served) continue;
      const std::vector<CComVariant> two = {value_of(L"1"), value_of(L"2")};
      EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(type, instance, row.id, kind, two).hr) << kind;
    }
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(type, instance, row.id, 0, {}).hr);
  }

  template <std::size_t Size>
  void check_names(ITypeInfo* type, const Row (&rows)[Size]) {
    for (const Row& row : rows) {
      std::wstring lower = row.name;
      std::wstring upper = row.name;
      for (wchar_t& c : lower) c = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
      for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
      for (const std::wstring& name : {std::wstring(row.name), lower, upper}) EXPECT_EQ(row.id, id_in(type, name));
    }
    for (const wchar_t* name : {L"", L"Mirt", L"Bagg", L"Ba", L"_NewEnum"}) {
      EXPECT_EQ(DISPID_UNKNOWN, id_in(type, name));
    }
  }

  static DISPID id_in(ITypeInfo* type, const std::wstring& name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name.c_str())};
    MEMBERID id = 12345;
    const HRESULT hr = type->GetIDsOfNames(names, 1, &id);
    EXPECT_EQ(id == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK, hr);
    return id;
  }

  void check_unknown_identifiers(const char* type_name, void* instance, std::initializer_list<DISPID> ids) {
    for (const DISPID id : ids) {
      for (const WORD kind : {M, G, P, R}) {
        EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(info(type_name), instance, id, kind, {value_of(1)}).hr) << id;
      }
    }
  }

  CComPtr<FakeScript> script_ = FakeScript::make();
};

TEST_F(MemberTables, ServeThePageController) { check<RecordingMirt>("g_pTI_IMirt", kMirtRows); }
TEST_F(MemberTables, ServeTheUtilityMembersOfThePageController) { check<RecordingMirt>("g_pTI_IMirt", kUtilityRows); }
TEST_F(MemberTables, ServeTheUtilityObject) { check<RecordingUtility>("g_pTI_IUtility", kUtilityRows); }
TEST_F(MemberTables, ServeTheTextTemplator) {
  check<RecordingTextTemplator>("g_pTI_ITextTemplator", kTextTemplatorRows);
}
TEST_F(MemberTables, ServeTheChildTemplator) {
  check<RecordingMirtedTemplator>("g_pTI_IMirtedTemplator", kMirtedTemplatorRows);
}
TEST_F(MemberTables, ServeTheUploadedFile) { check<RecordingFormFile>("g_pTI_IFormFile", kFormFileRows); }

TEST_F(MemberTables, RefuseIdentifiersThatNobodyHas) {
  RecordingMirt page;
  check_unknown_identifiers("g_pTI_IMirt", static_cast<IMirt*>(&page),
                            {-1, -3, -4, 56, 57, 2147483647, -2147483647 - 1});
  RecordingUtility utility;
  check_unknown_identifiers("g_pTI_IUtility", static_cast<IUtility*>(&utility), {-1, 0, 1, 40, 56, 2147483647});
  RecordingTextTemplator text;
  check_unknown_identifiers("g_pTI_ITextTemplator", static_cast<ITextTemplator*>(&text), {-1, 0, 7, 41});
  RecordingMirtedTemplator mirted;
  check_unknown_identifiers("g_pTI_IMirtedTemplator", static_cast<IMirtedTemplator*>(&mirted), {-1, 0, 8, 41});
  RecordingFormFile file;
  check_unknown_identifiers("g_pTI_IFormFile", static_cast<IFormFile*>(&file), {-1, 0, 5, 41});
  EXPECT_EQ(L"", page.log + utility.log + text.log + mirted.log + file.log);
}

TEST_F(MemberTables, ShareNoNamesBetweenInterfaces) {
  EXPECT_EQ(0, id_in(info("g_pTI_IMirt"), L"BAG"));
  EXPECT_EQ(45, id_in(info("g_pTI_IMirt"), L"sha1"));
  EXPECT_EQ(45, id_in(info("g_pTI_IUtility"), L"sha1"));
  EXPECT_EQ(4, id_in(info("g_pTI_ITextTemplator"), L"processtemplate"));
  EXPECT_EQ(DISPID_UNKNOWN, id_in(info("g_pTI_IUtility"), L"Bag"));
  EXPECT_EQ(DISPID_UNKNOWN, id_in(info("g_pTI_ITextTemplator"), L"Main"));
}

TEST_F(MemberTables, AreEmptyForTheRequestInterfaces) {
  for (const char* type_name : {"g_pTI_IStringList", "g_pTI_IRequestDictionary"}) {
    ITypeInfo* type = info(type_name);
    for (const wchar_t* name : {L"Item", L"Count", L"Key", L"_NewEnum", L""})
      EXPECT_EQ(DISPID_UNKNOWN, id_in(type, name));
    EXPECT_EQ(DISP_E_UNKNOWNNAME, type->GetIDsOfNames(nullptr, 0, nullptr));
    check_unknown_identifiers(type_name, nullptr, {0, 1, -4, 41});
  }
  EXPECT_EQ(info("g_pTI_IStringList"), info("g_pTI_IRequestDictionary"));
}

TEST_F(MemberTables, LookAtTheFirstNameOnly) {
  ITypeInfo* type = info("g_pTI_IMirt");
  wchar_t write[] = L"Write";
  wchar_t text[] = L"Process";
  LPOLESTR names[] = {write, text};
  MEMBERID ids[] = {12345, 12345};
  EXPECT_EQ(S_OK, type->GetIDsOfNames(names, 2, ids));
  EXPECT_EQ(25, ids[0]);
  EXPECT_EQ(DISPID_UNKNOWN, ids[1]);
  EXPECT_EQ(E_INVALIDARG, type->GetIDsOfNames(nullptr, 1, ids));
  EXPECT_EQ(E_INVALIDARG, type->GetIDsOfNames(names, 0, ids));
  EXPECT_EQ(E_INVALIDARG, type->GetIDsOfNames(names, 1, nullptr));
}

// A caller that cannot tell a read from a call sets both bits.
TEST_F(MemberTables, ServeEitherKindThatACallerOffers) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  ITypeInfo* type = info("g_pTI_IMirt");
  EXPECT_EQ(S_OK, invoke(type, instance, 32, M | G, {}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 15, M | G, {}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 1, P | R, {value_of(script_)}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 10, G | R, {value_of(script_)}).hr);  // the write goes first
  EXPECT_EQ(L"Process()get_Name()putref_Script(object)putref_Output(object)", page.log);
}

TEST_F(MemberTables, FollowReferencesToVariants) {
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

TEST_F(MemberTables, RefuseArgumentsThatDoNotConvert) {
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

TEST_F(MemberTables, TakeObjectsUnderEitherType) {
  RecordingMirt page;
  void* instance = static_cast<IMirt*>(&page);
  ITypeInfo* type = info("g_pTI_IMirt");
  const CComVariant as_unknown = value_of(static_cast<IUnknown*>(script_.get()));
  EXPECT_EQ(S_OK, invoke(type, instance, 21, M, {as_unknown}).hr);
  EXPECT_EQ(S_OK, invoke(type, instance, 10, R, {as_unknown}).hr);
  EXPECT_EQ(L"AddScript(object)putref_Output(object)", page.log);
}

TEST_F(MemberTables, FireEventGivesItsResultThroughAReference) {
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

class ViewMember : public MemberTables {
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

TEST_F(MemberTables, TypeInformationIsStaticAndBare) {
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
