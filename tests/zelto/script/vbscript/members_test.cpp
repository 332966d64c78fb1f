// Members of objects of all kinds, as compiled programs name them, and what crosses the border with them.
#include "zelto/script/vbscript/library_fixture.h"

namespace test {
namespace {

class VbMembers : public VbLibraryTest {
 protected:
  // A class as the compiler writes it, and `x`, an instance.
  std::string with_class(std::wstring_view expression) {
    return shown(
        LR"((() => {
      class Basket extends Instance {
        constructor() { super(); this["field"] = undefined; this["p list"] = dim(true, 2); }
        get [" name"]() { return "Basket"; }
        get [" default"]() { return "item"; }
        ["class_initialize"]() { this["field"] = "made"; }
        ["twice"](n) { return mul(n, 2); }
        ["raises"](n) { n = arg(n); n.v = add(n.v, 1); return n.v; }
        ["get item"](i) { return ix(this["p list"], i); }
        ["let item"](i, v) { putix(this["p list"], v, i); }
        ["get reading"]() { return 7; }
        ["set thing"](v) { this["field"] = v; }
        static { byref(this.prototype["raises"], [0]); }
      }
      const x = make(Basket); return )" +
        std::wstring(expression) + L"; })()");
  }

  // What an expression hands to a component.
  VARTYPE type_of(std::wstring_view expression) {
    must_run_as_written(L"with ($zelto_vb) with (fn) call(o, 'Keep', " + std::wstring(expression) + L")");
    return probe->kept.vt;
  }
  // What the library makes of what a component gives.
  std::string of(const VARIANT& value) {
    probe->kept = value;
    return shown(L"get(o, 'Give')");
  }
};

TEST_F(VbMembers, OfObjectsAreFoundInAnyLetterCase) {
  expect({
      {L"get(o, 'NAME')", "String probe"},
      {L"($zelto_vb.let(o, 'name', 'other'), get(o, 'Name'))", "String other"},
      {L"get(o, 'readtext', 3)", "String xxx"},
      {L"get(o, 'ReadText')", "String everything"},
      {L"get(o, 'readtext', missing)", "String everything"},
      {L"get(o, 'Nothing')", "error 438"},
      {L"$zelto_vb.let(o, 'Nothing', 1)", "error 438"},
      {L"get(o, 'Close', 1)", "error 450"},
      {L"get(nothing, 'Name')", "error 91"},
      {L"get(undefined, 'Name')", "error 424"},
      {L"get('text', 'Name')", "error 424"},
      {L"get(array(1), 'Name')", "error 424"},
      {L"typename(o)", "String Object"},
  });
}

TEST_F(VbMembers, ThatAreDefaultStandForTheObject) {
  probe->items[L"1"] = CComVariant(LONG{5});
  probe->items[L"a"] = CComVariant(L"text");
  expect({
      {L"ix(o, 1)", "Long 5"},
      {L"ix1(o, 'a')", "String text"},
      {L"(putix(o, 7, 'b'), ix(o, 'b'))", "Integer 7"},
      {L"add(ix(o, 1), 1)", "Long 6"},
      {L"join(array(...each(o)), ' ')", "String 1 a b"},
      {L"val(o)", "error 438"},
      {L"add(o, 1)", "error 438"},
  });
  EXPECT_EQ(L"put", probe->how);
  must_run_as_written(L"$zelto_vb.setix(o, p, 'c')");
  EXPECT_EQ(L"putref", probe->how);
  EXPECT_EQ(VT_DISPATCH, probe->put_type);
  const CComPtr<Field> field = korlib::make<Field>();
  field->value = CComVariant(2.5);
  const CComPtr<Row> row = korlib::make<Row>();
  row->field = field.get();
  realm->set_object(L"row", row.get());
  expect({
      {L"val(get(row, 'Item', 'x'))", "Double 2.5"},
      {L"val(get(row, 'Fields', 'x'))", "Double 2.5"},
      {L"add(ix(row, 'x'), 1)", "Double 3.5"},
      {L"(putix(row, 4, 'x'), val(ix(row, 'x')))", "Integer 4"},
      {L"vartype(ix(row, 'x'))", "Integer 2"},
      {L"isnumeric(ix(row, 'x'))", "Boolean True"},
  });
  field->value = CComVariant();
  field->value.vt = VT_NULL;
  expect({{L"isnull(ix(row, 'x'))", "Boolean True"}, {L"cat(ix(row, 'x'), '')", "String "}});
}

TEST_F(VbMembers, HandOverTheTypesOfTheLanguage) {
  const struct {
    const wchar_t* expression;
    VARTYPE type;
  } rows[] = {
      {L"1", VT_I2},
      {L"32768", VT_I4},
      {L"clng(1)", VT_I4},
      {L"1.5", VT_R8},
      {L"cdbl(1)", VT_R8},
      {L"csng(1)", VT_R4},
      {L"cbyte(1)", VT_UI1},
      {L"ccur('1.25')", VT_CY},
      {L"dateserial(2024, 1, 1)", VT_DATE},
      {L"'text'", VT_BSTR},
      {L"true", VT_BOOL},
      {L"undefined", VT_EMPTY},
      {L"null", VT_NULL},
      {L"nothing", VT_DISPATCH},
      {L"o", VT_DISPATCH},
      {L"array(1, 2)", VT_ARRAY | VT_VARIANT},
      {L"chrb(1)", VT_ARRAY | VT_UI1},
      {L"regexp()", VT_DISPATCH},
      {L"temp(1)", VT_I2},
  };
  for (const auto& row : rows) EXPECT_EQ(row.type, type_of(row.expression)) << narrow(row.expression);
  EXPECT_EQ(VT_DISPATCH, type_of(L"nothing"));
  EXPECT_EQ(nullptr, probe->kept.pdispVal);
  EXPECT_EQ(VT_CY, type_of(L"ccur('-1.25')"));
  EXPECT_EQ(-12500, probe->kept.cyVal.int64);
  EXPECT_EQ(VT_DATE, type_of(L"dateserial(2024, 1, 1)"));
  EXPECT_EQ(45292, probe->kept.date);
  expect({{L"get(o, 'TypeOf', missing)", "Long 10"}, {L"vartype(get(o, 'TypeOf', 1))", "Integer 3"}});
}

TEST_F(VbMembers, HandOverArraysWithAllDimensions) {
  EXPECT_EQ(VT_ARRAY | VT_VARIANT,
            type_of(L"(() => { const a = dim(true, 1, 2); putix(a, 'x', 1, 0); putix(a, 'y', 0, 2); return a; })()"));
  SAFEARRAY* const array = probe->kept.parray;
  ASSERT_EQ(2U, SafeArrayGetDim(array));
  LONG upper = 0;
  EXPECT_EQ(S_OK, SafeArrayGetUBound(array, 1, &upper));
  EXPECT_EQ(1, upper);
  EXPECT_EQ(S_OK, SafeArrayGetUBound(array, 2, &upper));
  EXPECT_EQ(2, upper);
  const LONG at[] = {1, 0};
  CComVariant element;
  EXPECT_EQ(S_OK, SafeArrayGetElement(array, at, static_cast<VARIANT*>(&element)));
  EXPECT_EQ(L"x", korlib::view_of(element.bstrVal));
  expect({
      {L"ix(get(o, 'Give'), 0, 2)", "String y"},
      {L"ubound(get(o, 'Give'), 2)", "Integer 2"},
      {L"ubound(get(o, 'Give'), 3)", "error 9"},
  });
}

TEST_F(VbMembers, GiveTheKindOfEachType) {
  VARIANT value{};
  const auto make = [&](VARTYPE type, LONGLONG bits) {
    value = VARIANT{};
    value.vt = type;
    value.llVal = bits;
    return value;
  };
  EXPECT_EQ("Integer -3", of(make(VT_I2, 0xFFFD)));
  EXPECT_EQ("Long 3", of(make(VT_I4, 3)));
  EXPECT_EQ("Long 70000", of(make(VT_I4, 70000)));
  EXPECT_EQ("Byte 200", of(make(VT_UI1, 200)));
  EXPECT_EQ("Currency 1.25", of(make(VT_CY, 12500)));
  EXPECT_EQ("Double 4294967295", of(make(VT_UI4, 0xFFFFFFFF)));
  EXPECT_EQ("Double 1E+15", of(make(VT_I8, 1000000000000000)));
  EXPECT_EQ("Boolean True", of(make(VT_BOOL, 0xFFFF)));
  EXPECT_EQ("Nothing", of(make(VT_DISPATCH, 0)));
  EXPECT_EQ("Double 3", of(CComVariant(3.0)));
  EXPECT_EQ("Double 3.5", of(CComVariant(3.5)));
  CComVariant date(45292.5);
  date.vt = VT_DATE;
  EXPECT_EQ("Date 2024-01-01 12:00:00", of(date));
  EXPECT_EQ("Byte()", shown(L"typename(new Uint8Array(1))").substr(7));
}

TEST_F(VbMembers, OfInstancesArePublicOnes) {
  EXPECT_EQ("String made", with_class(L"get(x, 'FIELD')"));
  EXPECT_EQ("Integer 8", with_class(L"get(x, 'Twice', 4)"));
  EXPECT_EQ("error 450", with_class(L"get(x, 'Twice')"));
  EXPECT_EQ("error 438", with_class(L"get(x, 'Missing')"));
  EXPECT_EQ("error 438", with_class(L"get(x, 'constructor')"));
  EXPECT_EQ("Integer 5", with_class(L"($zelto_vb.let(x, 'Item', 5, 1), get(x, 'item', 1))"));
  EXPECT_EQ("Integer 6", with_class(L"(putix(x, 6, 2), ix(x, 2))"));
  EXPECT_EQ("error 9", with_class(L"ix(x, 3)"));
  EXPECT_EQ("error 438", with_class(L"$zelto_vb.let(x, 'Reading', 1)"));
  EXPECT_EQ("Boolean True", with_class(L"($zelto_vb.set(x, 'Thing', o), is(get(x, 'field'), o))"));
  EXPECT_EQ("error 450", with_class(L"get(x, 'Thing')"));
  EXPECT_EQ("error 424", with_class(L"$zelto_vb.set(x, 'Thing', 1)"));
  EXPECT_EQ("Integer 2",
            with_class(L"(() => { let n = 1; call(x, 'Raises', ref(() => n, v => { n = v; })); return n; })()"));
  EXPECT_EQ("Integer 2", with_class(L"get(x, 'Raises', 1)"));
  EXPECT_EQ("String Basket", with_class(L"typename(x)"));
  EXPECT_EQ("error 451", with_class(L"each(x)"));
}

TEST_F(VbMembers, OfInstancesAreSeenByComponents) {
  EXPECT_EQ("String made", with_class(L"get(o, 'CallMember', x, 'Field')"));
  EXPECT_EQ("Long 7", with_class(L"get(o, 'CallMember', x, 'READING')"));
  EXPECT_EQ("error 438", with_class(L"get(o, 'CallMember', x, 'Missing')"));
  EXPECT_EQ("Empty ", with_class(L"call(o, 'Hold', x)"));
  CComBSTR text(L"TWICE");
  BSTR names = text;
  DISPID id = 0;
  ASSERT_EQ(S_OK, probe->held->GetIDsOfNames(IID_NULL, &names, 1, 0, &id));
  CComVariant argument(LONG{4});
  DISPPARAMS params{&argument, nullptr, 1, 0};
  CComVariant result;
  EXPECT_EQ(S_OK, probe->held->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, &result, nullptr, nullptr));
  ASSERT_EQ(VT_I4, result.vt);
  EXPECT_EQ(8, result.lVal);
  DISPPARAMS none{};
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND,
            probe->held->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr));
}

TEST_F(VbMembers, GiveArgumentsBackToComponents) {
  must_run_as_written(
      L"const f = $zelto_vb.byref(function (a, b) { a = $zelto_vb.arg(a); a.v = a.v + 1; b = 5; return a.v; }, [0]);"
      L"$zelto_vb.call(o, 'Hold', f)");
  CComVariant first(LONG{1}), second(LONG{2});
  VARIANT arguments[2] = {};
  arguments[1].vt = arguments[0].vt = VT_BYREF | VT_VARIANT;
  arguments[1].pvarVal = &first;
  arguments[0].pvarVal = &second;
  DISPPARAMS params{arguments, nullptr, 2, 0};
  CComVariant result;
  ASSERT_EQ(S_OK, probe->held->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &params, &result, nullptr, nullptr));
  EXPECT_EQ(2, result.lVal);
  EXPECT_EQ(VT_I2, first.vt);
  EXPECT_EQ(2, first.iVal);
  EXPECT_EQ(2, second.lVal);
}

TEST_F(VbMembers, OfScriptObjectsAreFoundAsWrittenFirst) {
  expect({
      {L"get({ Name: 1, name: 2 }, 'name')", "Integer 2"},
      {L"get({ Name: 1 }, 'NAME')", "Integer 1"},
      {L"get({ add(a, b) { return a + b; } }, 'Add', 1, 2)", "Integer 3"},
      {L"get({ list: [4, 5] }, 'list', 1)", "Integer 5"},
      {L"(() => { const s = { Name: 1 }; $zelto_vb.let(s, 'name', 3); return s.Name; })()", "Integer 3"},
      {L"get({}, 'name')", "error 438"},
      {L"ix(getref((a, b) => a - b), 5, 3)", "Integer 2"},
      {L"getref(5)", "error 5"},
  });
}

TEST_F(VbMembers, ThatFailTellErr) {
  expect({
      {L"get(o, 'Fail', -2147352571)", "error 13"},
      {L"(() => { try { get(o, 'Fail', -2147467259, 'words'); } catch (e) { caught(e); }"
       L" return array(get(err, 'Number'), get(err, 'Source'), get(err, 'Description')); })()",
       "Variant() -2147467259|Probe|words"},
      {L"(() => { try { get(o, 'Fail', -2146825267, 'words'); } catch (e) { caught(e); } return val(err); })()",
       "Integer 3021"},
      {L"(() => { try { call(err, 'Raise', 1000, 'mine', 'words'); } catch (e) { caught(e); }"
       L" return array(get(err, 'Number'), get(err, 'Source'), get(err, 'Description')); })()",
       "Variant() 1000|mine|words"},
      {L"(() => { try { call(err, 'Raise', 11); } catch (e) { caught(e); } return get(err, 'Description'); })()",
       "String Division by zero"},
      {L"(call(err, 'Clear'), get(err, 'Number'))", "Integer 0"},
      {L"(() => { try { get(o, 'Nope'); } catch (e) { caught(e); } return get(err, 'Description'); })()",
       "String Object doesn't support this property or method: 'Nope'"},
      {L"create('No.Such.Class')", "error 429"},
      {L"(() => { try { create('No.Such.Class'); } catch (e) { caught(e); } return get(err, 'Description'); })()",
       "String ActiveX component can't create object: 'No.Such.Class'"},
      {L"call(err, 'Raise', 0)", "error 5"},
      {L"(() => { const f = () => f() + 1; return f(); })()", "error 28"},
      {L"unknown_name", "error 500"},
  });
}

TEST_F(VbMembers, ThatFailUncaughtTellNumberAndSource) {
  auto program = std::make_shared<zelto::language::Program>();
  program->url = "/site/page.asp";
  program->text = u"\n$zelto_vb.idiv(1, 0)";
  const zelto::script::Outcome outcome = realm->run(program);
  ASSERT_TRUE(outcome.error);
  EXPECT_EQ("Microsoft VBScript runtime error: Division by zero at /site/page.asp:2", said(outcome));
  EXPECT_EQ(static_cast<HRESULT>(0x800A000B), outcome.error->number);
}

TEST_F(VbMembers, ThatEndThePageAreNotCaught) {
  auto program = std::make_shared<zelto::language::Program>();
  program->url = "/site/page.asp";
  program->text =
      u"try { $zelto_vb.call(Response, 'End'); } catch (e) { $zelto_vb.caught(e); } $zelto_vb.write('after');";
  EXPECT_EQ(zelto::script::Outcome::stopped, realm->run(program).kind);
  EXPECT_EQ(L"", page->text);
}

TEST_F(VbMembers, WriteWhatPagesShow) {
  must_run_as_written(
      L"with ($zelto_vb) { write(1.5); write(0.1 + 0.2); write(true); write(null); write(undefined);"
      L" out(fn.dateserial(2024, 1, 2)); call(Response, 'WRITE', ' end') }");
  EXPECT_EQ(L"1.50.3True2024-01-02 end", page->text);
}

TEST_F(VbMembers, OfTheLibraryCannotBeChanged) {
  expect({
      {L"Object.isFrozen($zelto_vb)", "Boolean True"},
      {L"Object.isFrozen(fn)", "Boolean True"},
      {L"Object.isFrozen(fn.left)", "Boolean True"},
      {L"Object.isFrozen(Object.getPrototypeOf(cbyte(1)))", "Boolean True"},
      {L"Object.isFrozen(Instance.prototype)", "Boolean True"},
  });
}

}  // namespace
}  // namespace test
