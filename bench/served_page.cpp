// The list page as the host serves it, its script in JavaScript: 100 rows drawn by a child templator. Each
// page does what the one before it does and one thing more, so that the differences are the phases; beside
// them the same list built from strings in the script alone, and a copy of the output.
#include <benchmark/benchmark.h>

#include <cstring>
#include <optional>

#include <korlib/text.h>

#include "app/runtime.h"
#include "base/thread.h"
#include "http/server.h"
#include "site/page_run.h"
#include "support/temporary_folder.h"
#include "zelto/http/client.h"
#include "zelto/support/memory_sink.h"

namespace {

struct File {
  const char* name;
  const char* text;
};

// What every page but the empty one begins with.
constexpr char kScript[] = R"(
var rows = [], this_ = this;
for (var i = 1; i <= 100; i++) rows.push({ id: i, name: "Entry <" + i + ">", link: "?c=Edit&id=" + i });
function controller(template) {
  var page = Server.CreateObject("Mirt");
  page.AddScript(this_);
  page.TemplateFolder = Server.MapPath(".");
  page.TemplateExt = ".html";
  page.DefaultTemplate = template;
  page.Process();
}
function OnDraw_Rows(page, texts) {
  var child = page.NewTemplator("Row_");
  child.Script = this_;
  child.Stream = Response;
  rows.forEach(function (row) {
    page.SetView("id", row.id);
    page.SetView("name", row.name);
    page.SetView("link", row.link);
    child.ProcessTemplate(texts[0]);
  });
}
var current;
function OnDraw_CalledRows(page, texts) {
  var child = page.NewTemplator("Row_");
  child.Script = this_;
  child.Stream = Response;
  rows.forEach(function (row) { current = row; child.ProcessTemplate(texts[0]); });
}
function Row_Cells(child) {
  child.Write("<td>" + current.id + "</td><td>" + Server.HTMLEncode(current.name) + "</td><td><a href=\"" +
    Server.HTMLEncode(current.link) + "\">edit</a></td>", false);
}
function strings() {
  var page = "<!DOCTYPE html><title>Entries</title><table>\n";
  rows.forEach(function (row) {
    page += "<tr><td>" + row.id + "</td><td>" + Server.HTMLEncode(row.name) + "</td><td><a href=\"" +
      Server.HTMLEncode(row.link) + "\">edit</a></td></tr>\n";
  });
  Response.Write(page + "</table>\n");
}
)";

constexpr char kRow[] = R"html(<tr><td>(#*id#)</td><td>(#*name#)</td><td><a href="(#*link#)">edit</a></td></tr>)html";

// After the page, the same file as often as this, so that what drawing it once takes can be told.
constexpr char kFilesScript[] =
    "function On_EndDraw(page) { for (var i = 0; i < 100; i++) page.DrawTemplate('short'); }";

// One thing, so often that the page around it does not count.
constexpr int kCalls = 10'000;
constexpr char kMethodPage[] = "<% for (var i = 0; i < 10000; i++) Response.Clear(); %>";
constexpr char kViewPage[] =
    "<% %SCRIPT% function On_EndDraw(page) { for (var i = 0; i < 10000; i++) page.SetView('name', 'an entry'); }"
    " controller('short'); %>";
constexpr char kFunctionPage[] =
    "<% %SCRIPT% var all = '(#%Nothing#)'.repeat(100); function OnDraw_Nothing() {}"
    " function On_EndDraw(page) { for (var i = 0; i < 100; i++) page.ProcessTemplate(all); } controller('short'); %>";

constexpr File kFiles[] = {
    {"nothing.asp", "<% %>"},
    {"script.asp", "<% %SCRIPT% %>"},
    {"controller.asp", "<% %SCRIPT% controller(''); %>"},
    {"template.asp", "<% %SCRIPT% controller('plain'); %>"},
    {"list.asp", "<% %SCRIPT% controller('list'); %>"},
    {"called.asp", "<% %SCRIPT% controller('called'); %>"},
    {"files.asp", "<% %SCRIPT% %FILES% controller('plain'); %>"},
    {"short.html", "<p>An entry that nobody has changed since.</p>\n"},
    {"method.asp", kMethodPage},
    {"view.asp", kViewPage},
    {"function.asp", kFunctionPage},
    {"strings.asp", "<% %SCRIPT% strings(); %>"},
    {"list.html", "<!DOCTYPE html><title>Entries</title><table>\n(#%Rows|%ROW%\n#)</table>\n"},
    {"called.html", "<!DOCTYPE html><title>Entries</title><table>\n(#%CalledRows|<tr>(#%Cells#)</tr>\n#)</table>\n"},
};

std::string filled(std::string text, const std::string& what, const std::string& with) {
  const std::size_t at = text.find(what);
  return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

zelto::HttpRequest request_for(const std::string& path) {
  zelto::HttpRequest request;
  request.method = "GET";
  request.path = request.target = path;
  return request;
}

// The site of the pages above. plain.html is as long as what list.asp prints.
class ListSite {
 public:
  ListSite() {
    options_.root = folder_.path().string();
    options_.log = [](std::string_view) {};
    zelto::set_up_runtime();
    for (const File& file : kFiles)
      folder_.write(file.name,
                    filled(filled(filled(file.text, "%SCRIPT%", kScript), "%FILES%", kFilesScript), "%ROW%", kRow));
    site_.emplace(options_);
    base::run_on_thread(zelto::kPageStack, [this] {
      zelto::script::Engine engine;
      test::MemorySink sink;
      run(engine, "list", sink);
      list_ = sink.body;
    });
    folder_.write("plain.html", list_);
  }

  const std::string& list() const { return list_; }
  int run(zelto::script::Engine& engine, const std::string& page, zelto::ResponseSink& sink) {
    const std::string path = "/" + page + ".asp";
    return zelto::run_page(*site_, engine, request_for(path), path, sink);
  }

 private:
  const test::TemporaryFolder folder_;
  zelto::SiteOptions options_;
  std::optional<zelto::Site> site_;
  std::string list_;
};

ListSite& site() {
  static ListSite only;
  return only;
}

// Pages run on threads of their own.
void in_all_threads(benchmark::internal::Benchmark* one) {
  one->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime()->UseRealTime();
}

void run_page(benchmark::State& state, const char* name, bool prints_list) {
  base::run_on_thread(zelto::kPageStack, [&] {
    zelto::script::Engine engine;
    for ([[maybe_unused]] auto _ : state) {
      test::MemorySink sink;
      const int status = site().run(engine, name, sink);
      if (status != 200 || (sink.body == site().list()) != prints_list) state.SkipWithError("not the page");
    }
  });
}
BENCHMARK_CAPTURE(run_page, 1_realm, "nothing", false)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, 2_and_script, "script", false)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, 3_and_controller, "controller", false)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, 4_and_template_file, "template", true)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, 4_and_a_file_100_times, "files", false)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, 5_and_rows_of_marks, "list", true)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, 5_and_rows_by_function, "called", true)->Apply(in_all_threads);
BENCHMARK_CAPTURE(run_page, strings_instead, "strings", true)->Apply(in_all_threads);

// What crossing from script to component or back takes: `each` is one call.
void calls(benchmark::State& state, const char* name) {
  run_page(state, name, false);
  using benchmark::Counter;
  state.counters["each"] = Counter(kCalls, Counter::kIsIterationInvariantRate | Counter::kInvert);
}
BENCHMARK_CAPTURE(calls, method_without_arguments, "method")->Apply(in_all_threads);
BENCHMARK_CAPTURE(calls, set_view, "view")->Apply(in_all_threads);
BENCHMARK_CAPTURE(calls, script_function_by_a_mark, "function")->Apply(in_all_threads);

// Answers "/list" with the page, all else with the text that the page prints.
class ListWorker final : public zelto::Worker {
 public:
  void handle(zelto::HttpRequest&& request, zelto::ResponseSink& sink) override {
    if (request.path == "/list") {
      site().run(engine_, "list", sink);
      return;
    }
    zelto::ResponseHead head;
    head.status = 200;
    sink.start(std::move(head), site().list().size());
    sink.write(site().list());
    sink.finish();
  }

 private:
  zelto::script::Engine engine_;
};

// One client on one connection, which asks for the next page when it has the last.
void over_http(benchmark::State& state, const char* path) {
  zelto::ServerOptions options;
  options.limits.keep_alive_requests = 1'000'000'000;
  options.worker_stack = zelto::kPageStack;
  zelto::Server server(std::move(options), [] { return std::make_unique<ListWorker>(); });
  server.start();
  zelto_test::Client client(server.port());
  const std::string request = "GET " + std::string(path) + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
  for ([[maybe_unused]] auto _ : state) {
    client.send(request);
    const auto answer = client.receive();
    if (!answer || answer->body != site().list()) {
      state.SkipWithError("not the page");
      break;
    }
  }
}
BENCHMARK_CAPTURE(over_http, 6_and_http, "/list")->Apply(in_all_threads);
BENCHMARK_CAPTURE(over_http, http_alone, "/text")->Apply(in_all_threads);

// What becomes of the page's text on its way out, at its least: the conversion, and a copy.
void convert_text(benchmark::State& state) {
  const std::string& bytes = site().list();
  const std::wstring text(bytes.begin(), bytes.end());
  std::string out(bytes.size(), '\0');
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(utf32_utf8(text.data(), text.size(), out.data(), out.size()));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(convert_text)->Unit(benchmark::kMicrosecond);

void copy_text(benchmark::State& state) {
  const std::string& bytes = site().list();
  std::string out(bytes.size(), '\0');
  for ([[maybe_unused]] auto _ : state) {
    std::memcpy(out.data(), bytes.data(), bytes.size());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(copy_text)->Unit(benchmark::kMicrosecond);

}  // namespace
