// What it costs a page to get a connection, run a statement and give the connection back: connecting anew,
// from the driver manager's pool, and from the host's. The host's asks a server whether it is still there,
// and a file whether it is still the same, before it hands a connection out; the driver manager's asks the
// driver alone.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "driver_manager.h"
#include "korlib/database/database_fixture.h"

namespace {

using databases::Kind;

// Makes the driver manager pool the connections of the installed drivers. It reads its settings once in a
// process.
class PoolingDrivers {
 public:
  PoolingDrivers() {
    std::ifstream installed("/etc/odbcinst.ini");
    std::ofstream list(folder_.path() / "odbcinst.ini");
    list << "[ODBC]\nPooling=Yes\n";
    for (std::string line; std::getline(installed, line);) {
      list << line << '\n';
      if (line.starts_with('[')) list << "CPTimeout=60\n";
    }
    setenv("ODBCSYSINI", folder_.path().c_str(), 1);
  }

 private:
  test::TemporaryFolder folder_;
};

const std::wstring& connection_string(Kind kind) {
  static const databases::Fresh sqlite(Kind::kSqlite);
  static const databases::Fresh postgres(Kind::kPostgres);
  return (kind == Kind::kSqlite ? sqlite : postgres).connection_string();
}

void through_driver_manager(benchmark::State& state, Kind kind) {
  const std::wstring& text = connection_string(kind);
  const std::string bytes(text.begin(), text.end());
  const DriverManager manager;
  for ([[maybe_unused]] auto _ : state) {
    if (!manager.connect_and_run(bytes, "SELECT 1")) state.SkipWithError("the statement failed");
  }
}

void hosts_pool(benchmark::State& state, Kind kind) {
  const CComVariant text{std::wstring_view(connection_string(kind))};
  for ([[maybe_unused]] auto _ : state) {
    const CComPtr<IDispatch> connection = databases::create(CLSID_KorDBConnection);
    test::call(connection.get(), L"Open", text);
    if (FAILED(test::call(connection.get(), L"Execute", L"SELECT 1").hr)) state.SkipWithError("the statement failed");
  }
}

void in_threads(benchmark::internal::Benchmark* one) {
  one->ThreadRange(1, 4)->Unit(benchmark::kMicrosecond)->UseRealTime();
}

void anew(benchmark::State& state, Kind kind) { through_driver_manager(state, kind); }
void driver_managers_pool(benchmark::State& state, Kind kind) { through_driver_manager(state, kind); }

// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks): the library keeps what is registered
void run_pooling() {
  const PoolingDrivers drivers;
  BENCHMARK_CAPTURE(driver_managers_pool, sqlite, Kind::kSqlite)->Apply(in_threads);
  BENCHMARK_CAPTURE(driver_managers_pool, postgres, Kind::kPostgres)->Apply(in_threads);
  benchmark::RunSpecifiedBenchmarks();
}

void run_plain() {
  BENCHMARK_CAPTURE(anew, sqlite, Kind::kSqlite)->Apply(in_threads);
  BENCHMARK_CAPTURE(anew, postgres, Kind::kPostgres)->Apply(in_threads);
  BENCHMARK_CAPTURE(hosts_pool, sqlite, Kind::kSqlite)->Apply(in_threads);
  BENCHMARK_CAPTURE(hosts_pool, postgres, Kind::kPostgres)->Apply(in_threads);
  benchmark::RunSpecifiedBenchmarks();
}
// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const pid_t child = fork();
  if (child == 0) {
    run_pooling();
  } else {
    int status = 0;
    waitpid(child, &status, 0);
    run_plain();
  }
  return 0;
}
