// Memory that runs out anywhere from the beginning of a request for a page to its end: the session is given back, and
// the next request is answered.
#include <gtest/gtest.h>
#include <korlib_host/diagnostics.h>

#include <filesystem>
#include <new>

#include "support/failing_allocations.h"
#include "zelto/site/page_run_fixture.h"

namespace {

using test::each_allocation_failing;
using test::FailingAllocation;
using test::MemorySink;

class FailingPage : public test::PageRunFixture {
 protected:
  FailingPage() { options.session_patience = std::chrono::seconds(0); }

  // What a worker does. The status that was answered, 0 when nothing was.
  int run_with_failure(zelto::script::Engine& engine, const std::string& sent, int n, int times, bool& failed,
                       MemorySink& sink) {
    zelto::HttpRequest asked = request(sent);
    log.clear();
    log.reserve(16);
    const FailingAllocation failing(n, times);
    try {
      zelto::run_page(site(), engine, std::move(asked), "/page.asp", sink);
    } catch (const std::bad_alloc&) {
      sink.head.status = 500;  // which the server answers
    }
    failed = failing.has_failed();
    return sink.head.status;
  }

  // Has the page fail at each allocation, with a request of the same session after each failure.
  void fail_everywhere(const std::string& page, int times) {
    folder.write("page.asp", page);
    base::run_on_thread(zelto::kPageStack, [&] {
      zelto::script::Engine engine;
      const auto ask = [&](const std::string& sent) {
        MemorySink sink;
        zelto::run_page(site(), engine, request(sent), "/page.asp", sink);
        for (const std::string& set : sink.header("Set-Cookie")) cookie = set.substr(0, set.find(';'));
        EXPECT_EQ(200, sink.head.status) << sink.body;
        return sink.body;
      };
      ask("");
      ask(cookie);
      engine.collect_garbage();
      const std::int64_t objects = korlib_host::live_objects();
      const int failures = each_allocation_failing([&](int n) {
        MemorySink sink;
        bool failed = false;
        const int status = run_with_failure(engine, cookie, n, times, failed, sink);
        EXPECT_TRUE(status == 200 || status == 500) << n << ": " << status;
        for (const std::string& set : sink.header("Set-Cookie")) cookie = set.substr(0, set.find(';'));
        ask(cookie);
        engine.collect_garbage();
        EXPECT_EQ(objects, korlib_host::live_objects()) << n;
        EXPECT_EQ(1u, site().sessions().size()) << n;
        return failed && !HasFailure();
      });
      EXPECT_GT(failures, 20);
    });
  }
};

TEST_F(FailingPage, GivesItsSessionBack) {
  fail_everywhere("<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>", 1);
}

TEST_F(FailingPage, GivesItsSessionBackWhenMemoryIsShortForAWhile) {
  fail_everywhere("<% Session('n') = (Session('n') || 0) + 1; %><%= Session('n') %>", 5);
}

}  // namespace
