// Objects that a page makes for its script.
#include <algorithm>

#include <korlib/dbcommand.h>
#include <korlib_host/class_table.h>

#include "mirt/page/page_fixture.h"

namespace test {
namespace {

// A database command that shows what it was told, and fails where it should.
class Command final : public korlib::DispatchObject<Command, IKorDBCommand> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
  HRESULT put_ActiveConnection(VARIANT connection) override {
    log.emplace_back(L"connection " + std::wstring(korlib::view_of(connection.bstrVal)));
    return fail_at == 1 ? E_ABORT : S_OK;
  }
  HRESULT put_CommandType(LONG type) override {
    log.push_back(L"type " + std::to_wstring(type));
    return fail_at == 2 ? E_ABORT : S_OK;
  }
  HRESULT put_CommandText(BSTR text) override {
    log.push_back(L"text " + std::wstring(korlib::view_of(text)));
    return fail_at == 3 ? E_ABORT : S_OK;
  }
  // The base is asked as the host asks; a page wants the command late-bound.
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    if (fail_at == 4 && riid == IID_IDispatch) {
      *ppv = nullptr;
      return E_NOINTERFACE;
    }
    return DispatchObject::QueryInterface(riid, ppv);
  }
  ~Command() override { ++destroyed; }

  static inline fake::Texts log;
  static inline int fail_at = 0;
  static inline int destroyed = 0;
};

HRESULT create_command(REFIID riid, void** ppv) {
  *ppv = nullptr;
  if (Command::fail_at == -1) return REGDB_E_CLASSNOTREG;
  return korlib::make<Command>()->QueryInterface(riid, ppv);
}

class Factories : public PageTest {};

TEST_F(Factories, NewADOCommandConfiguresTheHostsCommandInOrder) {
  const korlib_host::ClassRow row{CLSID_KorDBCommand, nullptr, create_command};
  korlib_host::register_classes({&row, 1});
  const fake::Texts all = {L"connection dsn", L"type 4", L"text select 1"};
  const HRESULT results[] = {REGDB_E_CLASSNOTREG, S_OK, E_ABORT, E_ABORT, E_ABORT, E_NOINTERFACE};
  for (int fail_at = -1; fail_at <= 4; ++fail_at) {
    Command::log.clear();
    Command::fail_at = fail_at;
    Command::destroyed = 0;
    const Answer answer = call(page(), L"NewADOCommand", L"dsn", L"select 1", 4);
    if (fail_at == 0) {
      EXPECT_TRUE(object_of(answer));
      EXPECT_EQ(Command::log, all);
      EXPECT_EQ(0, Command::destroyed);
    } else {
      EXPECT_EQ(results[fail_at + 1], answer.hr);
      EXPECT_EQ(static_cast<std::size_t>(std::clamp(fail_at, 0, 3)), Command::log.size());
      EXPECT_EQ(Command::destroyed, fail_at < 0 ? 0 : 1);
    }
  }
}

TEST_F(Factories, NewMailIsNotThere) {
  EXPECT_EQ(E_NOTIMPL, call(page(), L"NewMail", L"server", 25).hr);
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  auto* mail = reinterpret_cast<IDispatch*>(0x10);
  EXPECT_EQ(E_NOTIMPL, typed->NewMail(nullptr, 0, &mail));
  EXPECT_EQ(nullptr, mail);
}

class ChildTemplator : public PageTest {
 protected:
  CComPtr<IDispatch> child(const wchar_t* prefix) {
    const korlib_host::ContextScope scope(asp_.context.get());
    const Answer answer = call(page(), L"NewTemplator", prefix);
    EXPECT_EQ(S_OK, answer.hr);
    return object_of(answer);
  }
  static std::wstring drawn(IDispatch* templator, const std::wstring& text) {
    const Answer answer = call(templator, L"ProcessTemplate", text);
    return FAILED(answer.hr) ? text_of(answer) : text_of(call(templator, L"Flush"));
  }
};

TEST_F(ChildTemplator, DrawsWithThePagesViewAndBagAndItsOwnPrefix) {
  with_name();
  in_process([&] {
    call(page(), L"SetView", L"v", L"<view>");
    put(object_of(get(page(), L"Bag")).get(), L"Item", L"b", L"bag");
    const CComPtr<IDispatch> templator = child(L"OnRow_");
    const CComPtr<FakeScript> rows = FakeScript::make();
    rows->function(L"OnRow_Cell", [](const Arguments& a) {
      call(a[0].pdispVal, L"Write", L"cell", false);
      return CComVariant();
    });
    EXPECT_EQ(S_OK, putref(templator.get(), L"Script", rows).hr);
    EXPECT_EQ(L"<view> «<view>» bag cell", drawn(templator.get(), L"(#/v#) (#*v#) (#|b#) (#%Cell#)"));
    EXPECT_EQ(page(), object_of(get(templator.get(), L"Main")).get());
    EXPECT_EQ(L"<code 80004005>Event 'OnRow_None' not found.", drawn(templator.get(), L"(#%None#)"));
    rows->forget_calls();
  });
}

TEST_F(ChildTemplator, OutsideProcessHasNeitherViewNorBag) {
  const CComPtr<IDispatch> templator = child(L"");
  EXPECT_TRUE(templator);
  EXPECT_EQ(L"<code 80004005>", drawn(templator.get(), L"(#/v#)"));
  EXPECT_EQ(L"<code 80004005>", drawn(templator.get(), L"(#|b#)"));
}

TEST_F(ChildTemplator, GoesOnWithoutAPageThatIsGone) {
  CComPtr<IDispatch> templator;
  {
    const CComPtr<IDispatch> gone = new_page();
    put(gone.get(), L"SelfEncode", true);
    const korlib_host::ContextScope scope(asp_.context.get());
    templator = object_of(call(gone.get(), L"NewTemplator", L""));
  }
  const CComPtr<IDispatch> in_its_place = new_page();
  put(in_its_place.get(), L"SelfEncode", true);
  EXPECT_EQ(E_FAIL, get(templator.get(), L"Main").hr);
  EXPECT_EQ(S_OK, call(templator.get(), L"Write", L"<", true).hr);
  EXPECT_EQ(L"«<»", text_of(call(templator.get(), L"Flush"))) << "the host encodes";
}

TEST_F(ChildTemplator, OutsideARequestIsNotMade) {
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, call(page(), L"NewTemplator", L"").hr);
}

TEST_F(ChildTemplator, FollowsSelfEncodeAtEveryWrite) {
  const CComPtr<IDispatch> templator = child(L"");
  call(templator.get(), L"Write", L"<", true);
  put(page(), L"SelfEncode", true);
  call(templator.get(), L"Write", L"<", true);
  EXPECT_EQ(L"«<»&lt;", text_of(call(templator.get(), L"Flush")));
}

}  // namespace
}  // namespace test
