// The worlds that one engine keeps for the pages that come most.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "language/program.h"
#include "script/world/world.h"

namespace zelto::script {

// Making a world takes longer than many a page, and its code runs cold. A page that comes a second time gets one that
// is kept for it from then on. One that cannot run as a function gets a fresh one each time, and so does one that has
// changed what the language has; that one may try again later, as what a visitor sent may have made it do so.
class Worlds {
 public:
  using ProgramPtr = std::shared_ptr<const language::Program>;

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
    std::uint32_t taken = 0;       // how often, the last times counting most
    std::uint32_t fresh_for = 0;   // so many times more it gets a fresh one
    std::uint32_t penalty = 0;     // what that was the last time
  };
  Entry* find(const ProgramPtr& program);
  bool may_keep(const Entry& entry);
  void settle(std::unique_ptr<World> ended) noexcept;
  void tell(const World& world, const std::string& url) const noexcept;
  void sweep();

  Engine& engine_;
  std::unordered_map<const language::Program*, Entry> entries_;
  std::unique_ptr<World> waiting_;  // a list of them, which takes no memory
  std::uint64_t taken_ = 0;
  OnUndeclared on_undeclared_;
};

}  // namespace zelto::script
