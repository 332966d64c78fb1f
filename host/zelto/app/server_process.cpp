#include "app/server_process.h"

#include <fmt/format.h>
#include <korlib/activation.h>
#include <korlib_host/diagnostics.h>
#include <korlib_host/modules.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "app/command_line.h"
#include "app/outlet.h"
#include "app/reread.h"
#include "app/runtime.h"
#include "base/thread.h"
#include "http/listening_socket.h"
#include "http/server.h"
#include "site/session_sweeper.h"
#include "site/site_router.h"
#include "site/site_worker.h"

namespace zelto {

namespace {

// Shows which page it runs.
class NotedWorker final : public Worker {
 public:
  NotedWorker(Site& site, Vitals& vitals, unsigned number)
      : worker_(site, vitals.deadline(number)), vitals_(vitals), number_(number) {}

  void handle(HttpRequest&& request, ResponseSink& sink) override {
    const Note note(*this, request);
    worker_.handle(std::move(request), sink);
  }
  void rest() override { worker_.rest(); }

 private:
  class Note {
   public:
    Note(const NotedWorker& worker, const HttpRequest& request) : worker_(worker) {
      worker.vitals_.begin_page(worker.number_, request.method, request.path);
    }
    ~Note() { worker_.vitals_.end_page(worker_.number_); }
    Note(const Note&) = delete;
    Note& operator=(const Note&) = delete;

   private:
    const NotedWorker& worker_;
  };

  SiteWorker worker_;
  Vitals& vitals_;
  const unsigned number_;
};

// Called for one worker after the other.
WorkerFactory worker_factory(Site& site, Vitals* vitals) {
  if (!vitals) return [&site] { return std::make_unique<SiteWorker>(site); };
  return [&site, vitals, number = 0U]() mutable {
    auto worker = std::make_unique<NotedWorker>(site, *vitals, number++);
    vitals->beat();
    return worker;
  };
}

void start(Server& server) {
  try {
    server.start();
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::resource_unavailable_try_again) throw;
    throw std::runtime_error(
        fmt::format("{}; fewer workers, or more memory (ulimit -v) and threads (ulimit -u), help", error.what()));
  }
}

// A site that was written for another host may rely on what this one does not do.
void give_notice(const Site& site, spdlog::logger& log, bool log_is_file) {
  const std::string notice = site.notice();
  if (notice.empty()) return;
  log.info(notice);
  if (log_is_file) std::cerr << notice << std::endl;
}

// A page may loop, or wait for a database, long after its client has been told goodbye: a thread cannot be stopped
// from outside, but the program can.
void exit_after(std::chrono::milliseconds patience, std::string_view what, const std::stop_token& stop,
                spdlog::logger& log) {
  if (!base::wait_unless_stopped(stop, patience)) return;
  log.info("zelto: ending without {}", what);
  ::_exit(kFailure);
}

// Once workers, sessions and the application have gone, no object may be alive and no module in use.
bool nothing_is_left(spdlog::logger& log) {
  CoFreeUnusedLibraries();
  const auto objects = korlib_host::live_objects();
  const auto modules = korlib_host::open_modules();
  if (objects == 0 && modules == 0) return true;
  log.info("zelto: {} objects are still alive, {} component modules in use", objects, modules);
  return false;
}

}  // namespace

int run_server(const ServeCommand& command, Configuration& configuration, LogSink& sink, spdlog::logger& log,
               const ServerOrders& orders) {
  constexpr auto kSweepPause = std::chrono::seconds(15);
  constexpr auto kForce = std::chrono::seconds(2);  // for pages that notice that their client has gone
  constexpr std::chrono::milliseconds kSoon(2000);  // for the pages beside one that does not end
  set_up_runtime();
  sink.set_when_full(LogSink::WhenFull::keep);
  configuration.site.log = [&log](std::string_view line) { log.info(line); };
  configuration.server.on_problem = [&log](std::string_view problem) { log.info("zelto: {}", problem); };
  configuration.server.on_access_lines = [&sink](std::string_view lines, std::size_t count) {
    sink.write_lines(lines, count);
  };
  if (orders.vitals) configuration.server.on_beat = [vitals = orders.vitals] { vitals->beat(); };
  bool all_answered = false;
  std::jthread exit_timer;
  {
    Site site(configuration.site);
    const SessionSweeper sweeper(site.sessions(), kSweepPause, configuration.site.log,
                                 [&site] { site.settings()->files.close_unused(); });
    SiteRouter router(site);
    Server server(configuration.server, worker_factory(site, orders.vitals), &router);
    start(server);
    if (!orders.vitals || orders.vitals->become_ready()) {
      give_notice(site, log, !configuration.log.empty());
      say(fmt::format("Serving {} at http://{}/", site.root(),
                      address_and_port(configuration.server.address, server.port())));
    }
    auto wish = orders.next_wish();
    for (; wish == OperatorSignals::Wish::reread; wish = orders.next_wish()) {
      const auto told = reread(command, configuration, sink, [&](const Configuration& fresh) {
        site.change(fresh.site);
        server.change(fresh.server.limits, fresh.server.trusted_proxies);
      });
      for (const std::string& line : told) log.info(line);
    }
    orders.on_end();
    const bool is_soon = wish == OperatorSignals::Wish::end_soon;
    const auto patience = is_soon ? kSoon : configuration.stop_timeout;
    exit_timer = std::jthread([&log, is_soon, patience, kForce](const std::stop_token& stop) {
      is_soon ? exit_after(patience, "the page whose time was over", stop, log)
              : exit_after(patience + kForce, "pages that still run after stop_timeout", stop, log);
    });
    all_answered = server.stop(patience);
    if (!all_answered) log.info("zelto: answers were broken off that did not end within stop_timeout");
  }
  if (!nothing_is_left(log)) return kLeftOver;
  return all_answered ? kSuccess : kFailure;
}

void say(std::string_view line) {
  std::size_t written = 0;
  Outlet::of_standard(STDOUT_FILENO).write(fmt::format("{}\n", line), written);
}

}  // namespace zelto
