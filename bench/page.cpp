// A page that lists 100 rows through a child templator: whole, and by phase; and what a row costs in
// plain marks, beside one that calls a script function. The script is native code, so what is measured
// is the component and the calls between the two.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <korlib_host/context.h>

#include "support/fake.h"
#include "support/fake_asp.h"
#include "support/late_bound.h"
#include "support/module.h"
#include "support/unused_members.h"

namespace {

using test::Arguments;
using test::call;
using test::FakeScript;
using test::put;

constexpr std::size_t kRows = 100;
constexpr wchar_t kRow[] = L"<tr><td>(#:id#)</td><td>(#:name#)</td><td><a href=\"(#:link#)\">edit</a></td></tr>\n";
constexpr wchar_t kViewRow[] = L"<tr><td>(#/id#)</td><td>(#/name#)</td><td><a href=\"(#/link#)\">edit</a></td></tr>\n";
constexpr wchar_t kCalledRow[] = L"(#%Row|17#|#a name#)\n";

// One buffer, as a host keeps it.
class Sink final : public test::UnusedResponse<korlib::DispatchObject<Sink, ZeltoTypeLibrary::IResponse>> {
 public:
  static std::span<const korlib::Member> members() { return {}; }
  HRESULT Write(VARIANT text) override {
    written.append(korlib::view_of(text.bstrVal));
    return S_OK;
  }
  HRESULT AddHeader(BSTR, BSTR) override { return S_OK; }
  HRESULT AppendToLog(BSTR) override { return S_OK; }
  HRESULT put_Status(BSTR) override { return S_OK; }

  std::wstring written;
};

std::wstring rows_of(const Arguments& arguments) {
  IDispatch* page = arguments[0].pdispVal;
  const CComPtr<IDispatch> templator = test::object_of(call(page, L"NewTemplator", L"OnRow_"));
  const CComPtr<FakeScript> row = FakeScript::make();
  test::putref(templator.get(), L"Script", row);
  for (LONG i = 0; i < LONG{kRows}; ++i) {
    row->value(L"id", CComVariant(i));
    row->value(L"name", CComVariant(L"a name"));
    row->value(L"link", CComVariant(L"?c=edit&"));
    call(templator.get(), L"ProcessTemplate", kRow);
  }
  return test::text_of(call(templator.get(), L"Flush"));
}

// A request, its page's script and its template file.
class Request {
 public:
  Request() : scope_(asp_.context.get()) {
    folder_ = std::filesystem::temp_directory_path() / ("bench_page_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "list.html") << "<!DOCTYPE html><title>(#:title#)</title><h1>(#:title#)</h1><table>"
                                            "(#%Rows#)</table><a href=\"(#?new#)\">New entry</a>";
    std::ofstream(folder_ / "plain.html") << std::string(2000, 'x');
    sink_ = korlib::make<Sink>();
    asp_.context->properties[L"Response"] = CComVariant(static_cast<IDispatch*>(sink_.get()));
    script_ = FakeScript::make();
    script_->value(L"title", CComVariant(L"Entries"));
    script_->function(L"OnDraw_Rows", [](const Arguments& a) {
      call(a[0].pdispVal, L"Write", rows_of(a), false);
      return CComVariant();
    });
    script_->function(L"OnDraw_Row", [](const Arguments& a) {
      const auto* texts = static_cast<const VARIANT*>(a[1].parray->pvData);
      call(a[0].pdispVal, L"Write", CComVariant(texts[0]), false);
      call(a[0].pdispVal, L"Write", CComVariant(texts[1]), false);
      return CComVariant();
    });
  }
  ~Request() {
    next();
    std::filesystem::remove_all(folder_);
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;

  CComPtr<IDispatch> new_page() {
    CComPtr<IDispatch> page = module_.create(L"Mirt");
    call(page.get(), L"AddScript", script_);
    put(page.get(), L"Name", L"list");
    put(page.get(), L"TemplateFolder", folder_.wstring());
    put(page.get(), L"TemplateExt", L".html");
    return page;
  }
  FakeScript& script() { return *script_; }
  const std::wstring& written() const { return sink_->written; }
  // Forgets what the last round left behind.
  void next() {
    script_->forget_calls();
    sink_->written.clear();
    asp_.calls->log.clear();
  }

 private:
  test::Module module_;
  fake::Asp asp_;
  korlib_host::ContextScope scope_;
  std::filesystem::path folder_;
  CComPtr<Sink> sink_;
  CComPtr<FakeScript> script_;
};

void check(benchmark::State& state, const test::Answer& answer, const Request& request, std::size_t least) {
  if (FAILED(answer.hr) || request.written().size() < least) state.SkipWithError("the page was not drawn");
}

void list_page(benchmark::State& state) {
  Request request;
  for ([[maybe_unused]] auto _ : state) {
    const CComPtr<IDispatch> page = request.new_page();
    put(page.get(), L"Template", L"list");
    check(state, call(page.get(), L"Process"), request, kRows * 60);
    request.next();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(list_page)->Unit(benchmark::kMicrosecond);

void phase_create_and_bind(benchmark::State& state) {
  Request request;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(request.new_page().get());
    request.next();
  }
}
BENCHMARK(phase_create_and_bind)->Unit(benchmark::kMicrosecond);

void phase_steps_without_template(benchmark::State& state) {
  Request request;
  const CComPtr<IDispatch> page = request.new_page();
  for ([[maybe_unused]] auto _ : state) {
    check(state, call(page.get(), L"Process"), request, 0);
    request.next();
  }
}
BENCHMARK(phase_steps_without_template)->Unit(benchmark::kMicrosecond);

void phase_template_file(benchmark::State& state) {
  Request request;
  const CComPtr<IDispatch> page = request.new_page();
  put(page.get(), L"CacheTemplate", state.range(0) != 0);
  for ([[maybe_unused]] auto _ : state) {
    check(state, call(page.get(), L"DrawTemplate", L"plain"), request, 2000);
    request.next();
  }
}
BENCHMARK(phase_template_file)->ArgName("cached")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void phase_rows(benchmark::State& state) {
  Request request;
  const CComPtr<IDispatch> page = request.new_page();
  for ([[maybe_unused]] auto _ : state) {
    check(state, call(page.get(), L"ProcessTemplate", L"(#%Rows#)"), request, kRows * 60);
    request.next();
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t{kRows});
}
BENCHMARK(phase_rows)->Unit(benchmark::kMicrosecond);

// One row's template processed by the page, while Process runs.
void one_row(benchmark::State& state, const wchar_t* row) {
  Request request;
  const CComPtr<IDispatch> page = request.new_page();
  request.script().function(L"On_EndDraw", [&](const Arguments& a) {
    call(a[0].pdispVal, L"SetView", L"id", 17);
    call(a[0].pdispVal, L"SetView", L"name", L"a name");
    call(a[0].pdispVal, L"SetView", L"link", L"?c=edit&");
    for ([[maybe_unused]] auto _ : state) {
      check(state, call(a[0].pdispVal, L"ProcessTemplate", row), request, 9);
      request.next();
    }
    return CComVariant();
  });
  call(page.get(), L"Process");
}
BENCHMARK_CAPTURE(one_row, in_plain_marks, kViewRow);
BENCHMARK_CAPTURE(one_row, with_a_script_function, kCalledRow);

}  // namespace
