// Every row of the member tables: names, identifiers, kinds of call, arguments and results.
#include <cwctype>
#include <span>
#include <string>
#include <vector>

#include "mirt/frame/member_rows.h"
#include "mirt/frame/type_info_test.h"

namespace test {
namespace {

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

  // A row's arguments, and what the object's log shows of a call with them.
  struct Call {
    std::vector<CComVariant> arguments;
    std::wstring logged;
  };
  Call call_of(const Row& row) {
    Call call{{}, member_name(row) + L"("};
    for (const char* kind = row.inputs; *kind; ++kind) {
      std::wstring logged;
      call.arguments.push_back(argument(*kind, &logged));
      call.logged += (kind == row.inputs ? L"" : L",") + logged;
    }
    call.logged += L")";
    return call;
  }

  // Every row of the table, on an object that records.
  template <class Object>
  void check(const char* type_name, std::span<const Row> rows) {
    ITypeInfo* type = info(type_name);
    for (const Row& row : rows) {
      SCOPED_TRACE(testing::Message() << type_name << " " << row.id << " kind " << row.kind);
      Object object;
      void* instance = static_cast<typename Object::interface_type*>(&object);
      const Call call = call_of(row);
      check_answer(type, instance, row, call.arguments);
      EXPECT_EQ(call.logged, object.log);
      check_without_result(type, instance, row, call.arguments);
      EXPECT_EQ(1u, object.references);

      // The member's own failure comes through.
      object.answer = DISP_E_DIVBYZERO;
      EXPECT_EQ(DISP_E_DIVBYZERO, invoke(type, instance, row.id, row.kind, call.arguments).hr);
      object.answer = S_OK;

      object.log.clear();
      check_too_few(type, instance, row, call.arguments);
      check_kinds(type, instance, rows, row);
      EXPECT_EQ(L"", object.log);
    }
    check_names(type, rows);
  }

  void check_answer(ITypeInfo* type, void* instance, const Row& row, const std::vector<CComVariant>& arguments) {
    const Answer answer = invoke(type, instance, row.id, row.kind, arguments);
    EXPECT_EQ(S_OK, answer.hr);
    EXPECT_EQ(type_of(row.result), answer.value.vt);
    if (answer.value.vt == VT_BSTR) {
      EXPECT_EQ(member_name(row), shown(answer.value.bstrVal));
    }
  }

  // Without a place for the result it is freed.
  void check_without_result(ITypeInfo* type, void* instance, const Row& row,
                            const std::vector<CComVariant>& arguments) {
    std::vector<VARIANT> block(arguments.rbegin(), arguments.rend());
    DISPPARAMS params{block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    EXPECT_EQ(S_OK, type->Invoke(instance, row.id, row.kind, &params, nullptr, nullptr, nullptr));
  }

  // One argument too few, for each number of them, and none at all.
  void check_too_few(ITypeInfo* type, void* instance, const Row& row, std::vector<CComVariant> arguments) {
    if (arguments.empty() || row.inputs[0] == 'w') return;
    while (!arguments.empty()) {
      arguments.pop_back();
      EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(type, instance, row.id, row.kind, arguments).hr);
    }
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, type->Invoke(instance, row.id, row.kind, nullptr, nullptr, nullptr, nullptr));
  }

  // A kind that no row of that identifier has is refused.
  void check_kinds(ITypeInfo* type, void* instance, std::span<const Row> rows, const Row& row) {
    for (const WORD kind : {M, G, P, R}) {
      bool served = false;
      for (const Row& other : rows) served |= other.id == row.id && other.kind == kind;
      if (served) continue;
      const std::vector<CComVariant> two = {value_of(L"1"), value_of(L"2")};
      EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(type, instance, row.id, kind, two).hr) << kind;
    }
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(type, instance, row.id, 0, {}).hr);
  }

  // In any letter case.
  void check_names(ITypeInfo* type, std::span<const Row> rows) {
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
