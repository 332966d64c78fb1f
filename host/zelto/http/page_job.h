// The part of an exchange that a worker does: it gets the request, and writes its answer.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "http/client_watch.h"
#include "http/request_reader.h"
#include "http/socket_sink.h"
#include "http/worker_pool.h"

namespace zelto {

// Belongs to the loop of its connection, but for run(), which a worker's thread calls.
class PageJob final : public Job {
 public:
  // `report` is called with a line for the log, and `on_done` when the worker has written what it could, both by the
  // worker's thread.
  PageJob(WorkerPool& pool, RequestReader& reader, SocketSink& sink, const ClientWatch& watch,
          std::function<void(std::string_view)> report, std::function<void()> on_done)
      : pool_(pool),
        reader_(reader),
        sink_(sink),
        watch_(watch),
        report_(std::move(report)),
        on_done_(std::move(on_done)) {}

  // The request has been read, and the sink begun on that socket. `owner` holds this job and is kept alive until it is
  // done, withdrawn or dropped by a pool that stops.
  WorkerPool::Submitted submit(const std::shared_ptr<void>& owner, std::string turn, int socket);
  // Takes the request back that waits for its turn; false when it has had it.
  bool withdraw();
  // From submit() to withdraw() or take_back(): a worker may use reader, sink and socket.
  bool is_out() const { return is_out_; }
  // After on_done.
  void take_back() { is_out_ = false; }

  void run(Worker& worker) override;

 private:
  void handle(Worker& worker);

  WorkerPool& pool_;
  RequestReader& reader_;
  SocketSink& sink_;
  const ClientWatch& watch_;
  const std::function<void(std::string_view)> report_;
  const std::function<void()> on_done_;
  std::string turn_;
  int socket_ = -1;
  std::atomic<bool> is_out_ = false;
};

}  // namespace zelto
