// Memory that runs out in an encoder, decoder or digest: the member says so and gives nothing.
#include "support/failing_allocations.h"

#include <functional>
#include <string>

#include <mirt/mirt.h>

#include "support/late_bound.h"
#include "support/module.h"

namespace test {
namespace {

class FailingUtility : public ModuleTest {
 protected:
  // The member gives what it gave with memory, or nothing and one of the codes; and with memory all again.
  template <class Out>
  void expect_all_or_nothing(const char* name, const std::function<HRESULT(Out*)>& member) {
    const std::wstring expected = ask(member);
    const long before = live_allocations();
    for (const int times : {1, FailingAllocation::kAll}) {
      const int failures = each_allocation_failing([&](int n) {
        Out out{};
        HRESULT hr = S_FALSE;
        bool failed = false;
        try {
          const FailingAllocation failing(n, times);
          hr = member(&out);
          failed = failing.has_failed();
        } catch (const std::bad_alloc&) {
          ADD_FAILURE() << name << " at " << n << ": an exception crossed";
        }
        if (FAILED(hr)) {
          EXPECT_TRUE(hr == E_OUTOFMEMORY || hr == E_FAIL) << name << " at " << n;
          EXPECT_TRUE(is_nothing(out)) << name << " at " << n;
        } else {
          EXPECT_EQ(expected, take(out)) << name << " at " << n;
        }
        EXPECT_EQ(expected, ask(member)) << name << " at " << n;
        return failed && !HasFailure();
      });
      EXPECT_GT(failures, 0) << name;
    }
    EXPECT_EQ(before, live_allocations()) << name;
    take_error();
  }

  CComPtr<IUtility> utility_;

 private:
  static bool is_nothing(const BSTR& text) { return !text; }
  static bool is_nothing(const VARIANT& value) { return value.vt == VT_EMPTY; }
  static std::wstring take(BSTR& text) {
    CComBSTR owned;
    owned.attach(text);
    return std::wstring(owned.view());
  }
  static std::wstring take(VARIANT& value) {
    CComVariant owned;
    owned.attach(&value);
    if (owned.vt == VT_BSTR) return std::wstring(korlib::view_of(owned.bstrVal));
    return L"array of " + std::to_wstring(owned.vt == (VT_ARRAY | VT_UI1) ? owned.parray->rgsabound[0].cElements : 0);
  }
  template <class Out>
  static std::wstring ask(const std::function<HRESULT(Out*)>& member) {
    Out out{};
    EXPECT_EQ(S_OK, member(&out));
    return take(out);
  }

 protected:
  void SetUp() override { utility_ = module_.create<IUtility>(L"Utility"); }
  void TearDown() override {
    utility_.reset();
    ModuleTest::TearDown();
  }
};

TEST_F(FailingUtility, GivesATextOrNothing) {
  std::wstring long_text;
  for (int i = 0; i < 100; ++i) long_text += L"<\x3042&#65;% ";
  CComVariant text{std::wstring_view(long_text)};
  CComVariant bytes = value_of(std::vector<std::uint8_t>(1000, 0xAB));
  const BSTR plain = text.bstrVal;
  const std::pair<const char*, std::function<HRESULT(BSTR*)>> members[] = {
      {"Base64Encode", [&](BSTR* out) { return utility_->Base64Encode(&text, 65001, out); }},
      {"Base64Encode of bytes", [&](BSTR* out) { return utility_->Base64Encode(&bytes, -1, out); }},
      {"URLEncode", [&](BSTR* out) { return utility_->URLEncode(&text, 65001, out); }},
      {"MD5", [&](BSTR* out) { return utility_->MD5(&text, 65001, out); }},
      {"SHA1", [&](BSTR* out) { return utility_->SHA1(&text, 65001, out); }},
      {"HTMLEncode", [&](BSTR* out) { return utility_->HTMLEncode(plain, out); }},
      {"SubmitDecode", [&](BSTR* out) { return utility_->SubmitDecode(plain, out); }},
      {"Trim", [&](BSTR* out) { return utility_->Trim(plain, out); }},
  };
  for (const auto& [name, member] : members) expect_all_or_nothing<BSTR>(name, member);
}

TEST_F(FailingUtility, DecodesAllOrNothing) {
  const CComBSTR base64(std::wstring(400, L'Q').c_str());
  const CComBSTR encoded(std::wstring(400, L'Q').c_str());
  for (const LONG charset : {65001, -1, -2}) {
    expect_all_or_nothing<VARIANT>("Base64Decode",
                                   [&](VARIANT* out) { return utility_->Base64Decode(base64, charset, out); });
    expect_all_or_nothing<VARIANT>("URLDecode",
                                   [&](VARIANT* out) { return utility_->URLDecode(encoded, charset, out); });
  }
}

TEST_F(FailingUtility, FindsATextOrSaysWhyNot) {
  CComVariant list =
      value_of(std::vector<CComVariant>{value_of(12), value_of(L"another text of the list"), value_of(34)});
  CComVariant wanted = value_of(34);
  const int failures = each_allocation_failing([&](int n) {
    VARIANT_BOOL found = VARIANT_FALSE;
    HRESULT hr = S_OK;
    bool failed = false;
    {
      const FailingAllocation failing(n);
      hr = utility_->FindString(&list, &wanted, &found);
      failed = failing.has_failed();
    }
    EXPECT_TRUE(hr == S_OK || hr == E_OUTOFMEMORY) << n;
    EXPECT_EQ(hr == S_OK, found == VARIANT_TRUE) << n;
    return failed && !HasFailure();
  });
  EXPECT_GT(failures, 0);
  take_error();
}

TEST_F(FailingUtility, MakesAKeyOrNone) {
  const int failures = each_allocation_failing([&](int n) {
    CComBSTR key;
    CComBSTR guid;
    const FailingAllocation failing(n);
    const HRESULT made = utility_->MakeKey(40, nullptr, key.put());
    const HRESULT known = utility_->MakeGUID(VARIANT_FALSE, guid.put());
    EXPECT_EQ(made == S_OK, key.get() != nullptr) << n;
    EXPECT_EQ(known == S_OK, guid.get() != nullptr) << n;
    return failing.has_failed() && !HasFailure();
  });
  EXPECT_GT(failures, 0);
  take_error();
}

}  // namespace
}  // namespace test
