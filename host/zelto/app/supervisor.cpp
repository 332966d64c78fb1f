#include "app/supervisor.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <utility>

#include "app/command_line.h"
#include "app/startup_pages.h"

namespace zelto {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr char kReread = 'r';
constexpr char kEnd = 'e';
constexpr char kEndSoon = 's';
constexpr seconds kLook(1);
constexpr seconds kToEnd(5);  // beyond the time that pages get: what closing all, and ending without some pages, takes
constexpr std::size_t kMostPages = 16;

// Time that this process has seen pass: when it was itself stopped, or the whole machine, the server had none either.
class SeenTime {
 public:
  // Since it was asked last, and never much more than between two looks.
  Clock::duration more() {
    const auto now = Clock::now();
    return std::min<Clock::duration>(now - std::exchange(last_, now), 2 * kLook);
  }

 private:
  Clock::time_point last_ = Clock::now();
};

// How long the page that ought to have ended first has been seen to go on after that.
class Lateness {
 public:
  // That has passed since it was asked last.
  Clock::duration after(Clock::duration passed, Clock::time_point deadline) {
    const bool is_same = std::exchange(deadline_, deadline) == deadline;
    late_ = is_same && Clock::now() >= deadline ? late_ + passed : Clock::duration{};
    return late_;
  }

 private:
  Clock::time_point deadline_;
  Clock::duration late_{};
};

std::string signal_name(int signal) {
  const char* name = ::sigabbrev_np(signal);
  return name ? std::string("SIG") + name : fmt::format("signal {}", signal);
}

// " while it ran GET /a.asp, GET /b.asp and 2 more".
std::string while_it_ran(std::vector<std::string> pages) {
  if (pages.empty()) return {};
  const std::size_t more = pages.size() - std::min(pages.size(), kMostPages);
  pages.resize(pages.size() - more);
  return fmt::format(" while it ran {}{}", fmt::join(pages, ", "), more > 0 ? fmt::format(" and {} more", more) : "");
}

}  // namespace

Supervisor::Supervisor(const Configuration& configuration, Vitals& vitals, OperatorSignals& signals,
                       spdlog::logger& log)
    : configuration_(configuration), vitals_(vitals), signals_(signals), log_(log) {}

int Supervisor::run(const Supervised& supervised) {
  signals_.await_children();
  for (;;) {
    const auto began = Clock::now();
    if (start()) return supervised.serve();
    give_startup_pages_back();
    const std::optional<Death> death = watch(supervised);
    if (!death) return stop(supervised);
    was_ready_ |= vitals_.is_ready();
    if (!was_ready_) {
      // One that has ended by itself has told why.
      if (death->how.empty()) return death->code;
      report(*death, "it has never been ready; too little memory may be the reason");
      return kFailure;
    }
    // One that could not end a page is well otherwise, and a visitor may be behind it: nobody is to wait for the next.
    const auto time = death->pages.empty() ? restart_pause_.after(Clock::now() - began) : seconds(0);
    report(*death,
           time.count() == 0 ? "it is started again" : fmt::format("it is started again in {} s", time.count()));
    if (!pause(time, supervised)) return kSuccess;
  }
}

// True in the server's process.
bool Supervisor::start() {
  vitals_.clear();
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    start_error_ = errno;
    return false;  // and no server, which is a death like any other
  }
  wishes_in_ = base::FileDescriptor(ends[0]);
  wishes_out_ = base::FileDescriptor(ends[1]);
  ::fcntl(ends[1], F_SETFL, O_NONBLOCK);  // a server that hangs reads nothing
  const pid_t supervisor = ::getpid();
  server_ = ::fork();
  if (server_ == 0) {
    enter_server(supervisor);
    return true;
  }
  start_error_ = errno;
  wishes_in_ = {};
  return false;
}

void Supervisor::enter_server(pid_t supervisor) {
  // A server without its supervisor would keep the port, and hear nobody.
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != supervisor) ::_exit(kFailure);
  wishes_out_ = {};
  signals_.enter_child();
}

OperatorSignals::Wish Supervisor::next_wish() const {
  char wish = kEnd;
  while (::read(wishes_in_.get(), &wish, 1) < 0 && errno == EINTR) continue;
  if (wish == kReread) return OperatorSignals::Wish::reread;
  return wish == kEndSoon ? OperatorSignals::Wish::end_soon : OperatorSignals::Wish::end;
}

// Nothing once the operator wants the end.
std::optional<Supervisor::Death> Supervisor::watch(const Supervised& supervised) {
  SeenTime time;
  Duration silence{};
  Lateness lateness;
  auto beats = vitals_.beats();
  for (;;) {
    if (auto death = reap(WNOHANG)) return death;
    const auto wish = signals_.wait_for(kLook);
    if (wish == OperatorSignals::Wish::end) return std::nullopt;
    if (wish == OperatorSignals::Wish::reread) {
      supervised.reread(true);
      tell(kReread);
    }
    const auto passed = time.more();
    silence += passed;
    const auto before = std::exchange(beats, vitals_.beats());
    if (beats != before) silence = {};
    const auto late = lateness.after(passed, vitals_.first_deadline());
    const seconds limit = configuration_.hang_timeout;
    if (limit.count() == 0) continue;
    if (silence >= limit) {
      kill();
      return Death{fmt::format("gave no sign of life for {} s and was ended", limit.count()), kFailure};
    }
    if (late >= limit) return replace();
  }
}

// False when the operator wants the end meanwhile.
bool Supervisor::pause(std::chrono::seconds time, const Supervised& supervised) {
  const auto end = Clock::now() + time;
  for (auto now = Clock::now(); now < end; now = Clock::now()) {
    const auto wish = signals_.wait_for(std::chrono::ceil<std::chrono::milliseconds>(end - now));
    if (wish == OperatorSignals::Wish::reread) supervised.reread(false);
    if (wish != OperatorSignals::Wish::end) continue;
    supervised.say_stopping();
    return false;
  }
  return true;
}

int Supervisor::stop(const Supervised& supervised) {
  supervised.close_listening();
  supervised.say_stopping();
  signals_.let_end_through();
  tell(kEnd);
  SeenTime time;
  Duration waited{};
  for (;;) {
    const auto death = reap(WNOHANG);
    if (death && !death->how.empty()) report(*death, "it was to end anyway");
    if (death) return death->code;
    signals_.wait_for_child(kLook);
    waited += time.more();
    if (configuration_.hang_timeout.count() == 0) continue;
    if (waited < configuration_.stop_timeout + kToEnd + configuration_.hang_timeout) continue;
    Death forced = kill();
    forced.how = "did not end in time, and was made to";
    report(forced, "not every request was answered");
    return kFailure;
  }
}

void Supervisor::tell(char wish) const {
  // One that cannot be told has died, or will be found to hang.
  [[maybe_unused]] const ssize_t written = ::write(wishes_out_.get(), &wish, 1);
}

std::optional<Supervisor::Death> Supervisor::reap(int options) {
  if (server_ <= 0) return Death{"cannot be started: " + std::generic_category().message(start_error_), kFailure};
  int status = 0;
  pid_t ended = 0;
  do {
    ended = ::waitpid(server_, &status, options);
  } while (ended < 0 && errno == EINTR);
  if (ended == 0) return std::nullopt;
  server_ = -1;
  if (ended < 0) return Death{"is gone", kFailure};
  if (WIFSIGNALED(status)) return Death{"was ended by " + signal_name(WTERMSIG(status)), kFailure};
  return Death{"", WEXITSTATUS(status)};
}

Supervisor::Death Supervisor::kill() {
  ::kill(server_, SIGKILL);
  return reap(0).value_or(Death{"", kFailure});
}

// What other workers do may end first. Newcomers wait.
Supervisor::Death Supervisor::replace() {
  const std::vector<std::string> pages = vitals_.pages();
  tell(kEndSoon);
  SeenTime time;
  for (Duration waited{}; server_ > 0 && waited < kToEnd; waited += time.more()) {
    signals_.wait_for_child(kLook);
    reap(WNOHANG);
  }
  if (server_ > 0) kill();
  return {"could not end a page whose time was over, and was ended", kFailure, pages};
}

void Supervisor::report(const Death& death, const std::string& consequence) {
  const std::string how = death.how.empty() ? fmt::format("ended with exit code {}", death.code) : death.how;
  log_.info("zelto: the server {}{}; {}", how, while_it_ran(death.pages.empty() ? vitals_.pages() : death.pages),
            consequence);
}

}  // namespace zelto
