#include "page/memory.h"

#include "mirt/page/parts/parts_fixture.h"

namespace test {
namespace {

class Memory : public PartsTest {
 protected:
  Memory() { memory_.name = CComBSTR(L"p"); }
  bool bind(page::Memory& memory) {
    bool is_new = false;
    EXPECT_EQ(S_OK, memory.bind(&is_new));
    return is_new;
  }
  static CComPtr<IKorLibDictionary> bag_of(const page::Memory& memory) {
    CComPtr<IKorLibDictionary> bag;
    EXPECT_EQ(S_OK, memory.get_bag(&bag));
    return bag;
  }
  static std::wstring field_of(const page::Memory& memory) {
    CComBSTR field;
    EXPECT_EQ(S_OK, memory.get_command_field(&field));
    return std::wstring(field.view());
  }

  page::Memory memory_{asp_};
};

TEST_F(Memory, IsMadeOnceForANameAndFoundAgain) {
  EXPECT_TRUE(bind(memory_));
  EXPECT_EQ(VT_UNKNOWN, fakes_.session->values()[L"p"].vt);
  page::Memory next(asp_);
  next.name = CComBSTR(L"p");
  EXPECT_FALSE(bind(next));
  EXPECT_EQ(bag_of(memory_), bag_of(next));
  next.name = CComBSTR(L"q");
  EXPECT_TRUE(bind(next));
  EXPECT_FALSE(bag_of(memory_) == bag_of(next));
}

TEST_F(Memory, AsksForANameWhereNothingIsBound) {
  const auto expect_refusals = [this] {
    CComPtr<IKorLibDictionary> bag;
    EXPECT_EQ(E_FAIL, memory_.get_bag(&bag));
    EXPECT_EQ(L"Could not get Bag. Please specify property 'Name'.", take_error().description);
    EXPECT_EQ(S_OK, memory_.get_bag_if_bound(&bag));
    EXPECT_FALSE(bag);
    memory_.backable = false;
    CComBSTR field;
    EXPECT_EQ(E_FAIL, memory_.get_command_field(&field));
    EXPECT_EQ(L"Could not get Command Name. Please specify property 'Name'.", take_error().description);
    EXPECT_EQ(E_FAIL, memory_.end_command());
    EXPECT_EQ(L"Could not increment Command. Please specify property 'Name'.", take_error().description);
    memory_.backable = true;
    EXPECT_EQ(S_OK, memory_.end_command());
  };
  expect_refusals();
  memory_.name.reset();
  EXPECT_FALSE(bind(memory_));
  expect_refusals();
  memory_.name = CComBSTR(L"p");
  asp_.session.reset();
  EXPECT_FALSE(bind(memory_));
  expect_refusals();
  EXPECT_FALSE(memory_.is_lost());
  EXPECT_EQ(E_FAIL, memory_.abandon());
}

TEST_F(Memory, FailsOnAForeignObjectAndOnASessionThatKeepsNothing) {
  fakes_.session->values()[L"p"] = CComVariant(static_cast<IUnknown*>(script_.get()));
  bool is_new = true;
  EXPECT_EQ(E_NOINTERFACE, memory_.bind(&is_new));
  EXPECT_FALSE(is_new);
  fakes_.session->values().clear();
  fakes_.calls->fail("Session.putref_Value", E_ABORT);
  EXPECT_EQ(E_ABORT, memory_.bind(&is_new));
}

TEST_F(Memory, IsLostWhenItWasAbandoned) {
  EXPECT_TRUE(bind(memory_));
  EXPECT_FALSE(memory_.is_lost());
  EXPECT_EQ(S_OK, memory_.abandon());
  EXPECT_TRUE(memory_.is_lost());
  EXPECT_TRUE(bag_of(memory_)) << "what is bound stays";
  EXPECT_TRUE(bind(memory_));
  memory_.name.reset();
  EXPECT_FALSE(memory_.is_lost()) << "there is nothing to keep";
}

TEST_F(Memory, NamesTheCommandsField) {
  EXPECT_EQ(L"c", field_of(memory_));
  memory_.command_name = CComBSTR(L"cmd");
  EXPECT_EQ(L"cmd", field_of(memory_));
  EXPECT_TRUE(bind(memory_));
  memory_.backable = false;
  EXPECT_EQ(L"0", field_of(memory_).substr(6));
  EXPECT_EQ(S_OK, memory_.end_command());
  EXPECT_EQ(L"1", field_of(memory_).substr(6));
  memory_.backable = true;
  EXPECT_EQ(S_OK, memory_.end_command());
  memory_.backable = false;
  EXPECT_EQ(L"1", field_of(memory_).substr(6));
}

}  // namespace
}  // namespace test
