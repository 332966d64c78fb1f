// Memory that runs out in the intrinsic objects: a member does all that it does or nothing, and works afterwards.
#include "support/failing_allocations.h"

#include <korlib_host/dictionaries.h>

#include <functional>
#include <string>

#include "intrinsics/application.h"
#include "intrinsics/session_state.h"
#include "zelto/intrinsics/calls.h"
#include "zelto/intrinsics/page_fixture.h"

namespace {

using test::each_allocation_failing;
using test::FailingAllocation;

// What one attempt does, and what there is to see after it.
struct Step {
  std::function<HRESULT()> run;
  std::function<std::wstring()> state;
};

class FailingIntrinsics : public test::PageTest {
 protected:
  // Each allocation fails in its turn, alone and with all after it; `prepare` begins anew each time.
  static void expect_all_or_nothing(const char* name, const std::function<Step()>& prepare) {
    const Step whole = prepare();
    const std::wstring before = whole.state();
    EXPECT_EQ(S_OK, whole.run()) << name;
    const std::wstring after = whole.state();
    for (const int times : {1, FailingAllocation::kAll}) {
      const int failures = each_allocation_failing([&](int n) {
        const Step step = prepare();
        HRESULT hr = S_FALSE;
        bool failed = false;
        try {
          const FailingAllocation failing(n, times);
          hr = step.run();
          failed = failing.has_failed();
        } catch (const std::bad_alloc&) {
          failed = true;
          hr = E_OUTOFMEMORY;  // of what is no interface member
        }
        if (FAILED(hr)) {
          EXPECT_EQ(E_OUTOFMEMORY, hr) << name << " at " << n;
          EXPECT_EQ(before, step.state()) << name << " at " << n;
          EXPECT_EQ(S_OK, step.run()) << name << " at " << n;
        }
        EXPECT_EQ(after, step.state()) << name << " at " << n;
        return failed && !HasFailure();
      });
      EXPECT_GT(failures, 0) << name;
    }
    SetErrorInfo(0, nullptr);
  }

  zelto::PageStatePtr new_page(zelto::HttpRequest asked) {
    if (page_) page_->end();
    page_ =
        std::make_shared<zelto::PageState>(std::move(asked), zelto::PagePlace{"/a.asp", "/s/a.asp", "/s"}, sink, &host);
    return page_;
  }
  ~FailingIntrinsics() override {
    if (page_) page_->end();
  }
  static zelto::HttpRequest form_request(std::string_view body) {
    zelto::HttpRequest made;
    made.method = "POST";
    made.query = "a+name+of+the+query=its+value+that+is+long&a+name+of+the+query=another+one&b=%E3%81%82";
    made.headers = {{"Host", "example.org"},
                    {"Content-Type", "application/x-www-form-urlencoded"},
                    {"Cookie", "a_cookie_of_a_long_name=its+value+that+is+long; b=x=1&y=2"}};
    made.body = zelto::Body(body);
    return made;
  }

 private:
  zelto::PageStatePtr page_;
};

constexpr std::string_view kForm = "a+name+of+the+form=its+value+that+is+long&a+name+of+the+form=another+one&c=1";

std::wstring text_of_item(IDispatch* object, const wchar_t* collection, const wchar_t* name) {
  return test::text_of(test::default_of(test::object_of(test::get(object, collection, name))));
}

TEST_F(FailingIntrinsics, ReadFieldsOrSayWhyNot) {
  using Read = HRESULT (zelto::RequestState::*)(zelto::RequestState::Fields&);
  for (const Read read : {Read(&zelto::RequestState::query), Read(&zelto::RequestState::form),
                          Read(&zelto::RequestState::server_variables)}) {
    expect_all_or_nothing("fields", [&] {
      const auto page = new_page(form_request(kForm));
      return Step{[=] {
                    zelto::RequestState::Fields fields;
                    return (page->request.*read)(fields);
                  },
                  [=]() -> std::wstring { return page->request.was_read_as_bytes() ? L"bytes" : L""; }};
    });
  }
}

TEST_F(FailingIntrinsics, FindAFieldOrACookie) {
  for (const wchar_t* name : {L"a name of the query", L"a name of the form", L"a_cookie_of_a_long_name", L"nothing"}) {
    const CComBSTR wanted(name);
    expect_all_or_nothing("Request(name)", [&] {
      const auto page = new_page(form_request(kForm));
      const auto asked = korlib::make<zelto::RequestObject>(page);
      return Step{[=, &wanted] {
                    CComPtr<IDispatch> found;
                    const HRESULT hr = asked->get_Item(wanted, found.put());
                    EXPECT_EQ(SUCCEEDED(hr), found.get() != nullptr);
                    return hr;
                  },
                  []() -> std::wstring { return {}; }};
    });
  }
  const auto page = new_page(form_request(kForm));
  const auto asked = korlib::make<zelto::RequestObject>(page);
  EXPECT_EQ(L"its value that is long, another one", text_of_item(asked.get(), L"Form", L"a name of the form"));
}

// What was read is gone from the request.
TEST_F(FailingIntrinsics, ReadTheBodyWhollyOrNot) {
  const std::string body(100'000, 'b');
  for (const LONG count : {1000, 100'000, 2'000'000}) {
    expect_all_or_nothing("BinaryRead", [&, count] {
      const auto page = new_page(form_request(body));
      const auto asked = korlib::make<zelto::RequestObject>(page);
      const auto read = std::make_shared<std::size_t>(0);
      return Step{[=] {
                    CComVariant size(count);
                    CComVariant data;
                    const HRESULT hr = asked->BinaryRead(&size, &data);
                    EXPECT_EQ(SUCCEEDED(hr) ? VT_ARRAY | VT_UI1 : VT_EMPTY, data.vt);
                    *read = SUCCEEDED(hr) ? data.parray->rgsabound[0].cElements : 0;
                    return hr;
                  },
                  [=] {
                    return std::to_wstring(*read) + (page->request.is_spent() ? L" spent" : L" left") +
                           (page->request.was_read_as_bytes() ? L" bytes" : L"");
                  }};
    });
  }
}

TEST_F(FailingIntrinsics, SetACookieOrNone) {
  const CComVariant name(L"a_cookie_of_a_long_name");
  const CComVariant value(L"a value that no small buffer holds");
  const CComVariant key(L"a key that no small buffer holds");
  for (const bool is_known : {false, true}) {
    for (const bool has_key : {false, true}) {
      expect_all_or_nothing("Response.Cookies", [&] {
        const auto page = new_page(form_request(kForm));
        const auto response = korlib::make<zelto::ResponseObject>(page);
        const auto cookies = test::object_of(test::get(response.get(), L"Cookies"));
        if (is_known) {
          EXPECT_EQ(S_OK, test::put(cookies.get(), L"Item", name, L"the value that it has had so far").hr);
        }
        const DISPID item = test::id_of(cookies.get(), L"Item");
        return Step{[=, &name, &value, &key] {
                      DISPID put = DISPID_PROPERTYPUT;
                      VARIANT one[] = {value, name};
                      if (!has_key) {
                        DISPPARAMS params{one, &put, 2, 1};
                        return cookies->Invoke(item, IID_NULL, 0, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr,
                                               nullptr);
                      }
                      VARIANT wanted[] = {name};
                      DISPPARAMS get{wanted, nullptr, 1, 0};
                      CComVariant cookie;
                      const HRESULT hr =
                          cookies->Invoke(item, IID_NULL, 0, DISPATCH_PROPERTYGET, &get, &cookie, nullptr, nullptr);
                      if (FAILED(hr)) return hr;
                      VARIANT two[] = {value, key};
                      DISPPARAMS params{two, &put, 2, 1};
                      return cookie.pdispVal->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYPUT, &params, nullptr,
                                                     nullptr, nullptr);
                    },
                    [=] {
                      std::wstring all;
                      for (const zelto::SetCookie& set : page->response.cookies) {
                        const std::string header = set.header();
                        all.append(header.begin(), header.end()) += L"\n";
                      }
                      return all;
                    }};
      });
    }
  }
}

TEST_F(FailingIntrinsics, WriteToTheResponseWhollyOrNot) {
#ifdef KOR_SANITIZED
  GTEST_SKIP() << "a sanitizer has realloc to itself, where the response gets its memory";
#endif
  const CComBSTR text(std::wstring(3000, L'\x3042').c_str());
  const CComBSTR place(L"/another/page/of/this/site.asp");
  const CComBSTR header(L"X-A-Header-Of-A-Long-Name");
  const CComBSTR status(L"404 This is nowhere to be found");
  for (const LONG code_page : {65001, 932, 28595}) {
    expect_all_or_nothing("Write", [&, code_page] {
      const auto page = new_page(form_request(kForm));
      const auto response = korlib::make<zelto::ResponseObject>(page);
      page->set_code_page(code_page);
      return Step{[=, &text] { return response->Write(korlib::borrowed(text.get())); },
                  []() -> std::wstring { return {}; }};
    });
  }
  const std::function<HRESULT(zelto::ResponseObject&)> members[] = {
      [&](zelto::ResponseObject& response) { return response.AddHeader(header, text); },
      [&](zelto::ResponseObject& response) { return response.AddHeader(header, place); },
      [&](zelto::ResponseObject& response) { return response.put_Status(status); },
      [&](zelto::ResponseObject& response) { return response.AppendToLog(place); },
  };
  for (const auto& member : members) {
    expect_all_or_nothing("a member", [&] {
      const auto page = new_page(form_request(kForm));
      const auto response = korlib::make<zelto::ResponseObject>(page);
      return Step{[=, &member] { return member(*response); },
                  [=] {
                    const zelto::ResponseState& state = page->response;
                    const std::string all = std::to_string(state.status) + state.reason + state.log_note() +
                                            std::to_string(state.headers.size());
                    return std::wstring(all.begin(), all.end());
                  }};
    });
  }
}

std::wstring state_of(zelto::VariantStore& store) {
  std::vector<std::wstring> names;
  EXPECT_EQ(S_OK, store.names(names));
  std::wstring all;
  for (const std::wstring& name : names) {
    CComVariant value;
    EXPECT_EQ(S_OK, store.get(name, &value));
    CComVariant text;
    EXPECT_EQ(S_OK, VariantChangeType(&text, &value, 0, VT_BSTR));
    all += name + L"=" + std::wstring(korlib::view_of(text.bstrVal)) + L";";
  }
  return all;
}

// Both stores, with one value in them.
void for_each_store(const std::function<void(const std::function<std::shared_ptr<zelto::VariantStore>()>&)>& each) {
  const auto filled = [](std::shared_ptr<zelto::VariantStore> store) {
    EXPECT_EQ(S_OK, store->put(L"a name that is known", CComVariant(L"a value that is long")));
    return store;
  };
  each([&] { return filled(std::make_shared<zelto::SessionState>("id")); });
  each([&] {
    const auto state = std::make_shared<zelto::ApplicationState>(std::chrono::milliseconds(0));
    return filled(std::make_shared<zelto::ApplicationHold>(state));
  });
}

TEST_F(FailingIntrinsics, KeepAValueOrTheOneBefore) {
  const CComVariant value(L"another value that is long");
  for (const wchar_t* name : {L"a name that is known", L"a name that is new"}) {
    for_each_store([&](const auto& make) {
      expect_all_or_nothing("put", [&] {
        const auto store = make();
        return Step{[=, &value] { return store->put(name, value); }, [=] { return state_of(*store); }};
      });
    });
  }
  for_each_store([&](const auto& make) {
    expect_all_or_nothing("get", [&] {
      const auto store = make();
      return Step{[=] {
                    CComVariant read;
                    const HRESULT hr = store->get(L"a name that is known", &read);
                    EXPECT_EQ(SUCCEEDED(hr) ? VT_BSTR : VT_EMPTY, read.vt);
                    return hr;
                  },
                  [=] { return state_of(*store); }};
    });
  });
}

// What must always be possible, so that a session can end.
TEST_F(FailingIntrinsics, LetGoOfValuesWithoutMemory) {
  for_each_store([](const auto& make) {
    const auto store = make();
    EXPECT_EQ(S_OK, store->put(L"another name", CComVariant(L"another value")));
    HRESULT removed = E_FAIL;
    HRESULT cleared = E_FAIL;
    {
      const FailingAllocation failing(0, FailingAllocation::kAll);
      removed = store->remove(L"another name");
      cleared = store->clear();
    }
    EXPECT_EQ(S_OK, removed);
    EXPECT_EQ(S_OK, cleared);
    EXPECT_EQ(L"", state_of(*store));
  });
}

}  // namespace
