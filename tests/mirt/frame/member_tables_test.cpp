// The members of every interface: names, identifiers, kinds of call, arguments and results.
#include <cwctype>

#include "mirt/frame/type_info_test.h"

namespace test {
namespace {

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

class MemberTables : public TypeInfoTest {
 protected:
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

  void check_unknown_identifiers(const char* type_name, void* instance, std::initializer_list<DISPID> ids) {
    for (const DISPID id : ids) {
      for (const WORD kind : {M, G, P, R}) {
        EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(info(type_name), instance, id, kind, {value_of(1)}).hr) << id;
      }
    }
  }
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
  names[0] = nullptr;
  EXPECT_EQ(E_INVALIDARG, type->GetIDsOfNames(names, 1, ids));
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

}  // namespace
}  // namespace test
