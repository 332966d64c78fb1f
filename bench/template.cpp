// Drawing a page of 100 rows, streamed and replayed, and parsing it.
#include <benchmark/benchmark.h>

#include <string>

#include <korlib/comvariant.h>

#include "support/still.h"
#include "support/unused_members.h"
#include "templator/templator_concept.h"

namespace {

// As a response does it: a copy of each text after the last.
class Sink final : public test::Still<IStream, test::UnusedRawStream> {
 public:
  HRESULT Write(const void* data, ULONG bytes, ULONG*) override {
    text.append(static_cast<const wchar_t*>(data), bytes / sizeof(wchar_t));
    return S_OK;
  }

  std::wstring text;
};

class Engine final : public CTemplatorConcept {
 public:
  Engine() : CTemplatorConcept(L"%;:*/=~+-$\\&|") { putref_Output(&sink); }
  HRESULT OnMarked(CMarkData&) override { return write_output(value_); }

  Sink sink;

 private:
  CComBSTR value_{L"value"};
};

const CComBSTR& page() {
  static const CComBSTR text = [] {
    std::wstring rows = L"<table>\n";
    for (int i = 0; i < 100; ++i) {
      rows += L"<tr><td>(#;Rows|" + std::to_wstring(i) + L"#|#Name#)</td><td>(#:Total#)</td></tr>\n";
    }
    return CComBSTR(std::wstring_view(rows + L"</table>\n"));
  }();
  return text;
}

void count_bytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(page().byte_length()));
}

void stream_page(benchmark::State& state) {
  Engine engine;
  for ([[maybe_unused]] auto _ : state) {
    engine.sink.text.clear();
    if (FAILED(engine.Process(page().get()))) state.SkipWithError("streaming failed");
  }
  count_bytes(state);
}
BENCHMARK(stream_page);

void replay_page(benchmark::State& state) {
  Engine engine;
  CTemplate tmpl;
  if (FAILED(engine.Parse(page().get(), tmpl))) state.SkipWithError("parsing failed");
  for ([[maybe_unused]] auto _ : state) {
    engine.sink.text.clear();
    if (FAILED(engine.Process(tmpl))) state.SkipWithError("replay failed");
  }
  count_bytes(state);
}
BENCHMARK(replay_page);

void parse_page(benchmark::State& state) {
  Engine engine;
  for ([[maybe_unused]] auto _ : state) {
    CTemplate tmpl;
    if (FAILED(engine.Parse(page().get(), tmpl))) state.SkipWithError("parsing failed");
  }
  count_bytes(state);
}
BENCHMARK(parse_page);

// The floor: the same text copied once.
void copy_page(benchmark::State& state) {
  std::wstring copy;
  for ([[maybe_unused]] auto _ : state) {
    copy.assign(page().view());
    benchmark::DoNotOptimize(copy.data());
  }
  count_bytes(state);
}
BENCHMARK(copy_page);

}  // namespace
