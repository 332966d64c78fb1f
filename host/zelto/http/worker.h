// What answers the requests that the server receives.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "http/message.h"

namespace zelto {

// Answers requests on one thread. Made, called and destroyed on its worker thread.
class Worker {
 public:
  virtual ~Worker() = default;
  // Answers the request through the sink: start, any writes, finish. A request that was not answered
  // when this returns or throws gets a plain 500 answer.
  virtual void handle(HttpRequest&& request, ResponseSink& sink) = 0;
  // It has answered requests, and there are none: time for what would else have one of them wait.
  virtual void rest() {}
};
using WorkerFactory = std::function<std::unique_ptr<Worker>()>;

// Decides who answers a request when its head is complete, before its body is read.
class Router {
 public:
  virtual ~Router() = default;

  struct Route {
    bool answered = false;
    std::string turn;  // requests of the same turn are handled one after the other; empty: whenever there is a worker
  };
  // Answers what needs neither a body nor a worker, whole, through the sink; else tells in whose turn a worker handles
  // it. May leave in the request's `file` and `file_stamp` what it has found out. Called on any I/O thread, which must
  // not wait: a file is given to the sink, not read. A request that fails here with an exception gets a plain 500
  // answer.
  virtual Route route(HttpRequest& request, ResponseSink& sink) = 0;
};

}  // namespace zelto
