// Memory that runs out anywhere in a page: an answer that says so, or the whole page, and nothing lost.
#include "support/failing_allocations.h"

#include <map>

#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class FailingAllocations : public PageTest {
 protected:
  void SetUp() override {
    asp_.request->query_string->set(L"c", {L"Save"});
    asp_.session->values()[L"s"] = CComVariant(L"session");
    asp_.application->values[L"a"] = CComVariant(L"application");
    script().value(L"v", L"value");
    script().function(L"OnCommand_Save", [](const Arguments&) { return CComVariant(); });
    script().fallible(L"f", [this](const Arguments&, VARIANT* result) { return VariantCopy(result, &answer_); });
    script().function(L"OnDraw_row", [](const Arguments&) { return CComVariant(); });
    file("child.html", "<child>");
    file(".html", "<no name>");  // what a name that was lost would find
    use_folder();
  }
  void TearDown() override {
    typed_.reset();
    PageTest::TearDown();
  }
  // A page of its own for each point of failure: what one leaves behind is not the next one's.
  void make_page() {
    asp_.session->values().erase(L"p");
    asp_.response->writes.clear();
    script().forget_calls();
    const CComPtr<IDispatch> fresh = new_page();
    for (const auto& [name, value] :
         {std::pair(L"Name", L"p"), {L"DefaultTemplate", L"main"}, {L"TemplateExt", L".html"}})
      put(fresh.get(), name, value);
    put(fresh.get(), L"TemplateFolder", folder().wstring());
    put(fresh.get(), L"SelfEncode", true);
    call(fresh.get(), L"AddScript", script_);
    call(fresh.get(), L"AddMessage", L"message", L"");
    ASSERT_EQ(S_OK, fresh.query(typed_.put()));
  }
  // Whether a failure says that memory was short, or what could not be had for want of it: a file that was not
  // read, the bag of a session that was made without one.
  void expect_honest(HRESULT hr, const ErrorText& error, int n) {
    if (hr == E_OUTOFMEMORY) return;
    EXPECT_EQ(E_FAIL, hr) << "point " << n;
    if (error.description.starts_with(L"Template file ")) return;
    EXPECT_EQ(L"", error.description) << "point " << n;
    CComPtr<IDispatch> bag;
    EXPECT_EQ(E_FAIL, typed_->get_Bag(bag.put())) << "point " << n;
  }
  // Runs the page with a failure at every point in turn.
  void fail_everywhere(const std::wstring& expected) {
    bool has_failed = true;
    int failures = 0;
    for (int n = 0; has_failed; ++n) {
      ASSERT_LT(n, 10000);
      ASSERT_NO_FATAL_FAILURE(make_page());
      HRESULT hr = S_FALSE;
      try {
        const FailingAllocation failing(n);
        hr = typed_->Process();
        has_failed = failing.has_failed();
      } catch (const std::bad_alloc&) {
        hr = S_FALSE;
      }
      EXPECT_NE(S_FALSE, hr) << "an exception crossed; point " << n;
      if (hr == S_OK) {
        EXPECT_EQ(expected, output()) << "point " << n;
      }
      const ErrorText error = take_error();
      if (FAILED(hr)) expect_honest(hr, error, n);
      failures += hr == E_OUTOFMEMORY ? 1 : 0;
    }
    EXPECT_EQ(expected, output());
    EXPECT_GT(failures, 100);
  }

  const CComVariant answer_{L"function"};  // made while there is memory
  CComPtr<IMirt> typed_;
};

// Marks of the request are left out: a collection that fails is passed over there, whatever the reason.
TEST_F(FailingAllocations, AreAnAnswerWhileAPageIsDrawn) {
  file("main.html",
       "(#:v#) (#;f|a#|#b#) (#%row|a#)(#/none#)(#~s#) (#-a#) (#|none#)(#?#) (#?Save it#) (#`child#)(#@none#) "
       "(#%_Input|n#|#(#/_Input_Name#)(#%_Input_Default|no#|#yes#)#) (#%_InputDefaultP|v#|#value#|#is#|#is not#) "
       "(#%_Message|(#%_Message_Text#)#)^(#");
  fail_everywhere(L"value function session application c ?c=Save+it& <child> nyes is message(#");
}

// A decoder that fails, which it does for want of memory alone: its element stays the plain text, the others are
// decoded, and only the last element's failure is the member's.
TEST_F(FailingAllocations, LeaveAnElementThatIsNotDecodedPlain) {
  file("main.html", "");
  asp_.request->query_string->set(L"f", {L"&#65;", L"&#66;", L"&#67;"});
  make_page();
  ASSERT_EQ(S_OK, typed_->Process());
  ASSERT_EQ(S_OK, typed_->put_SubmitDecodeOnPutInto(VARIANT_TRUE));
  CComPtr<IDispatch> bag;
  ASSERT_EQ(S_OK, typed_->get_Bag(bag.put()));
  const CComBSTR field(L"f");
  std::map<std::wstring, int> stored;
  int failures = 0;
  bool has_failed = true;
  for (int n = 0; has_failed; ++n) {
    ASSERT_LT(n, 1000);
    HRESULT hr = S_FALSE;
    try {
      const FailingAllocation failing(n);
      hr = typed_->PutIntoBag(field, VARIANT_TRUE);
      has_failed = failing.has_failed();
    } catch (const std::bad_alloc&) {
      hr = E_OUTOFMEMORY;  // of the host's objects, which throw it through
    }
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      EXPECT_FALSE(is_true(call(bag.get(), L"Exists", L"f"))) << n;
      ++failures;
      continue;
    }
    const Answer item = get(bag.get(), L"Item", L"f");
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, item.value.vt) << n;
    std::wstring texts;
    const auto* elements = static_cast<const VARIANT*>(item.value.parray->pvData);
    for (ULONG i = 0; i < item.value.parray->rgsabound[0].cElements; ++i) {
      EXPECT_EQ(VT_BSTR, elements[i].vt) << n;
      texts.append(korlib::view_of(elements[i].bstrVal)) += L';';
    }
    ++stored[texts];
    call(bag.get(), L"RemoveAll");
  }
  EXPECT_GT(stored[L"&#65;;B;C;"], 0);
  EXPECT_GT(stored[L"A;&#66;;C;"], 0);
  EXPECT_EQ(0, stored[L"A;B;&#67;;"]) << "the last element's failure is the member's";
  // A value that its list could not give is empty; the last run has all.
  for (const wchar_t* texts : {L"&#65;;B;C;", L"A;&#66;;C;", L"A;B;&#67;;", L";B;C;", L"A;;C;", L"A;B;;", L"A;B;C;"})
    stored.erase(texts);
  for (const auto& [texts, count] : stored) ADD_FAILURE() << count << " times " << testing::PrintToString(texts);
  EXPECT_GT(failures, 2);
}

TEST_F(FailingAllocations, AreAnAnswerOfTheMembers) {
  make_page();
  ASSERT_EQ(S_OK, typed_->put_Backable(VARIANT_FALSE));
  const CComBSTR text(L"a text");
  CComVariant message(L"another message");
  const std::function<HRESULT(BSTR*)> members[] = {
      [&](BSTR* out) { return typed_->ToParameter(text, text, out); },
      [&](BSTR* out) { return typed_->get_CommandName(out); },
      [&](BSTR* out) { return typed_->HTMLEncode(text, out); },
      [&](BSTR*) { return typed_->AddLog(text, text); },
      [&](BSTR*) { return typed_->Redirect(text); },
      [&](BSTR*) { return typed_->AddMessage(&message, text); },
      [&](BSTR*) { return typed_->put_Name(text); },
      [&](BSTR*) { return typed_->Write(text, VARIANT_TRUE); },
  };
  for (std::size_t i = 0; i < std::size(members); ++i) {
    bool has_failed = true;
    for (int n = 0; has_failed; ++n) {
      ASSERT_LT(n, 1000);
      CComBSTR out;
      HRESULT hr = S_FALSE;
      try {
        const FailingAllocation failing(n);
        hr = members[i](out.put());
        has_failed = failing.has_failed();
      } catch (const std::bad_alloc&) {
        hr = E_OUTOFMEMORY;  // of the host's objects, which throw it through
      }
      EXPECT_EQ(has_failed ? E_OUTOFMEMORY : S_OK, hr) << "member " << i << ", point " << n;
    }
  }
}

}  // namespace
}  // namespace test
