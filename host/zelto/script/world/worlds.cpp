#include "script/world/worlds.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "script/engine.h"

namespace zelto::script {
namespace {

// Each takes some 1.3 MB with what the engine compiles for it.
constexpr std::ptrdiff_t kMostWorlds = 28;
// Two suffice, for pages with a session and without one; pages that execute others need more at a time.
constexpr std::ptrdiff_t kMostShared = 4;
// That each of these has functions of.
constexpr std::size_t kMostPages = 128;
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
    entry.may_share = program->scope.may_share_world;
  }
  ++entry.taken;
  if (entry.world) return std::move(entry.world);
  if (entry.fresh_for > 0) {
    --entry.fresh_for;
  } else if (entry.may_share) {
    if (entry.taken > 1 && !entry.is_sharing) return take_shared(program, entry);
  } else if (may_keep(entry)) {
    auto world = std::make_unique<World>(engine_);
    world->set_use(World::Use::own);
    entry.is_kept = true;
    return world;
  }
  return std::make_unique<World>(engine_);
}

// One that has the page's function, if there is one, so that not each gets one.
std::unique_ptr<World> Worlds::take_shared(const ProgramPtr& program, Entry& entry) {
  const auto is_fit = [&](const auto& one) { return one->host_names() == entry.host_names; };
  auto found = std::ranges::find_if(shared_, [&](const auto& one) { return is_fit(one) && one->has(program); });
  if (found == shared_.end()) {
    found = std::ranges::find_if(shared_, is_fit);
    if (found == shared_.end()) return make_shared_world(entry);
    if (!make_room(**found, entry)) return std::make_unique<World>(engine_);
    if (!(*found)->add(program)) {
      entry.fresh_for = std::numeric_limits<std::uint32_t>::max();
      return std::make_unique<World>(engine_);
    }
  }
  std::unique_ptr<World> world = std::move(*found);
  shared_.erase(found);
  entry.is_sharing = true;
  return world;
}

// The one that was used longest ago gives way, which is for other names of the host's.
std::unique_ptr<World> Worlds::make_shared_world(Entry& entry) {
  auto world = std::make_unique<World>(engine_);
  if (shared_count_ == kMostShared) {
    if (shared_.empty()) return world;
    shared_.erase(shared_.begin());
    --shared_count_;
  }
  shared_.reserve(kMostShared);
  world->set_use(World::Use::shared);
  ++shared_count_;
  entry.is_sharing = true;
  return world;
}

// Of the pages that have a function there, the one that came least gives way to one that came more.
bool Worlds::make_room(World& world, const Entry& entry) {
  world.drop_ended();
  const std::vector<const language::Program*> programs = world.programs();
  if (programs.size() < kMostPages) return true;
  const auto taken = [&](const language::Program* program) { return entries_[program].taken; };
  const language::Program* const least = *std::ranges::min_element(programs, {}, taken);
  if (taken(least) >= entry.taken) return false;
  world.drop(least);
  return true;
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
  const bool is_inner = engine_.watchdog().is_running();
  had_inner_ |= is_inner;
  if (world->use() == World::Use::once) {
    if (Entry* const entry = find(program)) entry->host_names = world->take_host_names();
    return;
  }
  world->ended = {std::move(program), whole, std::move(waiting_)};
  waiting_ = std::move(world);
  if (is_inner) return;
  while (waiting_) {
    std::unique_ptr<World> next = std::move(waiting_->ended.next);
    settle(std::exchange(waiting_, std::move(next)));
  }
  had_inner_ = false;
}

void Worlds::settle(std::unique_ptr<World> ended) noexcept {
  const bool is_shared = ended->use() == World::Use::shared;
  const bool could_run = ended->page() != nullptr;
  const bool whole = ended->ended.whole;
  const bool may_have_own = ended->has_other_hosts() || (is_shared && ended->is_shown());
  const bool is_as_before = could_run && whole && ended->restore(had_inner_);
  const ProgramPtr program = std::exchange(ended->ended.program, nullptr);
  Entry* const entry = find(program);
  if (entry && is_shared) entry->is_sharing = false;
  if (is_as_before) {
    tell(*ended, program->url);
    if (is_shared)
      shared_.push_back(std::move(ended));
    else if (entry)
      entry->world = std::move(ended);
    return;
  }
  if (is_shared) --shared_count_;
  if (!entry) return;
  entry->is_kept = false;
  entry->may_share = false;
  if (!could_run) {
    entry->fresh_for = std::numeric_limits<std::uint32_t>::max();
  } else if (whole && !may_have_own) {
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
  for (const std::unique_ptr<World>& world : shared_) world->drop_ended();
  std::erase_if(entries_, [](const auto& one) { return one.second.program.expired(); });
  for (auto& [key, one] : entries_) one.taken /= 2;
}

void Worlds::clear() {
  waiting_.reset();
  shared_.clear();
  entries_.clear();
}

}  // namespace zelto::script
