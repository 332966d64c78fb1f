// The intake of an upload, from the bytes of the body to the form, with a plain copy and a plain search of
// the same body beside it.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "upload/multipart_parser.h"
#include "upload/parts.h"
#include "upload/upload_classes.h"

namespace {

constexpr const char* kDelimiter = "------FormBoundary7MA4YWxkTrZu0gW";

std::string part(const std::string& name, const std::string& file, std::size_t bytes) {
  std::string text = std::string(kDelimiter) + "\r\nContent-Disposition: form-data; name=\"" + name + "\"";
  if (!file.empty()) text += "; filename=\"" + file + "\"\r\nContent-Type: application/octet-stream";
  text += "\r\n\r\n";
  unsigned state = 1;
  for (std::size_t i = 0; i < bytes; ++i) {
    state = state * 1664525u + 1013904223u;
    text += file.empty() ? static_cast<char>('a' + state % 26) : static_cast<char>(state >> 24);
  }
  return text + "\r\n";
}

enum Shape { kOneFile, kManyFields, kManyFiles };

const std::string& body(Shape shape) {
  static std::string bodies[3];
  std::string& text = bodies[shape];
  if (!text.empty()) return text;
  if (shape == kOneFile) text = part("f", "large.bin", std::size_t{64} << 20);
  for (int i = 0; shape == kManyFields && i < 2000; ++i) text += part("field" + std::to_string(i), "", 20);
  for (int i = 0; shape == kManyFiles && i < 64; ++i) text += part("f", "part.bin", std::size_t{1} << 20);
  return text += std::string(kDelimiter) + "--\r\n";
}

const std::string& begin(benchmark::State& state) {
  static constexpr const char* kNames[] = {"one file of 64 MiB", "2,000 fields", "64 files of 1 MiB"};
  state.SetLabel(kNames[state.range(0)]);
  return body(static_cast<Shape>(state.range(0)));
}

void end(benchmark::State& state, const std::string& bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

void intake(benchmark::State& state) {
  const std::string& bytes = begin(state);
  for ([[maybe_unused]] auto _ : state) {
    CComPtr<ZeltoTypeLibrary::IRequestDictionary> form;
    g_oCF_MultipartForm.CreateInstance(nullptr, korlib::iid_of<ZeltoTypeLibrary::IRequestDictionary>, form.put_void());
    if (FAILED(add_parts(bytes.data(), bytes.size(), kDelimiter, 65001, *static_cast<GMultipartForm*>(form.get())))) {
      state.SkipWithError("the body was not read");
    }
  }
  end(state, bytes);
}
BENCHMARK(intake)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

// The parser alone: every delimiter and every header line.
void parse_parts(benchmark::State& state) {
  const std::string& bytes = begin(state);
  for ([[maybe_unused]] auto _ : state) {
    CMultipartParser parser(bytes.data(), bytes.size(), kDelimiter);
    std::size_t start = 0;
    bool is_last = false;
    while (SUCCEEDED(parser.MoveNextBoundary(start, is_last)) && !is_last) {
      CMultipartHeader header;
      while (parser.GetHeader(header) == S_OK) {
      }
    }
    if (!is_last) state.SkipWithError("the body was not read");
  }
  end(state, bytes);
}
BENCHMARK(parse_parts)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void search_by_memmem(benchmark::State& state) {
  const std::string& bytes = begin(state);
  for ([[maybe_unused]] auto _ : state) {
    const char* at = bytes.data();
    const char* const last = at + bytes.size();
    std::size_t found = 0;
    while ((at = static_cast<const char*>(
                memmem(at, static_cast<std::size_t>(last - at), kDelimiter, std::strlen(kDelimiter))))) {
      ++at;
      ++found;
    }
    benchmark::DoNotOptimize(found);
  }
  end(state, bytes);
}
BENCHMARK(search_by_memmem)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void copy_by_memcpy(benchmark::State& state) {
  const std::string& bytes = begin(state);
  std::vector<char> copy(bytes.size());
  for ([[maybe_unused]] auto _ : state) {
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  end(state, bytes);
}
BENCHMARK(copy_by_memcpy)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

}  // namespace
