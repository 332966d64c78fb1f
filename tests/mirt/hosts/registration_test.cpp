// Registration on a host with a registry of its own, each of whose steps fails once.
#include <gtest/gtest.h>

#include "mirt/hosts/own_functions.h"
#include "support/module.h"

namespace test {
namespace {

using Calls = std::vector<std::wstring>;

class Registration : public testing::Test {
 protected:
  void SetUp() override {
    registry = {};
    module_path = L"/somewhere/libmirt.so";
    module_ = std::make_unique<Module>();
  }
  HRESULT register_server() { return module_->symbol<HRESULT()>("DllRegisterServer")(); }
  HRESULT unregister_server() { return module_->symbol<HRESULT()>("DllUnregisterServer")(); }

  std::unique_ptr<Module> module_;
};

struct Class {
  std::wstring prog_id;
  std::wstring clsid;
};

// Letter case as it is written to the registry.
const Class kClasses[] = {
    {L"Mirt", L"{717FA104-3BC5-4b9e-8112-106B75FD22C4}"},
    {L"Mirt.TextTemplator", L"{6F026685-9E59-4111-9964-05B121FFD6EB}"},
    {L"Mirt.Utility", L"{97F90828-1121-4ef7-98B3-75F95DABFDEB}"},
};

Calls registration_of(const Class& row) {
  const std::wstring server = L"HKCR\\CLSID\\" + row.clsid + L"\\InProcServer32";
  return {
      L"create HKCR\\" + row.prog_id,
      L"create HKCR\\" + row.prog_id + L"\\CLSID",
      L"set HKCR\\" + row.prog_id + L"\\CLSID [] = " + row.clsid + L" (76)",
      L"open HKCR\\CLSID",
      L"create HKCR\\CLSID\\" + row.clsid,
      L"set HKCR\\CLSID\\" + row.clsid + L" [] = " + row.prog_id + L" (" + std::to_wstring(row.prog_id.size() * 2) +
          L")",
      L"create " + server,
      L"set " + server + L" [] = /somewhere/libmirt.so (42)",
      L"set " + server + L" [ThreadingModel] = Apartment (18)",
  };
}

Calls removal_of(const Class& row) {
  return {
      L"open HKCR\\" + row.prog_id,        L"delete HKCR\\" + row.prog_id + L"\\CLSID",
      L"delete HKCR\\" + row.prog_id,      L"open HKCR\\CLSID",
      L"open HKCR\\CLSID\\" + row.clsid,   L"delete HKCR\\CLSID\\" + row.clsid + L"\\InProcServer32",
      L"delete HKCR\\CLSID\\" + row.clsid,
  };
}

Calls all_of(Calls (*steps_of)(const Class&)) {
  Calls calls;
  for (const Class& row : kClasses) {
    const Calls steps = steps_of(row);
    calls.insert(calls.end(), steps.begin(), steps.end());
  }
  return calls;
}

TEST_F(Registration, WritesThreeClasses) {
  EXPECT_EQ(S_OK, register_server());
  EXPECT_EQ(all_of(registration_of), registry.calls);
  EXPECT_EQ(0, registry.open_keys);
}

TEST_F(Registration, IsTakenOut) {
  EXPECT_EQ(S_OK, unregister_server());
  EXPECT_EQ(all_of(removal_of), registry.calls);
  EXPECT_EQ(0, registry.open_keys);
}

// At whichever step: nothing after it is tried, and every key is closed.
TEST_F(Registration, StopsAtTheFirstStepThatFails) {
  const Calls all = all_of(registration_of);
  for (std::size_t step = 1; step <= all.size(); ++step) {
    registry = {};
    registry.failing_call = static_cast<int>(step);
    EXPECT_EQ(E_FAIL, register_server()) << step;
    EXPECT_EQ(Calls(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(step)), registry.calls) << step;
    EXPECT_EQ(0, registry.open_keys) << step;
  }
}

TEST_F(Registration, RemovalStopsAtTheFirstStepThatFails) {
  const Calls all = all_of(removal_of);
  for (std::size_t step = 1; step <= all.size(); ++step) {
    registry = {};
    registry.failing_call = static_cast<int>(step);
    EXPECT_EQ(E_FAIL, unregister_server()) << step;
    EXPECT_EQ(Calls(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(step)), registry.calls) << step;
    EXPECT_EQ(0, registry.open_keys) << step;
  }
}

}  // namespace
}  // namespace test
