#include "activation/module_list.h"

#include <dlfcn.h>
#include <link.h>

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <korlib_host/modules.h>

namespace korlib::activation {

namespace {

using Map = std::unordered_map<std::string, std::shared_ptr<Module>>;

// Two locks: `map_lock` is held for a look-up only, so that activation costs little; `load_lock` is held
// while modules run their own code on opening and closing. That code may make objects of other modules,
// so `load_lock` can be taken again by the thread that has it. Order: load_lock, then map_lock.
struct Modules {
  std::recursive_mutex load_lock;
  std::mutex map_lock;
  Map open;

  std::shared_ptr<Module> find(const std::string& file) {
    const std::lock_guard guard(map_lock);
    const auto found = open.find(file);
    return found == open.end() ? nullptr : found->second;
  }
};

// Never destroyed: what is still open when the process ends is closed by the system.
Modules& modules() {
  static auto* const instance = new Modules;
  return *instance;
}

// Takes the modules out that nobody holds, so that nobody can begin to use them while they are asked.
Map take_idle(Modules& all) {
  const std::lock_guard guard(all.map_lock);
  Map idle;
  for (auto at = all.open.begin(); at != all.open.end();) {
    const auto next = std::next(at);
    if (at->second.use_count() == 1) idle.insert(all.open.extract(at));
    at = next;
  }
  return idle;
}

}  // namespace

HRESULT get_module(const std::filesystem::path& file, std::shared_ptr<Module>* module) {
  Modules& all = modules();
  const std::string& name = file.native();
  if ((*module = all.find(name))) return S_OK;
  const std::lock_guard loading(all.load_lock);
  if ((*module = all.find(name))) return S_OK;
  RETURN_IF_FAILED(Module::open(file, module));
  const std::lock_guard guard(all.map_lock);
  all.open.emplace(name, *module);
  return S_OK;
}

void close_unused_modules() {
  Modules& all = modules();
  const std::lock_guard loading(all.load_lock);
  Map idle = take_idle(all);
  std::erase_if(idle, [](const auto& entry) { return entry.second->can_unload(); });
  const std::lock_guard guard(all.map_lock);
  all.open.merge(idle);
}

}  // namespace korlib::activation

namespace korlib_host {

std::size_t open_modules() {
  korlib::activation::Modules& all = korlib::activation::modules();
  const std::lock_guard guard(all.map_lock);
  return all.open.size();
}

std::filesystem::path module_file(void* module) {
  // A handle is an element of the loader's list; anything else must not even be looked at.
  void* const program = dlopen(nullptr, RTLD_LAZY);
  const link_map* map = nullptr;
  if (!program || dlinfo(program, RTLD_DI_LINKMAP, &map) != 0) map = nullptr;
  while (map && map != module) map = map->l_next;
  std::filesystem::path file = map ? map->l_name : "";
  if (program) dlclose(program);
  return file;
}

}  // namespace korlib_host

void CoFreeUnusedLibraries() { korlib::activation::close_unused_modules(); }
