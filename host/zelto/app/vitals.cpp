#include "app/vitals.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>

#include "text/characters.h"

namespace zelto {

namespace {

// Pages of zeros.
void* share(std::size_t bytes) {
  void* memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "sharing memory with the server");
  return memory;
}

}  // namespace

Vitals::Vitals(unsigned workers)
    : memory_(share(sizeof(Life) + workers * sizeof(Note)), {sizeof(Life) + workers * sizeof(Note)}),
      life_(new (memory_.get()) Life{}),
      notes_(new (life_ + 1) Note[workers]{}, workers) {}

void Vitals::Unmap::operator()(void* memory) const noexcept { ::munmap(memory, bytes); }

void Vitals::begin_page(unsigned worker, std::string_view method, std::string_view path) noexcept {
  Note& note = notes_[worker];
  std::span<char> room(note.text);
  for (const std::string_view part : {method, std::string_view(" "), path}) {
    const std::string_view fits = beginning_of(part, room.size());
    std::ranges::copy(fits, room.begin());
    room = room.subspan(fits.size());
  }
  note.length.store(static_cast<std::uint32_t>(sizeof note.text - room.size()), std::memory_order_release);
}

bool Vitals::become_ready() noexcept {
  life_->is_ready = true;
  return !life_->is_known.exchange(true);
}

std::vector<std::string> Vitals::pages() const {
  std::vector<std::string> pages;
  for (const Note& note : notes_) {
    // A process that has lost its senses may have written anything.
    const std::size_t length = std::min<std::size_t>(note.length.load(std::memory_order_acquire), sizeof note.text);
    if (length > 0) pages.emplace_back(note.text, length);
  }
  return pages;
}

std::chrono::steady_clock::time_point Vitals::first_deadline() const noexcept {
  using Clock = std::chrono::steady_clock;
  auto first = Clock::time_point::max();
  for (const Note& note : notes_) {
    const std::chrono::nanoseconds deadline(note.deadline.load(std::memory_order_relaxed));
    if (deadline.count() != 0) first = std::min(first, Clock::time_point(deadline));
  }
  return first;
}

void Vitals::clear() noexcept {
  life_->is_ready = false;
  for (Note& note : notes_) {
    note.length = 0;
    note.deadline = 0;
  }
}

}  // namespace zelto
