// DllMain on a host with type libraries.
#include <mirt/mirt.h>
#include <zelto/asp.h>

#include <cwchar>
#include <memory>
#include <string>

#include <korlib/plain_typeinfo.h>

#include "mirt/hosts/own_functions.h"
#include "support/late_bound.h"
#include "support/module.h"

namespace test {
namespace {

struct Slot {
  const char* global;
  const IID& iid;
  bool of_host;
};

const Slot kSlots[] = {
    {"g_pTI_IMirt", korlib::iid_of<IMirt>, false},
    {"g_pTI_IMirtedTemplator", korlib::iid_of<IMirtedTemplator>, false},
    {"g_pTI_IFormFile", korlib::iid_of<IFormFile>, false},
    {"g_pTI_ITextTemplator", korlib::iid_of<ITextTemplator>, false},
    {"g_pTI_IUtility", korlib::iid_of<IUtility>, false},
    {"g_pTI_IStringList", korlib::iid_of<ZeltoTypeLibrary::IStringList>, true},
    {"g_pTI_IRequestDictionary", korlib::iid_of<ZeltoTypeLibrary::IRequestDictionary>, true},
};
constexpr int kCount = static_cast<int>(std::size(kSlots));

// Counts its references and knows the name "Magic" only.
class FakeTypeInfo final : public korlib::PlainTypeInfo {
 public:
  int references = 0;
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ITypeInfo, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return static_cast<ULONG>(++references); }
  ULONG Release() override {
    if (released) released->push_back(this);
    return static_cast<ULONG>(--references);
  }
  HRESULT GetIDsOfNames(LPOLESTR* names, UINT, MEMBERID* ids) override {
    const bool known = std::wcscmp(names[0], L"Magic") == 0;
    ids[0] = known ? 77 : DISPID_UNKNOWN;
    return known ? S_OK : DISP_E_UNKNOWNNAME;
  }
  HRESULT Invoke(void* instance, MEMBERID id, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override {
    invoked_on = instance;
    CComVariant(LONG{id}).detach_to(result);
    return S_OK;
  }

  void* invoked_on = nullptr;
  std::vector<const FakeTypeInfo*>* released = nullptr;  // where each release is written down
};

// What the two libraries hold between them, and in which order they were asked.
struct Contents {
  FakeTypeInfo infos[kCount];
  int missing = -1;              // the slot that is not there
  bool missing_is_null = false;  // answered as a success without an object
  std::vector<int> asked;
};

class FakeTypeLib final : public korlib::PlainTypeLib {
 public:
  FakeTypeLib(Contents& contents, bool of_host) : contents_(contents), of_host_(of_host) {}
  int references = 0;
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ITypeLib, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return static_cast<ULONG>(++references); }
  ULONG Release() override { return static_cast<ULONG>(--references); }
  HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info) override {
    *info = nullptr;
    for (int i = 0; i < kCount; ++i) {
      if (kSlots[i].iid != guid || kSlots[i].of_host != of_host_) continue;
      contents_.asked.push_back(i);
      if (i == contents_.missing) return contents_.missing_is_null ? S_OK : TYPE_E_ELEMENTNOTFOUND;
      contents_.infos[i].AddRef();
      *info = &contents_.infos[i];
      return S_OK;
    }
    ADD_FAILURE() << "asked for an interface that it does not describe";
    return TYPE_E_ELEMENTNOTFOUND;
  }

 private:
  Contents& contents_;
  bool of_host_;
};

class TypeLibraries : public testing::Test {
 protected:
  void SetUp() override {
    module_path = L"/somewhere/libmirt.so";
    own_library = &own_;
    host_library = &host_;
    loaded_paths.clear();
    calls_disabled = 0;
    disabled_module = asked_module = nullptr;
  }
  void TearDown() override {
    own_library = host_library = nullptr;
    EXPECT_EQ(0, own_.references);
    EXPECT_EQ(0, host_.references);
  }
  ITypeInfo* current(const Module& module, int slot) { return *module.symbol<ITypeInfo*>(kSlots[slot].global); }

  Contents contents_;
  FakeTypeLib own_{contents_, false};
  FakeTypeLib host_{contents_, true};
};

TEST_F(TypeLibraries, ReplaceTheStaticTypeInformation) {
  {
    Module module;
    EXPECT_EQ(TRUE, module.attached());
    EXPECT_EQ((std::vector<std::wstring>{L"/somewhere/libmirt.so", L"/somewhere/libmirt.so\\2"}), loaded_paths);
    EXPECT_EQ(L"/somewhere/libmirt.so", std::wstring(module.symbol<wchar_t>("g_aDLLPath")));
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 5, 6}), contents_.asked);
    EXPECT_EQ(1, calls_disabled);
    EXPECT_EQ(module.handle(), disabled_module);
    EXPECT_EQ(module.handle(), asked_module);
    EXPECT_EQ(260u, asked_size);
    for (int i = 0; i < kCount; ++i) {
      EXPECT_EQ(&contents_.infos[i], current(module, i));
      EXPECT_EQ(1, contents_.infos[i].references);
    }
    // Objects forward to it, and hand themselves over as the interface that it describes.
    CComPtr<IUtility> utility = module.create<IUtility>(L"Utility");
    const Answer answer = call(utility.get(), L"Magic");
    EXPECT_EQ(77, answer.value.lVal);
    EXPECT_EQ(static_cast<void*>(utility.get()), contents_.infos[4].invoked_on);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, call(utility.get(), L"Trim", L"x").hr);
    CComPtr<ITypeInfo> handed_out;
    EXPECT_EQ(S_OK, utility->GetTypeInfo(0, 0, handed_out.put()));
    EXPECT_EQ(&contents_.infos[4], handed_out.get());
    EXPECT_EQ(2, contents_.infos[4].references);
  }
  // Released when it was detached and again when it was unloaded, as hosts know.
  for (const FakeTypeInfo& info : contents_.infos) EXPECT_EQ(-1, info.references);
}

TEST_F(TypeLibraries, AreLetGoOfInTheOrderOfTheirInterfaces) {
  std::vector<const FakeTypeInfo*> released;
  const auto module = std::make_unique<Module>();
  std::vector<const FakeTypeInfo*> expected;
  for (FakeTypeInfo& info : contents_.infos) {
    info.released = &released;
    expected.push_back(&info);
  }
  EXPECT_EQ(TRUE, module->symbol<int(void*, unsigned int, void*)>("DllMain")(module->handle(), 0, nullptr));
  EXPECT_EQ(expected, released);
  for (int i = 0; i < kCount; ++i) EXPECT_EQ(expected[static_cast<std::size_t>(i)], current(*module, i));
  for (FakeTypeInfo& info : contents_.infos) {
    EXPECT_EQ(0, info.references);
    info.AddRef();  // for the module's second detach, at its end
    info.released = nullptr;
  }
}

TEST_F(TypeLibraries, AreUsedOnlyTogether) {
  for (const bool own_is_there : {true, false}) {
    own_library = own_is_there ? &own_ : nullptr;
    host_library = own_is_there ? nullptr : &host_;
    Module module;
    EXPECT_EQ(FALSE, module.attached());
    EXPECT_EQ(2u, loaded_paths.size());
    loaded_paths.clear();
    EXPECT_TRUE(contents_.asked.empty());
    EXPECT_EQ(L"x", text_of(call(module.create(L"Utility").get(), L"Trim", L" x ")));
  }
  EXPECT_EQ(2, calls_disabled);
}

TEST_F(TypeLibraries, ServeUpToTheFirstInterfaceThatIsMissing) {
  for (const bool missing_is_null : {false, true}) {
    for (int missing = 0; missing < kCount; ++missing) {
      contents_.missing = missing;
      contents_.missing_is_null = missing_is_null;
      contents_.asked.clear();
      Module module;
      EXPECT_EQ(FALSE, module.attached());
      EXPECT_EQ(static_cast<std::size_t>(missing) + 1, contents_.asked.size());
      for (int i = 0; i < kCount; ++i) {
        EXPECT_EQ(i < missing, current(module, i) == &contents_.infos[i]) << missing << " " << i;
        EXPECT_NE(nullptr, current(module, i));
      }
    }
  }
}

// The path fills the buffer to its last character; the host's library is still asked for after it.
TEST_F(TypeLibraries, ALongModulePathIsCutSafely) {
  module_path = std::wstring(400, L'p');
  Module module;
  const std::wstring kept(259, L'p');
  EXPECT_EQ(kept, std::wstring(module.symbol<wchar_t>("g_aDLLPath")));
  EXPECT_EQ((std::vector<std::wstring>{kept, kept + L"\\2"}), loaded_paths);
}

}  // namespace
}  // namespace test
