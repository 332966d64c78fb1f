// Gathers the lines of the access log that one loop's answers make.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "http/access_log.h"
#include "http/io_loop.h"

namespace zelto {

// Where many clients are answered, a write for each line, and a round of the loop to make it in, cost more than the
// rest of the log. Everything happens on the loop.
class AccessLines {
 public:
  // So many whole lines, each with its end: no more than other writers of a pipe leave in one piece.
  using Take = std::function<void(std::string_view lines, std::size_t count)>;

  AccessLines(IoLoop::Executor loop, Take take) : loop_(std::move(loop)), take_(std::move(take)) {}

  // Handed on in a hundredth of a second at the latest. Throws std::bad_alloc.
  void add(const AccessRecord& record);
  // Hands on what there is.
  void flush();

 private:
  void wait();
  void hand_on(std::size_t bytes, std::size_t count);

  const IoLoop::Executor loop_;
  const Take take_;
  std::string lines_;
  std::size_t count_ = 0;
  bool is_waiting_ = false;
};

}  // namespace zelto
