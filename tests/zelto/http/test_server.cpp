#include "zelto/http/test_server.h"

#include <stdexcept>
#include <utility>

namespace zelto_test {

namespace {

using zelto::HttpRequest;
using zelto::ResponseSink;

class PathWorker final : public zelto::Worker {
 public:
  explicit PathWorker(TestServer& test) : test_(test) {}

  void handle(HttpRequest&& request, ResponseSink& sink) override {
    const HttpRequest received = std::move(request);
    if (received.path == "/throw") throw std::runtime_error("thrown");
    if (received.path == "/silent") return;
    if (received.path == "/gate" || received.path == "/turn") test_.gate.wait_here();
    if (received.path == "/kind" && received.query.ends_with("&wait")) test_.other_gate.wait_here();
    if (received.path == "/gone") return answer_gone(sink);
    if (received.path == "/length") return answer_bytes(received, sink, true);
    if (received.path == "/stream") return answer_bytes(received, sink, false);
    if (received.path == "/broken") return break_off(received, sink);
    if (received.path == "/half") return answer_half(sink);
    if (received.path == "/status") return answer_status(received, sink);
    std::string body = received.method + " " + received.path + "?" + received.query + "|";
    if (received.path == "/host") body = received.header("Host") ? *received.header("Host") : "none";
    if (received.path == "/encrypted") body = received.secure ? "encrypted" : "plain";
    if (received.body_too_large)
      body += "too large " + std::to_string(received.body_length);
    else
      body += std::string_view(received.body);
    sink.start({}, body.size() + (received.path == "/short" ? 1 : 0));
    sink.append_to_log("noted");
    sink.write(body);
    sink.finish();
  }

 private:
  void answer_gone(ResponseSink& sink) {
    test_.connected_before_and_after_gate.push_back(sink.connected());
    test_.gate.wait_here();
    test_.connected_before_and_after_gate.push_back(sink.connected());
    sink.start({}, 0);
    sink.finish();
  }

  static void break_off(const HttpRequest& request, ResponseSink& sink) {
    sink.start({}, ResponseSink::kUnknownLength);
    sink.write(std::string(std::stoul(request.query), 'x'));
    sink.break_off();
  }

  void answer_half(ResponseSink& sink) {
    sink.start({}, ResponseSink::kUnknownLength);
    sink.write("half");
    test_.gate.wait_here();
    sink.finish();
  }

  static void answer_status(const HttpRequest& request, ResponseSink& sink) {
    zelto::ResponseHead head;
    head.status = std::stoi(request.query);
    head.reason = "As Asked";
    sink.start(std::move(head), 4);
    sink.write("body");
    sink.finish();
  }

  static void answer_bytes(const HttpRequest& request, ResponseSink& sink, bool known) {
    std::size_t left = std::stoul(request.query);
    sink.start({}, known ? left : ResponseSink::kUnknownLength);
    const std::string piece(std::size_t{10} * 1000, 'x');
    while (left > 0) {
      const std::size_t now = std::min(left, piece.size());
      sink.write(std::string_view(piece).substr(0, now));
      left -= now;
    }
    sink.finish();
  }

  TestServer& test_;
};

class PathRouter final : public zelto::Router {
 public:
  explicit PathRouter(Gate& gate) : gate_(gate) {}

  Route route(HttpRequest& request, ResponseSink& sink) override {
    if (request.path == "/unroutable") throw std::runtime_error("not to be routed");
    if (request.path == "/turn") return {.turn = request.query};
    if (request.path == "/kind") request.file = request.query.substr(0, request.query.find('&'));
    if (request.path == "/stuck") gate_.wait_here();
    if (request.path != "/routed") return {};
    std::string body = "routed";
    for (int i = 0; i < 3; ++i) body += request.query;
    sink.start({}, body.size());
    sink.write(body);
    sink.finish();
    return {.answered = true, .turn = {}};
  }

 private:
  Gate& gate_;
};

}  // namespace

void Gate::wait_here() {
  std::unique_lock lock(lock_);
  ++waiting_;
  changed_.notify_all();
  changed_.wait(lock, [this] { return open_; });
}

void Gate::wait_for(int threads) {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return waiting_ >= threads; });
}

void Gate::open() {
  const std::lock_guard lock(lock_);
  open_ = true;
  changed_.notify_all();
}

zelto::ServerOptions with_limits(const zelto::HttpLimits& limits) {
  zelto::ServerOptions options;
  options.limits = limits;
  return options;
}

TestServer::TestServer(zelto::ServerOptions options) : router_(std::make_unique<PathRouter>(gate)) {
  options.on_problem = [this](std::string_view problem) {
    const std::lock_guard lock(lock_);
    problems.emplace_back(problem);
  };
  options.on_access = [this](const zelto::AccessRecord& record) {
    const std::lock_guard lock(lock_);
    records_.push_back(record);
    changed_.notify_all();
  };
  server = std::make_unique<zelto::Server>(
      std::move(options), [this] { return std::make_unique<PathWorker>(*this); }, router_.get());
  server->start();
}

TestServer::~TestServer() {
  gate.open();
  other_gate.open();
  server.reset();
}

std::vector<zelto::AccessRecord> TestServer::wait_for_records(std::size_t count) {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return records_.size() >= count; });
  return records_;
}

}  // namespace zelto_test
