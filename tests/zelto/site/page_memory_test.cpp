// What a page may have others take for it: components, databases and the host's own objects.
#include <cstdlib>
#include <memory>
#include <thread>

#include "script/thread_memory.h"
#include "zelto/site/page_run_fixture.h"

namespace {

using test::MemorySink;
using zelto::ThreadMemory;

constexpr std::int64_t kMebibyte = 1 << 20;

class PageMemory : public test::PageRunFixture {
 protected:
  static constexpr std::int64_t kLimit = 64 * kMebibyte;
  // Beyond it, an eighth; and what one call takes for its arguments.
#ifdef KOR_SANITIZED
  // A sanitizer's realloc has the old block beside the new one for a moment.
  static constexpr std::int64_t kMost = 2 * (kLimit + kLimit / 8);
#else
  static constexpr std::int64_t kMost = kLimit + kLimit / 8 + 4 * kMebibyte;
#endif

  PageMemory() {
    options.script_memory = static_cast<std::size_t>(kLimit);
    options.script_timeout = std::chrono::seconds(120);
  }

  static std::string with_tools(const std::string& script) {
    return "<% var n = 0, big = 'x'.repeat(1e5), bytes = new Uint8Array(1e5), dictionary = "
           "function () { return Server.CreateObject('Scripting.Dictionary'); }, d = dictionary(), stream = "
           "function (type) { var s = Server.CreateObject('ADODB.Stream'); s.Type = type; s.Open(); return s; };" +
           script + " %>";
  }

  static constexpr const char* kFull =
      "/page.asp: The page took more memory than the site allows. Its limit. (Server, 0x8007000E)";

  // The most that the program had while the body ran, beyond what it had before, as far as looking now and then tells.
  template <class Body>
  static std::int64_t most_taken(Body body) {
    const std::int64_t before = ThreadMemory::of_all_threads();
    std::int64_t most = before;
    {
      const std::jthread looker([&most](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
          most = std::max(most, ThreadMemory::of_all_threads());
          std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
      });
      body();
    }
    return most - before;
  }

  // The page fails for its memory, which stays near the limit, and nothing of it is left afterwards.
  void ends_at_the_limit(const std::string& script) {
    body("warm");
    const std::int64_t before = ThreadMemory::of_all_threads();
    log.clear();
    MemorySink sink;
    const std::int64_t most = most_taken([&] { sink = run(with_tools(script), cookie); });
    EXPECT_EQ(500, sink.head.status) << script;
    EXPECT_EQ(kFull, told_of_limit()) << script;
    EXPECT_LE(most, kMost) << script;
    sink = {};
    restart();
    EXPECT_EQ("still here", body("still <%= 'here' %>")) << script;
    EXPECT_LE(ThreadMemory::of_all_threads() - before, 2 * kMebibyte) << script;
  }
};

TEST_F(PageMemory, CountsWhatObjectsKeep) {
  for (const char* script : {"for (;;) d.Add(n++, big);", "for (;;) d.Add(n++ + big, 0);", "for (;;) d.Item(n++) = n;",
                             "for (;;) d.Add(n++, bytes);", "for (;;) d.Add(n++, [n, [big]]);",
                             "for (var first = d;;) { d.Add(0, dictionary()); d = d.Item(0); d.Add(1, big); }",
                             "for (var s = stream(2);;) s.WriteText(big);", "for (var s = stream(1);;) s.Write(bytes);",
                             "for (var all = [];; all.push(s)) { var s = stream(1); s.Write(bytes); }",
                             "for (;;) Response.AddHeader('X-A', big);", "for (;;) Response.Cookies('n' + n++) = big;",
                             "for (var t = Server.CreateObject('Mirt.TextTemplator');;) t.Write(big);"}) {
    ends_at_the_limit(script);
  }
}

TEST_F(PageMemory, CountsWhatOutlivesThePage) {
  for (const char* script : {"for (;;) Application('x' + n++) = big;", "for (;;) Session('x' + n++) = big;",
                             "Application('d') = d; for (d = Application('d');;) d.Add(n++, big);"}) {
    ends_at_the_limit(script);
  }
}

// No call that comes between takes the page beyond its limit.
TEST_F(PageMemory, RefusesABlockThatIsTooLarge) {
  for (const char* script :
       {"stream(1).Position = 2000000000; Response.Write('reached');",
        "for (;;) try { stream(1).Position = 2000000000; } catch (e) {}",
        "var s = stream(1); s.Position = 3e7; s.Position = 0; d.Add(1, s.Read()); d.Add(2, d.Item(1));"
        "Response.Write('reached');"}) {
    ends_at_the_limit(script);
  }
}

TEST_F(PageMemory, EndsAPageThatCatchesEverything) {
  ends_at_the_limit("for (;;) try { for (;;) d.Add(n++, big); } catch (e) {} finally { continue; }");
}

TEST_F(PageMemory, CountsRowsThatADatabaseGives) {
  const std::string open =
      "var c = Server.CreateObject('ADODB.Connection'); c.Open('Driver=SQLite3;Database=" + options.root +
      "/test.db'); c.CommandTimeout = 0; var rows = 'WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
      "SELECT i, hex(zeroblob(500)) FROM n';";
  for (const char* use : {"c.Execute(rows)", "c.Execute(rows).GetRows()", "c.CursorLocation = 3; c.Execute(rows)",
                          "c.Close(); c.Open(c.ConnectionString + ';StepAPI=1'); c.Execute(rows).GetRows()",
                          "c.Close(); c.Open(c.ConnectionString + ';StepAPI=1'); c.Execute(rows).GetString()"}) {
    for (const bool catches : {false, true}) {
      log.clear();
      const std::string script = catches ? std::string("for (;;) try { ") + use + "; } catch (e) {}" : use;
      EXPECT_EQ(500, run(with_tools(open + script + "; Response.Write(1);"), "").head.status) << script;
      EXPECT_EQ(kFull, told_of_limit()) << script;
    }
  }
  EXPECT_EQ("5", body(with_tools(open + "Response.Write(c.Execute('SELECT 5')(0).Value);")));
}

// The rows that it keeps, some 48 MB, are within the limit; the array of them would not be.
TEST_F(PageMemory, CountsRowsThatAreCopied) {
  ends_at_the_limit(
      "var c = Server.CreateObject('ADODB.Connection'); c.Open('Driver=SQLite3;StepAPI=1;Database=" + options.root +
      "/test.db'); c.CursorLocation = 3; var rs = c.Execute('WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 "
      "FROM n LIMIT 12000) SELECT hex(zeroblob(500)) FROM n'); rs.GetRows(); Response.Write('reached');");
}

TEST_F(PageMemory, LeavesAPageAloneThatStaysBelow) {
  EXPECT_EQ("done", body(with_tools("while (n < 100) d.Add(n++, big); Response.Write('done');"))) << "40 MB";
  EXPECT_EQ("done",
            body(with_tools("for (; n < 2000; n++) { d.RemoveAll(); d.Add(n, big); } Response.Write('done');")));
  EXPECT_EQ(std::vector<std::string>{}, log);
}

// Some 400 MB, of which the script engine knows nothing.
TEST_F(PageMemory, DoesNotCountGarbage) {
  EXPECT_EQ("done", body(with_tools("for (; n < 200; n++) { var g = stream(1); for (var i = 0; i < 20; i++) "
                                    "g.Write(bytes); } Response.Write('done');")));
  EXPECT_EQ(std::vector<std::string>{}, log);
}

// It waits for the client within limits of its own.
TEST_F(PageMemory, DoesNotCountAnAnswerThatHasBeenSent) {
  const MemorySink sink = run(with_tools("for (; n < 1000; n++) Response.Write(big);"), "");
  EXPECT_EQ(std::size_t{100'000'000}, sink.body.size());
  EXPECT_EQ(std::vector<std::string>{}, log);
}

TEST_F(PageMemory, KeepsNothingMoreOfAProgramThatHasTooMuch) {
  // Counted and never written. Without it the sum may be small: what was taken before counting began is freed
  // meanwhile.
  const std::unique_ptr<void, void (*)(void*)> much(std::malloc(std::size_t{1} << 30), std::free);
  body(
      "<% Application('d') = Server.CreateObject('Scripting.Dictionary'); Application('d').Add('n', 'text');"
      "Application('n') = Session('n') = 0; Session('s') = 'text'; %>");
  zelto::SiteOptions changed = options;
  changed.kept_memory = 1;
  site().change(changed);
  const std::string tries =
      "<% function t(f) { try { f(); Response.Write('kept;') } catch (e) { Response.Write(e.message + ';') } }"
      "var d = Application('d');";
  const std::string no = "Nothing more can be kept: the site has all the memory that it may have.;";
  EXPECT_EQ(no + no + no + no + no, body(tries + "t(function () { Application('t') = 'text' });"
                                                 "t(function () { Application('number') = 1 });"
                                                 "t(function () { Session('number') = 1 });"
                                                 "t(function () { Session('s') = 'other' });"
                                                 "t(function () { d.Add('m', 1) }); %>"));
  EXPECT_EQ("kept;kept;kept;text text",
            body(tries + "t(function () { Application('n') = 1 }); t(function () { Session('n') = 1 });"
                         "t(function () { d.Remove('n'); }); %><%= Session('s') + ' text' %>"));
}

}  // namespace
