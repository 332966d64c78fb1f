// What threads share, used by several at once. The thread sanitizer is the judge of most of it.
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib/text.h>
#include <korlib_host/class_table.h>
#include <korlib_host/diagnostics.h>
#include <korlib_host/modules.h>
#include <korlib_host/registry_store.h>

#include "korlib/activation/activation_fixture.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 400;

void run_threads(const std::function<void(int)>& body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(body, i);
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, PassStringsToEachOther) {
  const auto before = korlib_host::live_strings();
  std::mutex lock;
  std::deque<BSTR> passed;
  std::atomic<int> wrong{0};
  run_threads([&](int number) {
    for (int i = 0; i < kRounds; ++i) {
      const std::wstring text(static_cast<std::size_t>(i % 50), static_cast<wchar_t>(L'a' + number));
      BSTR other = nullptr;
      {
        const std::lock_guard guard(lock);
        passed.push_back(korlib::new_bstr(text));
        if (passed.size() > kThreads) {
          other = passed.front();
          passed.pop_front();
        }
      }
      for (const wchar_t c : korlib::view_of(other)) wrong += c != other[0];
      SysFreeString(other);
    }
  });
  for (const BSTR text : passed) SysFreeString(text);
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(before, korlib_host::live_strings());
}

TEST(Threads, KeepTheirErrorsApart) {
  std::atomic<int> wrong{0};
  run_threads([&](int number) {
    for (int i = 0; i < kRounds; ++i) {
      std::wstring text = std::to_wstring(number);
      CComPtr<ICreateErrorInfo> info;
      CreateErrorInfo(info.put());
      info->SetDescription(text.data());
      CComPtr<IErrorInfo> error;
      info.query(error.put());
      SetErrorInfo(0, error.get());
      GetErrorInfo(0, error.put());
      CComBSTR got;
      error->GetDescription(got.put());
      wrong += got.view() != text;
    }
  });
  EXPECT_EQ(0, wrong);
}

TEST(Threads, OpenAndCloseModulesTogether) {
  const test::TemporaryFolder folder;
  const auto store = std::make_shared<korlib_host::RegistryStore>(folder.path() / "registry.json");
  const std::wstring key = L"CLSID\\{9B1C6B5E-0F0E-4B7A-9C1D-3A5B7C9D1E01}\\InProcServer32";
  ASSERT_EQ(S_OK, store->create_key(key));
  ASSERT_EQ(S_OK, store->set_value(key, L"", std::filesystem::path(SAMPLE_MODULE_PATH).wstring()));
  korlib_host::set_registry(store);
  std::atomic<int> failed{0};
  // The modules are closed while no thread is inside one, as their header demands.
  sample::take_steps();
  for (int round = 0; round < 10; ++round) {
    std::latch together(kThreads);
    run_threads([&](int) {
      together.arrive_and_wait();
      for (int i = 0; i < 20; ++i) {
        CComPtr<sample::ISample> object;
        const HRESULT hr = CoCreateInstance(sample::kFirst, nullptr, CLSCTX_INPROC_SERVER,
                                            korlib::iid_of<sample::ISample>, object.put_void());
        LONG number = 0;
        failed += FAILED(hr) || FAILED(object->Number(&number)) || number != 1;
      }
    });
    CoFreeUnusedLibraries();
    EXPECT_EQ(0u, korlib_host::open_modules());
    EXPECT_EQ((sample::Steps{"attach", "detach"}), sample::take_steps()) << "opened once, whoever came first";
  }
  EXPECT_EQ(0, failed);
  korlib_host::set_registry(nullptr);
}

TEST(Threads, AddClassesWhileOthersLookThemUp) {
  const auto refuse = [](REFIID, void** ppv) {
    *ppv = nullptr;
    return HRESULT{E_NOINTERFACE};
  };
  std::atomic<int> wrong{0};
  run_threads([&](int number) {
    for (int i = 0; i < kRounds; ++i) {
      if (number == 0) {
        GUID fresh;
        CoCreateGuid(&fresh);
        const korlib_host::ClassRow rows[] = {{fresh, L"Test.Changing", refuse}};
        korlib_host::register_classes(rows);
        continue;
      }
      CLSID clsid;
      if (CLSIDFromProgID(L"Test.Changing", &clsid) != S_OK) continue;  // not there yet
      void* object = nullptr;
      wrong += CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object) != E_NOINTERFACE;
    }
  });
  EXPECT_EQ(0, wrong);
}

TEST(Threads, WriteOneRegistryTogether) {
  const test::TemporaryFolder folder;
  const auto file = folder.path() / "registry.json";
  korlib_host::RegistryStore shared(file);
  std::atomic<int> failed{0};
  run_threads([&](int number) {
    korlib_host::RegistryStore own(file);  // stands for another process
    korlib_host::RegistryStore& store = number % 2 ? own : shared;
    for (int i = 0; i < 10; ++i) {
      const std::wstring key = std::to_wstring(number) + L"\\" + std::to_wstring(i);
      failed += store.create_key(key) != S_OK || store.set_value(key, L"", key) != S_OK || store.value(key, L"") != key;
    }
  });
  EXPECT_EQ(0, failed);
  const korlib_host::RegistryStore after(file);
  for (int number = 0; number < kThreads; ++number) {
    for (int i = 0; i < 10; ++i) {
      const std::wstring key = std::to_wstring(number) + L"\\" + std::to_wstring(i);
      EXPECT_EQ(key, after.value(key, L""));
    }
  }
}

TEST(Threads, DecodeCodePagesTogether) {
  std::atomic<int> wrong{0};
  run_threads([&](int) {
    for (int i = 0; i < kRounds; ++i) {
      wchar_t out = 0;
      wrong += codepage_utf32(932, "\x82\xA0", 2, &out, 1) != 1 || out != L'\x3042';
    }
  });
  EXPECT_EQ(0, wrong);
}

}  // namespace
