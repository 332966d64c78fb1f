#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <map>
#include <string>

#include "app/configuration.h"
#include "http/limits.h"
#include "http/server.h"
#include "http/spool.h"
#include "intrinsics/field_table.h"
#include "intrinsics/response_state.h"
#include "site/page_run.h"
#include "site/site.h"

namespace {

using namespace std::chrono_literals;

std::string bytes(std::uint64_t number) {
  if (number % (1 << 30) == 0) return std::to_string(number >> 30) + " GiB";
  if (number % (1 << 20) == 0) return std::to_string(number >> 20) + " MiB";
  return std::to_string(number >> 10) + " KiB";
}
std::string rate(std::uint64_t number) { return std::to_string(number) + " B/s"; }
std::string time(std::chrono::milliseconds duration) { return std::to_string(duration / 1s) + " s"; }
std::string count(std::uint64_t number) { return std::to_string(number); }

// The rows of docs/limits.md: what is limited, and the default.
std::map<std::string, std::string> told() {
  std::ifstream document(LIMITS_DOCUMENT);
  std::map<std::string, std::string> rows;
  for (std::string line; std::getline(document, line);) {
    if (!line.starts_with("| ") || line.starts_with("| limit ")) continue;
    const auto name_end = line.find(" |", 2);
    const auto key_end = line.find(" |", name_end + 2);
    const auto value_end = line.find(" |", key_end + 2);
    rows[line.substr(2, name_end - 2)] = line.substr(key_end + 3, value_end - key_end - 3);
  }
  return rows;
}

TEST(LimitsDocument, TellsTheLimitsThatHold) {
  const zelto::ServerOptions server;
  const zelto::HttpLimits& http = server.limits;
  const zelto::SiteOptions site;
  const std::map<std::string, std::string> holds = {
      {"head of a request", bytes(http.header_bytes)},
      {"lines of a head", count(http.header_lines)},
      {"time for a head", time(http.header_timeout)},
      {"body of a request", bytes(http.body_bytes)},
      {"parts of a multipart body", count(http.upload_parts)},
      {"fields of a form", count(zelto::kMaxFormFields)},
      {"fields of a query string", count(zelto::kMaxFormFields)},
      {"silence within a body", time(http.body_timeout)},
      {"rate of a body, in each such span", rate(http.body_rate)},
      {"extension of a chunk", bytes(http.chunk_extension_bytes)},
      {"trailer", bytes(http.trailer_bytes)},
      {"time in which a client must take something of its answer", time(http.send_timeout)},
      {"rate at which it must take it, in each such span", rate(http.send_rate)},
      {"answer that waits in memory for its client", bytes(http.send_memory)},
      {"all that waits in memory", bytes(server.spool.memory_bytes)},
      {"all that waits in files", bytes(server.spool.file_bytes) + ", one answer a sixteenth"},
      {"time that a page waits for its client in all", time(http.send_timeout)},
      {"connections", count(http.connections)},
      {"connections of one address, or one IPv6 /64", count(http.connections_per_address)},
      {"idle time of a kept connection", time(http.keep_alive_timeout)},
      {"requests on one connection", count(http.keep_alive_requests)},
      {"reading on after a refused request", bytes(http.drain_bytes)},
      {"the same after a page that refused its body", bytes(http.drain_upload_bytes)},
      {"time for these two", time(http.drain_timeout)},
      {"requests that wait for a worker", count(server.queue)},
      {"requests that wait for another one of their session", count(server.turn_queue)},
      {"time that the latter wait", time(http.turn_timeout)},
      {"time of a page", time(site.script_timeout)},
      {"memory of a page", bytes(site.script_memory)},
      {"memory of all that the program has outside of the script engine", bytes(site.kept_memory)},
      {"answer that a page has buffered", bytes(zelto::ResponseState::kBufferLimit)},
      {"what a page adds to its line of the log", bytes(zelto::ResponseState::kLogNoteLimit)},
      {"what a page writes to its console", bytes(zelto::kConsoleLimit)},
      {"sessions", count(site.session_limit)},
      {"time without a request that ends a session", count(static_cast<std::uint64_t>(site.session_timeout)) + " min"},
      {"time that pages get to end when the host stops", time(zelto::Configuration().stop_timeout)},
      {"time in which the server gives no sign of life", time(zelto::Configuration().hang_timeout)},
      {"time that a page goes on after its own is over", time(zelto::Configuration().hang_timeout)},
  };
  EXPECT_EQ(holds, told());
}

}  // namespace
