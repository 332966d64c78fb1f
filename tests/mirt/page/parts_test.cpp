// The controller's plain parts, which no host can tell apart from outside.
#include <gtest/gtest.h>

#include <korlib/activation.h>

#include "frame/globals.h"
#include "page/mirt_session.h"
#include "page/lifecycle.h"
#include "page/mirt_session.h"
#include "page/template_path.h"
#include "page/text.h"
#include "support/fake.h"
#include "support/late_bound.h"

namespace test {
namespace {

// Computed with a Mersenne Twister written in another language from its published description.
TEST(CommandKey, FollowsTheSeed) {
  const struct {
    std::uint32_t seed;
    const wchar_t* key;
  } cases[] = {{0, L"OPSVPW"}, {1, L"KZSYAD"}, {5489, L"VDXVDZ"}, {12345, L"YXIDEB"}, {4294967295u, L"CCXOUN"}};
  for (const auto& row : cases) EXPECT_EQ(row.key, page::draw_command_key(row.seed)) << row.seed;
}

// The lifecycle as it is without the controller, whose own steps accept an empty command and draw files.
class PlainLifecycle : public testing::Test, protected CMirtConcept {
 protected:
  PlainLifecycle() : CMirtConcept(owner()) { handler_.add(script_.get()); }
  void TearDown() override { script_->forget_calls(); }
  static IDispatch* owner() {
    static const CComPtr<FakeScript> owner = FakeScript::make();
    return owner.get();
  }
  void define(std::initializer_list<const wchar_t*> names) {
    for (const wchar_t* name : names) script_->function(name, [](const Arguments&) { return CComVariant(); });
  }
  // How Process ends: the words of its error, empty for success.
  std::wstring ending() {
    take_error();
    script_->forget_calls();
    const HRESULT hr = CMirtConcept::Process();
    const ErrorText error = take_error();
    EXPECT_EQ(error.description.empty() ? S_OK : E_FAIL, hr);
    EXPECT_EQ(error.description.empty() ? L"" : L"Mirt", error.source);
    return error.description;
  }

  CComPtr<FakeScript> script_ = FakeScript::make();
};

TEST_F(PlainLifecycle, FiresOneFunctionAStep) {
  command_ = CComBSTR(L"Save");
  template_ = CComBSTR(L"list");
  define({L"OnCommand_Save", L"OnTemplate_list"});
  EXPECT_EQ(L"", ending());
  EXPECT_EQ((std::vector<std::wstring>{L"On_StartProcess", L"On_StartCommand", L"OnCommand_Save", L"On_EndCommand",
                                       L"On_StartDraw", L"OnTemplate_list", L"On_EndDraw", L"On_EndProcess"}),
            script_->asked());
}

TEST_F(PlainLifecycle, NeedsSomebodyForTheCommandAndForTheTemplate) {
  EXPECT_EQ(L"Unknown Command ''.", ending());
  command_ = CComBSTR(L"Save");
  EXPECT_EQ(L"Unknown Command 'Save'.", ending());
  define({L"OnCommand_Save"});
  EXPECT_EQ(L"Unknown Template ''.", ending());
  template_ = CComBSTR(L"list");
  EXPECT_EQ(L"Unknown Template 'list'.", ending());
  define({L"OnTemplate_list"});
  EXPECT_EQ(L"", ending());
}

// What a step has answered so far stays when its function, or the look-up of that, fails.
TEST_F(PlainLifecycle, AFailureLeavesTheAnswerAsItWas) {
  for (const bool before : {true, false}) {
    script_->failing(L"On_StartDraw", E_ABORT);
    bool answer = before;
    EXPECT_EQ(E_ABORT, CMirtConcept::On_StartDraw(answer));
    EXPECT_EQ(before, answer);
    script_->remove(L"On_StartDraw");
    script_->fail_unknown_names(E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, CMirtConcept::On_StartDraw(answer));
    EXPECT_EQ(E_ACCESSDENIED, CMirtConcept::Draw(answer));
    EXPECT_EQ(before, answer);
    script_->fail_unknown_names(DISP_E_UNKNOWNNAME);
  }
}

TEST(PageText, JoinsTextsWithWhateverIsInThem) {
  EXPECT_EQ(std::wstring_view(L"a\0b\xD800", 4), page::join({L"a", {L"\0", 1}, L"", L"b\xD800"}).view());
  EXPECT_EQ(L"", page::join({}).view());
  EXPECT_TRUE(page::join({L""}).get() != nullptr);
}

TEST(TemplatePath, ComposesFolderNameAndExtension) {
  const struct {
    const wchar_t *current, *folder, *name, *extension, *path;
  } cases[] = {
      {L"", L"C:\\site\\tpl", L"list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl\\", L"list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl", L"/list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl", L"\\list", L".html", L"C:\\site\\tpl\\list.html"},
      {L"", L"C:\\site\\tpl", L"//list", L"", L"C:\\site\\tpl\\/list"},
      {L"", L"/site/tpl/", L"list", L".html", L"/site/tpl/\\list.html"},
      {L"", L"", L"list", L".html", L"list.html"},
      {L"", L"", L"", L"", L""},
      {L"", L"d", L"", L"html", L"d\\html"},
      {L"C:\\site\\tpl\\parts\\a.html", L"C:\\site\\tpl", L"b", L".html", L"C:\\site\\tpl\\parts\\b.html"},
      {L"C:\\site\\tpl\\parts\\a.html", L"", L"/b", L".html", L"C:\\site\\tpl\\parts\\b.html"},
      {L"/site/tpl/a.html", L"/site/tpl", L"b", L".html", L"b.html"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(row.path, page::compose_path(row.current, row.folder, row.name, row.extension).view());
}

TEST(TemplatePath, IsPermittedBelowItsBaseInAnyCase) {
  const struct {
    const wchar_t *path, *permitted, *folder;
    bool allowed;
  } cases[] = {
      {L"/nowhere/tpl/a", L"", L"/nowhere/tpl", true},
      {L"/nowhere/TPL/a", L"", L"/Nowhere/tpl", true},
      {L"/nowhere/tpl", L"", L"/nowhere/tpl", false},
      {L"/nowhere/tplx/a", L"", L"/nowhere/tpl", false},
      {L"/nowhere/a", L"", L"/nowhere/tpl", false},
      {L"/nowhere/a", L"/nowhere", L"/nowhere/tpl", true},
      {L"/nowhere/tpl/a", L"/else", L"/nowhere", false},
      {L"/nowhere/a", L"", L"", false},
      {L"", L"", L"/nowhere", false},
      {L"\\nowhere\\a", L"", L"/nowhere\\", true},
      {L"/nowhere/a", L"/", L"", false},
  };
  for (const auto& row : cases)
    EXPECT_EQ(row.allowed, page::CanPathObtain(row.path, row.permitted, row.folder))
        << testing::PrintToString(std::wstring(row.path));
}

TEST(TemplatePath, AppendsTheCanonicalFormAndRefusesANul) {
  CComBSTR out;
  EXPECT_EQ(S_OK, page::ConvertToCanonicalizedPath(L"/", out));
  EXPECT_EQ(L"/", out.view());
  CComBSTR begun(L"path: ");
  EXPECT_EQ(S_OK, page::ConvertToCanonicalizedPath(L"\\.\\", begun));
  EXPECT_EQ(L"path: /", begun.view());
  EXPECT_EQ(E_FAIL, page::ConvertToCanonicalizedPath({L"/\0.html", 7}, out));
  EXPECT_EQ(E_FAIL, page::ConvertToCanonicalizedPath(L"/no such folder/no such file", out));
  EXPECT_EQ(L"/", out.view());
  EXPECT_EQ(E_FAIL, page::ConvertToCanonicalizedPath(std::wstring(5000, L'a'), out));
}

class MirtSession : public testing::Test {
 protected:
  void SetUp() override { session_.attach(new CMirtSession); }
  void TearDown() override {
    session_.reset();
    EXPECT_EQ(0, g_nRefCount);
  }
  std::wstring command_name() {
    CComBSTR name;
    EXPECT_EQ(S_OK, session_->GetCommandName(name.put()));
    return std::wstring(name.view());
  }
  CComPtr<IMirtSession> session_;
};

HRESULT ask(IUnknown* session, REFIID iid, const wchar_t* name, void** out) {
  *out = const_cast<wchar_t*>(name);
  return session->QueryInterface(iid, out);
}

TEST_F(MirtSession, CountsAsAnObjectOfTheModule) { EXPECT_EQ(1, g_nRefCount); }

TEST_F(MirtSession, IsAskedForByName) {
  IUnknown* const sessions[] = {session_.get(), &g_oMirtSessionNull};
  for (IUnknown* session : sessions) {
    for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L"", L"IMirtSession"}) {
      void* out = nullptr;
      EXPECT_EQ(S_OK, ask(session, IID_NULL, name, &out));
      EXPECT_EQ(session, out);
      session->Release();
    }
    void* out = nullptr;
    EXPECT_EQ(S_OK, ask(session, IID_IUnknown, L"anything", &out));
    session->Release();
    EXPECT_EQ(E_NOINTERFACE, ask(session, IID_NULL, L"imirtsession", &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(E_NOINTERFACE, ask(session, IID_IDispatch, nullptr, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(E_POINTER, session->QueryInterface(IID_NULL, nullptr));
  }
}

TEST_F(MirtSession, CountsItsReferencesAndTheNullObjectDoesNot) {
  EXPECT_EQ(2u, session_->AddRef());
  EXPECT_EQ(1u, session_->Release());
  EXPECT_EQ(1u, g_oMirtSessionNull.AddRef());
  EXPECT_EQ(1u, g_oMirtSessionNull.Release());
  EXPECT_EQ(1u, g_oMirtSessionNull.Release());
}

TEST_F(MirtSession, NamesTheCommandFieldSixLettersAndACount) {
  for (int count = 0; count < 3; ++count) {
    const std::wstring name = command_name();
    ASSERT_EQ(7u, name.size());
    for (std::size_t i = 0; i < 6; ++i) EXPECT_TRUE(name[i] >= L'A' && name[i] <= L'Z');
    EXPECT_EQ(std::to_wstring(count), name.substr(6));
    EXPECT_EQ(S_OK, session_->IncrementCommand());
  }
}

TEST_F(MirtSession, HandsOutOneBag) {
  CComPtr<IKorLibDictionary> first;
  CComPtr<IKorLibDictionary> second;
  EXPECT_EQ(S_OK, session_->get_Bag(first.put()));
  EXPECT_EQ(S_OK, session_->get_Bag(second.put()));
  EXPECT_TRUE(first);
  EXPECT_EQ(first, second);
}

TEST(MirtSessionNull, AsksForTheName) {
  CComPtr<IKorLibDictionary> bag;
  CComBSTR name;
  EXPECT_EQ(E_FAIL, g_oMirtSessionNull.get_Bag(bag.put()));
  ErrorText error = take_error();
  EXPECT_EQ(L"Could not get Bag. Please specify property 'Name'.", error.description);
  EXPECT_EQ(L"Mirt", error.source);
  EXPECT_EQ(E_FAIL, g_oMirtSessionNull.GetCommandName(name.put()));
  EXPECT_EQ(L"Could not get Command Name. Please specify property 'Name'.", take_error().description);
  EXPECT_EQ(E_FAIL, g_oMirtSessionNull.IncrementCommand());
  EXPECT_EQ(L"Could not increment Command. Please specify property 'Name'.", take_error().description);
}

}  // namespace
}  // namespace test
