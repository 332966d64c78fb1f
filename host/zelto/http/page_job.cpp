#include "http/page_job.h"

#include <utility>

#include "http/peer.h"
#include "http/status.h"

namespace zelto {

WorkerPool::Submitted PageJob::submit(const std::shared_ptr<void>& owner, std::string turn, int socket) {
  turn_ = std::move(turn);
  socket_ = socket;
  is_out_ = true;
  auto submitted = WorkerPool::Submitted::refused;
  try {
    submitted = pool_.submit(std::shared_ptr<Job>(owner, this), turn_, reader_.request().file);
  } catch (...) {
    is_out_ = false;
    throw;
  }
  if (submitted == WorkerPool::Submitted::refused) is_out_ = false;
  return submitted;
}

bool PageJob::withdraw() {
  if (!is_out_ || !pool_.withdraw(*this, turn_)) return false;
  is_out_ = false;
  return true;
}

void PageJob::run(Worker& worker) {
  try {
    if (watch_.may_have_gone() && has_gone(socket_))
      sink_.abandon();
    else
      handle(worker);
  } catch (...) {
    sink_.abandon();
  }
  try {
    on_done_();
  } catch (...) {
    reset_peer(socket_);  // nobody else will: the client must not wait for the rest
    throw;
  }
}

void PageJob::handle(Worker& worker) {
  try {
    reader_.request().body.load();
  } catch (const std::exception& error) {
    report_(std::string("a request's body is lost: ") + error.what());
    return serve_status(sink_, status::kUnavailable);
  }
  try {
    worker.handle(std::move(reader_.request()), sink_);
  } catch (...) {
    if (sink_.started()) sink_.abandon();
  }
  if (!sink_.started()) serve_status(sink_, status::kServerError, "The page gave no answer.");
  if (!sink_.finished()) sink_.abandon();
}

}  // namespace zelto
