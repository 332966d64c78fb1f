// What is left of a page's realm once the page has ended.
#include <algorithm>

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using RealmMemory = ScriptTest;

// The process grew by a whole global object with every page.
TEST_F(RealmMemory, IsFreeOnceThePageHasEnded) {
  constexpr std::size_t kPages = 50;
  const auto program = zelto::language::compile(L"function f() { return 1; } Promise.resolve().then(f);", "/page.asp");
  std::vector<JSWeakRef> globals;
  for (std::size_t i = 0; i < kPages; ++i) {
    zelto::script::Realm page_realm(engine);
    EXPECT_EQ(zelto::script::Outcome::completed, page_realm.run(program).kind);
    globals.push_back(JSWeakCreate(engine.group(), page_realm.globals().object()));
  }
  JSGlobalContextRef context = JSGlobalContextCreateInGroup(engine.group(), nullptr);
  JSSynchronousGarbageCollectForDebugging(context);
  // The collector takes whatever it finds on the stack for a reference, so a few may be left.
  const auto alive = std::ranges::count_if(globals, [](JSWeakRef weak) { return JSWeakGetObject(weak) != nullptr; });
  EXPECT_LT(alive, 10);
  for (JSWeakRef weak : globals) JSWeakRelease(engine.group(), weak);
  JSGlobalContextRelease(context);
}

}  // namespace
}  // namespace test
