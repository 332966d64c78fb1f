#include "http/body.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

namespace zelto {

namespace {

// Bodies up to this size stay in memory whatever others take: a file would cost more than it saves.
constexpr std::size_t kAlwaysInMemory = std::size_t{64} * 1024;

}  // namespace

void Body::use(Spool& spool) {
  spool_ = &spool;
  share_ = Share(spool.memory);
}

void Body::append(std::string_view bytes) {
  if (bytes.empty()) return;
  if (file_) return append_to_file(bytes);
  const std::size_t before = bytes_.size();
  if (bytes.size() > std::numeric_limits<std::size_t>::max() - before) throw std::bad_alloc();
  const std::size_t after = before + bytes.size();
  if (after > bytes_.capacity()) {
    const std::size_t wanted = grown_to(after);
    if (!share_.resize(wanted) && after > kAlwaysInMemory) return append_to_file(bytes);
    bytes_.grow(wanted);
  }
  std::memcpy(bytes_.data() + before, bytes.data(), bytes.size());
  bytes_.set_size(after);
}

std::size_t Body::grown_to(std::size_t needed) const {
  constexpr std::size_t kLeast = std::size_t{16} * 1024;
  const std::size_t wanted = std::max({needed, bytes_.capacity() + bytes_.capacity() / 2, kLeast});
  return expected_ > 0 && wanted > expected_ ? std::max(needed, static_cast<std::size_t>(expected_)) : wanted;
}

void Body::append_to_file(std::string_view bytes) {
  const bool is_new = !file_;
  if (is_new) file_.emplace(*spool_);
  const bool fits = (!is_new || file_->append(bytes_.view())) && file_->append(bytes);
  if (!fits) {
    const std::system_error failure = file_->failure("keeping a request's body");
    if (is_new) file_.reset();
    throw failure;
  }
  if (!is_new) return;
  bytes_ = {};
  share_.resize(0);
}

void Body::load() {
  if (!file_) return;
  const auto size = static_cast<std::size_t>(file_->size());
  base::GrowingBuffer loaded;
  loaded.grow(size);
  file_->read(loaded.data(), size);
  loaded.set_size(size);
  bytes_ = std::move(loaded);
  file_.reset();
}

Body::Bytes Body::release() {
  share_.resize(0);
  return bytes_.release();
}

}  // namespace zelto
