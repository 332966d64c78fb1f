#include "page/mirt_session.h"

#include <gtest/gtest.h>

#include "frame/globals.h"
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
