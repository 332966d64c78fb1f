#include "script/world/worlds.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "script/engine.h"

namespace zelto::script {
namespace {

// Each takes some 1.3 MB with what the engine compiles for it.
constexpr std::ptrdiff_t kMostWorlds = 32;
// After so many requests what came before counts half.
constexpr std::uint64_t kSweepEvery = 4096;
// How often a page that has changed its world gets a fresh one before it may try again: twice as often each time.
constexpr std::uint32_t kFirstPenalty = 64;
constexpr std::uint32_t kLastPenalty = 1U << 20;

}  // namespace

std::unique_ptr<World> Worlds::take(const ProgramPtr& program) {
  if (!program || !program->scope.can_be_function) return std::make_unique<World>(engine_);
  if (++taken_ % kSweepEvery == 0) sweep();
  Entry& entry = entries_[program.get()];
  if (entry.program.lock() != program) {
    entry = Entry();
    entry.program = program;
  }
  ++entry.taken;
  if (entry.world) return std::move(entry.world);
  auto world = std::make_unique<World>(engine_);
  if (entry.fresh_for > 0) {
    --entry.fresh_for;
  } else if (may_keep(entry)) {
    world->set_kept();
    entry.is_kept = true;
  }
  return world;
}

// Of those that are not used, the one that came least gives way to one that came more.
bool Worlds::may_keep(const Entry& entry) {
  if (entry.is_kept || entry.taken < 2) return false;
  if (std::ranges::count(entries_, true, [](const auto& one) { return one.second.is_kept; }) < kMostWorlds) return true;
  Entry* least = nullptr;
  for (auto& [key, one] : entries_) {
    if (one.world && (!least || one.taken < least->taken)) least = &one;
  }
  if (!least || least->taken >= entry.taken) return false;
  least->world.reset();
  least->is_kept = false;
  return true;
}

Worlds::Entry* Worlds::find(const ProgramPtr& program) {
  const auto found = entries_.find(program.get());
  return found != entries_.end() && found->second.program.lock() == program ? &found->second : nullptr;
}

void Worlds::give_back(std::unique_ptr<World> world, ProgramPtr program, bool whole) noexcept {
  if (!world->is_kept()) return;
  world->ended = {std::move(program), whole, std::move(waiting_)};
  waiting_ = std::move(world);
  if (engine_.watchdog().is_running()) return;
  while (waiting_) {
    std::unique_ptr<World> next = std::move(waiting_->ended.next);
    settle(std::exchange(waiting_, std::move(next)));
  }
}

void Worlds::settle(std::unique_ptr<World> ended) noexcept {
  const bool could_run = ended->page() != nullptr;
  const bool whole = ended->ended.whole;
  const bool has_other_hosts = ended->has_other_hosts();
  const bool is_as_before = could_run && whole && ended->restore();
  const ProgramPtr program = std::exchange(ended->ended.program, nullptr);
  Entry* const entry = find(program);
  if (!entry) return;
  if (is_as_before) {
    tell(*ended, program->url);
    entry->world = std::move(ended);
    return;
  }
  entry->is_kept = false;
  if (!could_run) {
    entry->fresh_for = std::numeric_limits<std::uint32_t>::max();
  } else if (whole && !has_other_hosts) {
    entry->penalty = std::clamp(entry->penalty * 2, kFirstPenalty, kLastPenalty);
    entry->fresh_for = entry->penalty;
  }
}

// What there is no memory for stays untold.
void Worlds::tell(const World& world, const std::string& url) const noexcept {
  if (!on_undeclared_ || !world.undeclared().get()) return;
  try {
    on_undeclared_(url, world.undeclared().view());
  } catch (const std::exception&) {
    return;
  }
}

void Worlds::sweep() {
  std::erase_if(entries_, [](const auto& one) { return one.second.program.expired(); });
  for (auto& [key, one] : entries_) one.taken /= 2;
}

void Worlds::clear() {
  waiting_.reset();
  entries_.clear();
}

}  // namespace zelto::script
