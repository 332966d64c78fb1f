#include "intrinsics/session_object.h"
#include "intrinsics/session_state.h"
#include "zelto/intrinsics/page_fixture.h"

#include <thread>

namespace {

using namespace test;
using namespace std::chrono_literals;

// Notes what it is asked for.
struct Client final : zelto::SessionClient {
  HRESULT keep() override { return ++kept, answer; }
  HRESULT renew() override { return ++renewed, answer; }
  HRESULT answer = S_OK;
  int kept = 0;
  int renewed = 0;
};

class Session : public testing::Test {
 protected:
  std::shared_ptr<zelto::SessionState> state = std::make_shared<zelto::SessionState>("id");
  CComPtr<zelto::SessionObject> session = korlib::make<zelto::SessionObject>(state);
  Client client;
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
  EXPECT_EQ(S_OK, put(session.get(), L"Value", L"Name", L"Ann").hr);
  EXPECT_EQ(L"Ann", text_of(get(session.get(), L"Value", L"NAME")));
  EXPECT_EQ(VT_EMPTY, get(session.get(), L"Value", L"none").value.vt);
  EXPECT_EQ(VT_BSTR, invoke(session.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {value_of(L"name")}).value.vt);
}

TEST_F(Session, KeepsTheTypeOfWhatIsStored) {
  CComPtr<Named> object = korlib::make<Named>();
  CComVariant unknown(static_cast<IUnknown*>(object.get()));
  EXPECT_EQ(S_OK, session->putref_Value(CComBSTR(L"o"), unknown));
  CComVariant back;
  EXPECT_EQ(S_OK, session->get_Value(CComBSTR(L"o"), &back));
  EXPECT_EQ(VT_UNKNOWN, back.vt);
  EXPECT_EQ(object.get(), back.punkVal);
}

TEST_F(Session, StoresAnObjectByReferenceAndItsDefaultValueByValue) {
  CComPtr<Named> object = korlib::make<Named>();
  EXPECT_EQ(S_OK, putref(session.get(), L"Value", L"ref", object).hr);
  EXPECT_EQ(S_OK, put(session.get(), L"Value", L"val", object).hr);
  EXPECT_EQ(VT_DISPATCH, get(session.get(), L"Value", L"ref").value.vt);
  EXPECT_EQ(L"named", text_of(get(session.get(), L"Value", L"val")));
  const auto contents = object_of(get(session.get(), L"Contents"));
  EXPECT_EQ(S_OK, put(contents, L"Item", L"val2", object).hr);
  EXPECT_EQ(S_OK, putref(contents.get(), L"Item", L"ref2", object).hr);
  EXPECT_EQ(L"named", text_of(get(contents, L"Item", L"val2")));
  EXPECT_EQ(VT_DISPATCH, get(contents, L"Item", L"ref2").value.vt);
}

TEST_F(Session, CountsPlacesInNumbersOfEveryType) {
  for (const wchar_t* name : {L"a", L"b", L"c"}) put(session.get(), L"Value", name, name);
  const auto contents = object_of(get(session.get(), L"Contents"));
  for (const VARTYPE vt : {VT_I1, VT_I2, VT_I4, VT_I8, VT_INT, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT}) {
    CComVariant two;
    two.vt = vt;
    two.llVal = 2;
    EXPECT_EQ(L"b", text_of(get(contents, L"Item", two))) << vt;
  }
  CComVariant single;
  single.vt = VT_R4;
  single.fltVal = 3;
  EXPECT_EQ(L"c", text_of(get(contents, L"Item", single)));
  EXPECT_EQ(L"a", text_of(get(contents, L"Item", 1.0)));
  EXPECT_EQ(VT_EMPTY, get(contents, L"Item", L"2").value.vt);  // text is a name
}

TEST_F(Session, RemovesAndCountsContents) {
  for (const wchar_t* name : {L"a", L"b", L"c"}) put(session.get(), L"Value", name, name);
  const auto contents = object_of(get(session.get(), L"Contents"));
  EXPECT_EQ(3, get(contents, L"Count").value.lVal);
  EXPECT_EQ(L"b", text_of(get(contents, L"Key", 2)));
  EXPECT_EQ(S_OK, call(contents, L"Remove", L"A").hr);
  EXPECT_EQ(S_OK, call(contents, L"Remove", 2).hr);  // "c"
  EXPECT_EQ(S_OK, call(contents, L"Remove", L"none").hr);
  EXPECT_EQ(DISP_E_BADINDEX, call(contents, L"Remove", 2).hr);
  EXPECT_EQ(L"b", text_of(get(contents, L"Item", 1)));
  EXPECT_EQ(S_OK, put(contents, L"Item", L"d", 4).hr);
  EXPECT_EQ(4, get(session.get(), L"Value", L"d").value.lVal);
  EXPECT_EQ(S_OK, call(contents, L"RemoveAll").hr);
  EXPECT_EQ(0, get(contents, L"Count").value.lVal);
  EXPECT_EQ(VT_EMPTY, get(session.get(), L"Value", L"b").value.vt);
}

TEST_F(Session, IsKeptOnlyOnceSomethingIsStored) {
  state->client = &client;
  get(session.get(), L"Value", L"a");
  get(object_of(get(session.get(), L"Contents")), L"Count");
  EXPECT_EQ(0, client.kept);
  put(session.get(), L"Value", L"a", 1);
  put(session.get(), L"Value", L"b", 2);
  EXPECT_EQ(1, client.kept);
}

TEST_F(Session, IsKeptOnceItsIdentifierIsRead) {
  state->client = &client;
  EXPECT_EQ(L"id", text_of(get(session.get(), L"SessionID")));
  EXPECT_EQ(1, client.kept);
}

TEST_F(Session, IsKeptInsteadOfRenewedWhileNobodyKnowsItsIdentifier) {
  state->client = &client;
  EXPECT_EQ(S_OK, call(session.get(), L"RenewID").hr);
  EXPECT_EQ(1, client.kept);
  EXPECT_EQ(0, client.renewed);
  EXPECT_EQ(S_OK, call(session.get(), L"RenewID").hr);
  EXPECT_EQ(1, client.kept);
  EXPECT_EQ(1, client.renewed);
}

TEST_F(Session, StoresNothingWhenItCannotBeKept) {
  state->client = &client;
  client.answer = E_FAIL;
  EXPECT_EQ(E_FAIL, put(session.get(), L"Value", L"a", 1).hr);
  EXPECT_EQ(VT_EMPTY, get(session.get(), L"Value", L"a").value.vt);
}

TEST_F(Session, HasATimeoutInMinutes) {
  EXPECT_EQ(20, get(session.get(), L"Timeout").value.lVal);
  EXPECT_EQ(S_OK, put(session.get(), L"Timeout", 5).hr);
  EXPECT_EQ(5, state->timeout_minutes);
  EXPECT_EQ(E_INVALIDARG, put(session.get(), L"Timeout", 0).hr);
  EXPECT_EQ(E_INVALIDARG, put(session.get(), L"Timeout", 1441).hr);
}

TEST_F(Session, RemembersCodePageAndLocale) {
  EXPECT_EQ(65001, get(session.get(), L"CodePage").value.lVal);
  EXPECT_EQ(2048, get(session.get(), L"LCID").value.lVal);
  EXPECT_EQ(S_OK, put(session.get(), L"CodePage", 932).hr);
  EXPECT_EQ(S_OK, put(session.get(), L"LCID", 1041).hr);
  EXPECT_EQ(932, get(session.get(), L"CodePage").value.lVal);
  EXPECT_EQ(1041, get(session.get(), L"LCID").value.lVal);
  EXPECT_EQ(932, state->code_page);
  EXPECT_EQ(1041, state->lcid);
}

TEST_F(Session, RefusesACodePageAndALocaleThatItDoesNotKnow) {
  const Answer page = put(session.get(), L"CodePage", 12345);
  EXPECT_EQ(E_INVALIDARG, page.hr);
  EXPECT_EQ(L"CodePage: no such code page.", page.description);
  const Answer locale = put(session.get(), L"LCID", 12345);
  EXPECT_EQ(E_INVALIDARG, locale.hr);
  EXPECT_EQ(L"LCID: 12345 is not a locale that this host knows; 2048 is the neutral form.", locale.description);
  EXPECT_EQ(65001, state->code_page);
  EXPECT_EQ(2048, state->lcid);
}

// Many pages begin by setting what is so already; their visitors need no cookie for it.
TEST_F(Session, IsKeptForACodePageOrLocaleOnlyWhenItIsAnother) {
  state->client = &client;
  put(session.get(), L"CodePage", 65001);
  put(session.get(), L"LCID", 2048);
  EXPECT_EQ(0, client.kept);
  put(session.get(), L"LCID", 1041);
  EXPECT_EQ(1, client.kept);
  state->kept = false;
  client.answer = E_FAIL;
  EXPECT_EQ(E_FAIL, put(session.get(), L"CodePage", 932).hr);
  EXPECT_EQ(65001, state->code_page);
}

class SessionOfAPage : public PageTest {};

TEST_F(SessionOfAPage, SetsCodePageAndLocaleOfThePageAsWell) {
  const auto state = std::make_shared<zelto::SessionState>("id");
  response_object();
  const auto session = korlib::make<zelto::SessionObject>(state, page_state());
  put(session.get(), L"CodePage", 1252);
  put(session.get(), L"LCID", 1031);
  EXPECT_EQ(1252, page().response.code_page);
  EXPECT_EQ(1252, page().request.code_page);
  EXPECT_EQ(1031, page().response.lcid);
  EXPECT_EQ(E_INVALIDARG, put(session.get(), L"LCID", 5555).hr);
  EXPECT_EQ(1031, page().response.lcid);
}

TEST_F(Session, KeepsItsValuesToTheEndOfThePageWhenAbandoned) {
  put(session.get(), L"Value", L"a", 1);
  EXPECT_EQ(S_OK, call(session.get(), L"Abandon").hr);
  EXPECT_EQ(1, get(session.get(), L"Value", L"a").value.lVal);
  EXPECT_TRUE(state->abandoned);
}

TEST(FifoLock, IsThereForTheNextOnceNobodyWaits) {
  zelto::FifoLock lock;
  ASSERT_TRUE(lock.try_lock());
  EXPECT_FALSE(lock.lock(1ms));
  EXPECT_FALSE(lock.try_lock());
  lock.unlock();
  EXPECT_TRUE(lock.lock(1ms));
  lock.unlock();
  EXPECT_TRUE(lock.try_lock());
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
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), order);
}

}  // namespace
