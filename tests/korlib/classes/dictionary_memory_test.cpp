// Memory that runs out in a dictionary.
#include <korlib_host/diagnostics.h>
#include <korlib_host/dictionaries.h>

#include "korlib/classes/dictionary_fixture.h"
#include "korlib/classes/failing_operation.h"

namespace {

using test::each_allocation_failing;
using test::FailingAllocation;
using test::Operation;

class FailingDictionary : public test::DictionaryFixture {
 protected:
  // Three entries, of texts that no small buffer holds.
  void fill() {
    SetUp();
    for (const wchar_t* name : {L"first of the names", L"second of the names", L"third of the names"}) {
      const CComVariant text(name);
      ASSERT_EQ(S_OK, dictionary_->Add(text, text));
    }
  }
  std::wstring state() { return list(L"Keys") + L" = " + list(L"Items"); }
  Operation operation(const char* name, std::function<HRESULT(VARIANT*)> run) {
    return {name, [this] { fill(); }, std::move(run), [this] { return state(); }};
  }

  const CComVariant known_{L"second of the names"};
  const CComVariant other_{L"another name that is long"};
};

TEST_F(FailingDictionary, DoesAllOrNothing) {
  const auto flag = [](HRESULT hr, VARIANT_BOOL answer, VARIANT* out) {
    if (SUCCEEDED(hr)) CComVariant(answer != VARIANT_FALSE).detach_to(out);
    return hr;
  };
  test::expect_all_or_nothing(
      {
          operation("Add", [&](VARIANT*) { return dictionary_->Add(other_, other_); }),
          operation("Item of one that is there", [&](VARIANT* out) { return dictionary_->get_Item(known_, out); }),
          operation("Item of one that is not", [&](VARIANT* out) { return dictionary_->get_Item(other_, out); }),
          operation("Item = over another", [&](VARIANT*) { return dictionary_->put_Item(known_, other_); }),
          operation("Item = anew", [&](VARIANT*) { return dictionary_->put_Item(other_, other_); }),
          operation("Key", [&](VARIANT*) { return dictionary_->put_Key(known_, other_); }),
          operation("Remove", [&](VARIANT*) { return dictionary_->Remove(known_); }),
          operation("RemoveAll", [&](VARIANT*) { return dictionary_->RemoveAll(); }),
          operation("Exists",
                    [&](VARIANT* out) {
                      VARIANT_BOOL exists = VARIANT_FALSE;
                      const HRESULT hr = dictionary_->Exists(known_, &exists);
                      return flag(hr, exists, out);
                    }),
          operation("Keys", [&](VARIANT* out) { return dictionary_->Keys(out); }),
          operation("Items", [&](VARIANT* out) { return dictionary_->Items(out); }),
      },
      [this] { dictionary_.reset(); });
  EXPECT_GT(test::expect_all_or_nothing(operation("Add", [&](VARIANT*) { return dictionary_->Add(other_, other_); })),
            2);
}

// A list with a hole would be taken for the dictionary's.
TEST_F(FailingDictionary, ListsEveryKeyOrNone) {
  fill();
  const int failures = each_allocation_failing([&](int n) {
    std::wstring listed;
    bool failed = false;
    HRESULT hr = S_OK;
    CComPtr<IUnknown> keys;
    CComVariant batch[3];
    ULONG fetched = 7;
    {
      const FailingAllocation failing(n);
      hr = dictionary_->get__NewEnum(keys.put());
      if (SUCCEEDED(hr)) hr = CComQIPtr<IEnumVARIANT>(keys.get())->Next(3, batch, &fetched);
      failed = failing.has_failed();
    }
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      for (const CComVariant& one : batch) EXPECT_EQ(VT_EMPTY, one.vt) << n;
      if (keys) {
        EXPECT_EQ(0u, fetched);
        EXPECT_EQ(S_OK, CComQIPtr<IEnumVARIANT>(keys.get())->Next(3, batch, &fetched)) << "from where it stood";
      }
    }
    for (const CComVariant& one : batch) listed += test::shown(one) + L",";
    if (keys) {
      EXPECT_EQ(L"first of the names,second of the names,third of the names,", listed) << n;
    }
    return failed && !HasFailure();
  });
  EXPECT_GT(failures, 7);
}

TEST_F(FailingDictionary, TellsOfAKeyThatIsMissingOrThereWithoutWords) {
  for (const int times : {1, FailingAllocation::kAll}) {
    each_allocation_failing([&](int n) {
      fill();
      const FailingAllocation failing(n, times);
      const HRESULT missing = dictionary_->Remove(other_);
      const HRESULT existing = dictionary_->Add(known_, other_);
      EXPECT_TRUE(missing == korlib::hresult(0x800A802B) || missing == E_OUTOFMEMORY) << n;
      EXPECT_TRUE(existing == korlib::hresult(0x800A01C9) || existing == E_OUTOFMEMORY) << n;
      return failing.has_failed() && !HasFailure();
    });
  }
  SetErrorInfo(0, nullptr);
}

// In one that the Application keeps, nested ones become shared on their way in.
TEST_F(FailingDictionary, TakesANestedDictionaryIntoASharedOneOrNot) {
  const int failures = each_allocation_failing([&](int n) {
    fill();
    EXPECT_TRUE(korlib_host::share(korlib::borrowed(object_)));
    const auto nested = test::new_dictionary();
    const auto inner = test::new_dictionary();
    EXPECT_EQ(S_OK, nested->Add(known_, korlib::borrowed(inner.get())));
    HRESULT hr = S_OK;
    bool failed = false;
    {
      const FailingAllocation failing(n);
      hr = dictionary_->Add(other_, korlib::borrowed(nested.get()));
      failed = failing.has_failed();
    }
    EXPECT_EQ(SUCCEEDED(hr) ? 4 : 3, count()) << n;
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      EXPECT_EQ(S_OK, dictionary_->Add(other_, korlib::borrowed(nested.get()))) << n;
    }
    return failed && !HasFailure();
  });
  EXPECT_GT(failures, 3);
}

// Those that could not be looked at for want of memory are looked at later.
TEST_F(FailingDictionary, FreesCyclesOnceThereIsMemory) {
  korlib_host::free_cycles();
  const std::int64_t before = korlib_host::live_objects();
  const int failures = each_allocation_failing([&](int n) {
    {
      const auto outer = test::new_dictionary();
      const auto inner = test::new_dictionary();
      EXPECT_EQ(S_OK, outer->Add(known_, korlib::borrowed(inner.get())));
      EXPECT_EQ(S_OK, inner->Add(known_, korlib::borrowed(outer.get())));
    }
    EXPECT_EQ(before + 2, korlib_host::live_objects());
    bool failed = false;
    {
      const FailingAllocation failing(n);
      korlib_host::free_cycles();
      failed = failing.has_failed();
    }
    korlib_host::free_cycles();
    EXPECT_EQ(before, korlib_host::live_objects()) << n;
    return failed && !HasFailure();
  });
  EXPECT_GT(failures, 5);
}

}  // namespace
