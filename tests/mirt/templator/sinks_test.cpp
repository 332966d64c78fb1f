// What a template can be drawn into, and how each kind is written.
#include "mirt/templator/engine.h"

namespace test {
namespace {

struct KindCase {
  const char* about;
  unsigned kinds;
  SinkKind chosen;
};
const KindCase kKinds[] = {
    {"a response", kResponse, kResponse},
    {"an ADO-style stream", kAdoStream, kAdoStream},
    {"a text stream", kTextStream, kTextStream},
    {"a raw stream", kRawStream, kRawStream},
    {"a response comes before a raw stream", kResponse | kRawStream, kResponse},
    {"a response comes before all", kResponse | kAdoStream | kTextStream | kRawStream, kResponse},
    {"an ADO-style stream before a text stream", kAdoStream | kTextStream | kRawStream, kAdoStream},
    {"a text stream before a raw stream", kTextStream | kRawStream, kTextStream},
};

TEST(Output, IsTheFirstKindThatTheObjectIsOf) {
  for (const KindCase& row : kKinds) {
    SCOPED_TRACE(row.about);
    Engine engine;
    const CComPtr<RecordingSink> sink = RecordingSink::make(row.kinds);
    EXPECT_EQ(S_OK, engine.putref_Output(sink->unknown()));
    EXPECT_TRUE(engine.has_output());
    EXPECT_EQ(row.chosen == kAdoStream, engine.stream_output() != nullptr);
    EXPECT_EQ(S_OK, engine.stream(L"a"));
    EXPECT_EQ((std::vector<RecordingSink::Output>{{row.chosen, L"a"}}), sink->outputs);
    CComPtr<IUnknown> current;
    EXPECT_EQ(S_OK, engine.get_Output(current.put()));
    EXPECT_EQ(sink->unknown(), current.get());
  }
}

TEST(Output, RefusesAnObjectOfNoneOfTheKinds) {
  Engine engine;
  const CComPtr<RecordingSink> old = RecordingSink::make(kResponse);
  const CComPtr<RecordingSink> other = RecordingSink::make(0);
  ASSERT_EQ(S_OK, engine.putref_Output(old->unknown()));
  EXPECT_EQ(E_INVALIDARG, engine.putref_Output(other->unknown()));
  EXPECT_FALSE(engine.has_output());
  IUnknown* current = old->unknown();  // poison
  EXPECT_EQ(S_OK, engine.get_Output(&current));
  EXPECT_EQ(nullptr, current);
  EXPECT_EQ(1u, old->references());
  EXPECT_EQ(1u, other->references());
}

TEST(Output, LetsGoOfTheOldOne) {
  Engine engine;
  const CComPtr<RecordingSink> sink = RecordingSink::make(kTextStream);
  EXPECT_EQ(S_OK, engine.putref_Output(sink->unknown()));
  EXPECT_EQ(2u, sink->references());
  EXPECT_EQ(S_OK, engine.putref_Output(nullptr));
  EXPECT_EQ(1u, sink->references());
  IUnknown* current = sink->unknown();  // poison
  EXPECT_EQ(S_OK, engine.get_Output(&current));
  EXPECT_EQ(nullptr, current);
  EXPECT_EQ(S_OK, engine.putref_Output(nullptr));
}

TEST(Output, CanBeSetAgainToTheObjectThatItHolds) {
  Engine engine;
  CComPtr<RecordingSink> sink = RecordingSink::make(kRawStream);
  ASSERT_EQ(S_OK, engine.putref_Output(sink->unknown()));
  CComPtr<IUnknown> current;
  ASSERT_EQ(S_OK, engine.get_Output(current.put()));
  IUnknown* const watched = current.get();
  current.reset();
  sink.reset();  // the engine holds the last reference
  EXPECT_EQ(S_OK, engine.putref_Output(watched));
  EXPECT_EQ(2u, watched->AddRef());
  EXPECT_EQ(1u, watched->Release());
  EXPECT_EQ(S_OK, engine.stream(L"x"));
}

TEST(Output, IsReleasedWithTheEngine) {
  for (const unsigned kind : {kResponse, kAdoStream, kTextStream, kRawStream}) {
    const CComPtr<RecordingSink> sink = RecordingSink::make(kind);
    {
      Engine engine;
      EXPECT_EQ(S_OK, engine.putref_Output(sink->unknown()));
    }
    EXPECT_EQ(1u, sink->references());
  }
}

TEST(Output, FailsToBeWrittenWhereThereIsNone) {
  Engine engine;
  EXPECT_EQ(E_FAIL, engine.write_output(CComBSTR(L"x")));
  EXPECT_FALSE(engine.has_output());
  EXPECT_EQ(E_POINTER, engine.get_Output(nullptr));
}

TEST(Output, GivesARawStreamTheCharactersAsTheyLieInMemory) {
  Engine engine;
  const CComPtr<RecordingSink> sink = RecordingSink::make(kRawStream);
  ASSERT_EQ(S_OK, engine.putref_Output(sink->unknown()));
  const std::wstring text(L"a\0\U0001F600", 3);
  EXPECT_EQ(S_OK, engine.write_output(CComBSTR(std::wstring_view(text))));
  EXPECT_EQ(std::vector<std::wstring>{text}, sink->texts());
  EXPECT_EQ(std::vector<ULONG>{12}, sink->byte_counts);
}

// A string may end in the middle of a character.
TEST(Output, GivesARawStreamEveryByteOfAString) {
  Engine engine;
  const CComPtr<RecordingSink> sink = RecordingSink::make(kRawStream);
  ASSERT_EQ(S_OK, engine.putref_Output(sink->unknown()));
  for (const UINT bytes : {0u, 1u, 4u, 7u}) {
    CComBSTR text;
    text.attach(SysAllocStringByteLen("\x61\0\0\0\x62\0\0", bytes));
    EXPECT_EQ(S_OK, engine.write_output(text));
  }
  EXPECT_EQ((std::vector<ULONG>{0, 1, 4, 7}), sink->byte_counts);
}

TEST(Output, PassesTheSinksFailureOn) {
  for (const unsigned kind : {kResponse, kAdoStream, kTextStream, kRawStream}) {
    Engine engine;
    const CComPtr<RecordingSink> sink = RecordingSink::make(kind);
    sink->fail_at = 0;
    sink->failure = E_ACCESSDENIED;
    ASSERT_EQ(S_OK, engine.putref_Output(sink->unknown()));
    EXPECT_EQ(E_ACCESSDENIED, engine.write_output(CComBSTR(L"x")));
  }
}

}  // namespace
}  // namespace test
