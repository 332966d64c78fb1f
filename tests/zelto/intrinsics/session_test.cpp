#include "intrinsics/session_object.h"
#include "intrinsics/session_state.h"
#include "zelto/intrinsics/page_fixture.h"

#include <thread>

namespace {

using namespace test;
using namespace std::chrono_literals;

class Session : public testing::Test {
 protected:
  std::shared_ptr<zelto::SessionState> state = std::make_shared<zelto::SessionState>("id");
  CComPtr<zelto::SessionObject> session = korlib::make<zelto::SessionObject>(state);
};

// An object whose default member is its text.
class Named final : public korlib::DispatchObject<Named> {
 public:
  static std::span<const korlib::Member> members() {
    static constexpr korlib::Member table[] = {property<&Named::get_Text>(L"Text").is_default()};
    return table;
  }
  HRESULT get_Text(BSTR* text) {
    *text = SysAllocString(L"named");
    return S_OK;
  }
};

TEST_F(Session, KeepsValuesUnderNamesInAnyLetterCase) {
  EXPECT_EQ(put(session.get(), L"Value", L"Name", L"Ann").hr, S_OK);
  EXPECT_EQ(text_of(get(session.get(), L"Value", L"NAME")), L"Ann");
  EXPECT_EQ(get(session.get(), L"Value", L"none").value.vt, VT_EMPTY);
  EXPECT_EQ(invoke(session.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {value_of(L"name")}).value.vt, VT_BSTR);
}

TEST_F(Session, KeepsTheTypeOfWhatIsStored) {
  CComPtr<Named> object = korlib::make<Named>();
  CComVariant unknown(static_cast<IUnknown*>(object.get()));
  EXPECT_EQ(session->putref_Value(CComBSTR(L"o"), unknown), S_OK);
  CComVariant back;
  EXPECT_EQ(session->get_Value(CComBSTR(L"o"), &back), S_OK);
  EXPECT_EQ(back.vt, VT_UNKNOWN);
  EXPECT_EQ(back.punkVal, object.get());
}

TEST_F(Session, StoresAnObjectByReferenceAndItsDefaultValueByValue) {
  CComPtr<Named> object = korlib::make<Named>();
  EXPECT_EQ(putref(session.get(), L"Value", L"ref", object).hr, S_OK);
  EXPECT_EQ(put(session.get(), L"Value", L"val", object).hr, S_OK);
  EXPECT_EQ(get(session.get(), L"Value", L"ref").value.vt, VT_DISPATCH);
  EXPECT_EQ(text_of(get(session.get(), L"Value", L"val")), L"named");
  const auto contents = object_of(get(session.get(), L"Contents"));
  EXPECT_EQ(put(contents, L"Item", L"val2", object).hr, S_OK);
  EXPECT_EQ(putref(contents.get(), L"Item", L"ref2", object).hr, S_OK);
  EXPECT_EQ(text_of(get(contents, L"Item", L"val2")), L"named");
  EXPECT_EQ(get(contents, L"Item", L"ref2").value.vt, VT_DISPATCH);
}

TEST_F(Session, CountsPlacesInNumbersOfEveryType) {
  for (const wchar_t* name : {L"a", L"b", L"c"}) put(session.get(), L"Value", name, name);
  const auto contents = object_of(get(session.get(), L"Contents"));
  for (const VARTYPE vt : {VT_I1, VT_I2, VT_I4, VT_I8, VT_INT, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT}) {
    CComVariant two;
    two.vt = vt;
    two.llVal = 2;
    EXPECT_EQ(text_of(get(contents, L"Item", two)), L"b") << vt;
  }
  CComVariant single;
  single.vt = VT_R4;
  single.fltVal = 3;
  EXPECT_EQ(text_of(get(contents, L"Item", single)), L"c");
  EXPECT_EQ(text_of(get(contents, L"Item", 1.0)), L"a");
  EXPECT_EQ(get(contents, L"Item", L"2").value.vt, VT_EMPTY);  // text is a name
}

TEST_F(Session, RemovesAndCountsContents) {
  for (const wchar_t* name : {L"a", L"b", L"c"}) put(session.get(), L"Value", name, name);
  const auto contents = object_of(get(session.get(), L"Contents"));
  EXPECT_EQ(get(contents, L"Count").value.lVal, 3);
  EXPECT_EQ(text_of(get(contents, L"Key", 2)), L"b");
  EXPECT_EQ(call(contents, L"Remove", L"A").hr, S_OK);
  EXPECT_EQ(call(contents, L"Remove", 2).hr, S_OK);  // "c"
  EXPECT_EQ(call(contents, L"Remove", L"none").hr, S_OK);
  EXPECT_EQ(call(contents, L"Remove", 2).hr, DISP_E_BADINDEX);
  EXPECT_EQ(text_of(get(contents, L"Item", 1)), L"b");
  EXPECT_EQ(put(contents, L"Item", L"d", 4).hr, S_OK);
  EXPECT_EQ(get(session.get(), L"Value", L"d").value.lVal, 4);
  EXPECT_EQ(call(contents, L"RemoveAll").hr, S_OK);
  EXPECT_EQ(get(contents, L"Count").value.lVal, 0);
  EXPECT_EQ(get(session.get(), L"Value", L"b").value.vt, VT_EMPTY);
}

TEST_F(Session, IsKeptOnlyOnceSomethingIsStored) {
  int kept = 0;
  state->on_keep = [&kept] {
    ++kept;
    return S_OK;
  };
  get(session.get(), L"Value", L"a");
  get(object_of(get(session.get(), L"Contents")), L"Count");
  EXPECT_EQ(kept, 0);
  put(session.get(), L"Value", L"a", 1);
  put(session.get(), L"Value", L"b", 2);
  EXPECT_EQ(kept, 1);
}

TEST_F(Session, IsKeptOnceItsIdentifierIsRead) {
  int kept = 0;
  state->on_keep = [&kept] {
    ++kept;
    return S_OK;
  };
  EXPECT_EQ(text_of(get(session.get(), L"SessionID")), L"id");
  EXPECT_EQ(kept, 1);
}

TEST_F(Session, IsKeptInsteadOfRenewedWhileNobodyKnowsItsIdentifier) {
  int kept = 0;
  int renewed = 0;
  state->on_keep = [&kept] { return ++kept, S_OK; };
  state->on_renew = [&renewed] { return ++renewed, S_OK; };
  EXPECT_EQ(call(session.get(), L"RenewID").hr, S_OK);
  EXPECT_EQ(kept, 1);
  EXPECT_EQ(renewed, 0);
  EXPECT_EQ(call(session.get(), L"RenewID").hr, S_OK);
  EXPECT_EQ(kept, 1);
  EXPECT_EQ(renewed, 1);
}

TEST_F(Session, StoresNothingWhenItCannotBeKept) {
  state->on_keep = [] { return E_FAIL; };
  EXPECT_EQ(put(session.get(), L"Value", L"a", 1).hr, E_FAIL);
  EXPECT_EQ(get(session.get(), L"Value", L"a").value.vt, VT_EMPTY);
}

TEST_F(Session, HasATimeoutInMinutes) {
  EXPECT_EQ(get(session.get(), L"Timeout").value.lVal, 20);
  EXPECT_EQ(put(session.get(), L"Timeout", 5).hr, S_OK);
  EXPECT_EQ(state->timeout_minutes, 5);
  EXPECT_EQ(put(session.get(), L"Timeout", 0).hr, E_INVALIDARG);
  EXPECT_EQ(put(session.get(), L"Timeout", 1441).hr, E_INVALIDARG);
}

TEST_F(Session, RemembersCodePageAndLocale) {
  EXPECT_EQ(get(session.get(), L"CodePage").value.lVal, 65001);
  EXPECT_EQ(get(session.get(), L"LCID").value.lVal, 2048);
  EXPECT_EQ(put(session.get(), L"CodePage", 932).hr, S_OK);
  EXPECT_EQ(put(session.get(), L"LCID", 1041).hr, S_OK);
  EXPECT_EQ(get(session.get(), L"CodePage").value.lVal, 932);
  EXPECT_EQ(get(session.get(), L"LCID").value.lVal, 1041);
  EXPECT_EQ(state->code_page, 932);
  EXPECT_EQ(state->lcid, 1041);
}

TEST_F(Session, RefusesACodePageAndALocaleThatItDoesNotKnow) {
  const Answer page = put(session.get(), L"CodePage", 12345);
  EXPECT_EQ(page.hr, E_INVALIDARG);
  EXPECT_EQ(page.description, L"CodePage: no such code page.");
  const Answer locale = put(session.get(), L"LCID", 12345);
  EXPECT_EQ(locale.hr, E_INVALIDARG);
  EXPECT_EQ(locale.description, L"LCID: 12345 is no locale that this host knows; 2048 is the neutral form.");
  EXPECT_EQ(state->code_page, 65001);
  EXPECT_EQ(state->lcid, 2048);
}

// Many pages begin by setting what is so already; their visitors need no cookie for it.
TEST_F(Session, IsKeptForACodePageOrLocaleOnlyWhenItIsAnother) {
  int kept = 0;
  state->on_keep = [&kept] {
    ++kept;
    return S_OK;
  };
  put(session.get(), L"CodePage", 65001);
  put(session.get(), L"LCID", 2048);
  EXPECT_EQ(kept, 0);
  put(session.get(), L"LCID", 1041);
  EXPECT_EQ(kept, 1);
  state->kept = false;
  state->on_keep = [] { return E_FAIL; };
  EXPECT_EQ(put(session.get(), L"CodePage", 932).hr, E_FAIL);
  EXPECT_EQ(state->code_page, 65001);
}

class SessionOfAPage : public PageTest {};

TEST_F(SessionOfAPage, SetsCodePageAndLocaleOfThePageAsWell) {
  const auto state = std::make_shared<zelto::SessionState>("id");
  response_object();
  const auto session = korlib::make<zelto::SessionObject>(state, page_state());
  put(session.get(), L"CodePage", 1252);
  put(session.get(), L"LCID", 1031);
  EXPECT_EQ(page().response.code_page, 1252);
  EXPECT_EQ(page().request.code_page, 1252);
  EXPECT_EQ(page().response.lcid, 1031);
  EXPECT_EQ(put(session.get(), L"LCID", 5555).hr, E_INVALIDARG);
  EXPECT_EQ(page().response.lcid, 1031);
}

TEST_F(Session, KeepsItsValuesToTheEndOfThePageWhenAbandoned) {
  put(session.get(), L"Value", L"a", 1);
  EXPECT_EQ(call(session.get(), L"Abandon").hr, S_OK);
  EXPECT_EQ(get(session.get(), L"Value", L"a").value.lVal, 1);
  EXPECT_TRUE(state->abandoned);
}

TEST(FifoLock, LetsWaitersInInTheirOrder) {
  zelto::FifoLock lock;
  ASSERT_TRUE(lock.try_lock());
  EXPECT_FALSE(lock.try_lock());
  EXPECT_FALSE(lock.lock(1ms));
  std::vector<int> order;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&lock, &order, i] {
      ASSERT_TRUE(lock.lock(60s));
      order.push_back(i);  // under the lock
      lock.unlock();
    });
    while (lock.waiting() != static_cast<std::size_t>(i) + 1) std::this_thread::yield();
  }
  lock.unlock();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

}  // namespace
