// What answers the requests that the server receives.
#pragma once

#include <functional>
#include <memory>

#include "http/message.h"

namespace zelto {

// Answers requests on one thread. Made, called and destroyed on its worker thread.
class Worker {
 public:
  virtual ~Worker() = default;
  // Answers the request through the sink: start, any writes, finish. A request that was not answered
  // when this returns or throws gets a plain 500 answer.
  virtual void handle(HttpRequest&& request, ResponseSink& sink) = 0;
};
using WorkerFactory = std::function<std::unique_ptr<Worker>()>;

}  // namespace zelto
