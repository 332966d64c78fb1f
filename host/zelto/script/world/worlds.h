// The worlds that one engine keeps for the pages that come most.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "language/program.h"
#include "script/world/world.h"

namespace zelto::script {

// Making a world takes longer than many a page, and its code runs cold. A page that comes a second time gets one that
// is kept: for it alone, or, where it cannot tell, one that such pages share which have the same names of the host's.
// One that cannot run as a function gets a fresh one each time, and so does one that has changed what the language has;
// that one may try again later, as what a visitor sent may have made it do so. What spoils a world that is shared does
// so once: from then on the page has its own.
class Worlds {
 public:
  using ProgramPtr = World::ProgramPtr;

  explicit Worlds(Engine& engine) : engine_(engine) {}

  // A world that nobody else uses, for the program, or for whatever runs in it when that is null.
  std::unique_ptr<World> take(const ProgramPtr& program);
  // The world's page has ended. `whole` is false where it was broken off, which may have happened anywhere. While
  // another page still runs, the world waits: what this one has begun may go on until then.
  void give_back(std::unique_ptr<World> world, ProgramPtr program, bool whole) noexcept;
  void clear();

  // Called with the url of a page and the names that it assigns without declaring them, "a, b": once a page, as far as
  // they are seen together.
  using OnUndeclared = std::function<void(const std::string& url, std::u16string_view names)>;
  void set_on_undeclared(OnUndeclared on_undeclared) { on_undeclared_ = std::move(on_undeclared); }

 private:
  struct Entry {
    std::weak_ptr<const language::Program> program;
    std::unique_ptr<World> world;  // null while it is used, and where none is kept
    bool is_kept = false;          // be it used or not
    bool may_share = false;
    bool is_sharing = false;      // it runs in a world that is shared, or has run in one that waits
    std::u16string host_names;    // those that the page had when it came first
    std::uint32_t taken = 0;      // how often, the last times counting most
    std::uint32_t fresh_for = 0;  // so many times more it gets a fresh one
    std::uint32_t penalty = 0;    // what that was the last time
  };
  Entry* find(const ProgramPtr& program);
  bool may_keep(const Entry& entry);
  std::unique_ptr<World> take_shared(const ProgramPtr& program, Entry& entry);
  std::unique_ptr<World> make_shared_world(Entry& entry);
  bool make_room(World& world, const Entry& entry);
  void settle(std::unique_ptr<World> ended) noexcept;
  void tell(const World& world, const std::string& url) const noexcept;
  void sweep();

  Engine& engine_;
  std::unordered_map<const language::Program*, Entry> entries_;
  std::vector<std::unique_ptr<World>> shared_;  // those that are not used, the last one used last
  std::ptrdiff_t shared_count_ = 0;             // be they used or not
  std::unique_ptr<World> waiting_;              // a list of them, which takes no memory
  bool had_inner_ = false;                      // of what ran last together, some ran within others
  std::uint64_t taken_ = 0;
  OnUndeclared on_undeclared_;
};

}  // namespace zelto::script
