#include "activation/module.h"

#include <dlfcn.h>
#include <link.h>

#include <mutex>
#include <string>
#include <unordered_map>

#include <korlib_host/errors.h>
#include <korlib_host/modules.h>
#include <korlib_host/unicode.h>

namespace korlib::activation {

namespace {

// A module asks for its own path with room for so many characters, its NUL among them; without the path
// it could neither be registered nor find its type information.
constexpr std::size_t kPathRoom = 260;

HRESULT require_short_path(const std::filesystem::path& file) {
  const std::size_t length = to_wide(file.native()).size();
  if (length < kPathRoom) return S_OK;
  return fail(CO_E_ERRORINDLL, file.string() + " cannot be used as a module: its path has " + std::to_string(length) +
                                   " characters, and 259 are the most.");
}

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

HRESULT fail(HRESULT hr, std::string_view description) { return raise(hr, kSource, to_wide(description)); }

HRESULT Module::open(const std::filesystem::path& file, std::shared_ptr<Module>* module) {
  RETURN_IF_FAILED(require_short_path(file));
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char* const reason = dlerror();
    return fail(CO_E_DLLNOTFOUND, reason ? reason : file.string() + " cannot be opened.");
  }
  std::shared_ptr<Module> opened(new Module(handle));
  opened->get_class_object_ = opened->entry_point<DllGetClassObjectFunction>("DllGetClassObject");
  if (!opened->get_class_object_) {
    return fail(CO_E_ERRORINDLL, file.string() + " is not a component: it does not export DllGetClassObject.");
  }
  opened->can_unload_now_ = opened->entry_point<DllCanUnloadNowFunction>("DllCanUnloadNow");
  opened->main_ = opened->entry_point<DllMainFunction>("DllMain");
  // FALSE means that the module does without something optional, such as type libraries.
  if (opened->main_) opened->main_(handle, DLL_PROCESS_ATTACH, nullptr);
  *module = std::move(opened);
  return S_OK;
}

Module::~Module() {
  if (main_) main_(handle_, DLL_PROCESS_DETACH, nullptr);
  dlclose(handle_);
}

HRESULT Module::class_object(REFCLSID clsid, REFIID riid, void** ppv) const {
  *ppv = nullptr;
  return get_class_object_(clsid, riid, ppv);
}

HRESULT Module::class_object_by_name(const wchar_t* name, REFIID riid, void** ppv) const {
  // The slot carries the name in, and keeps it where the module does not know the class.
  *ppv = const_cast<wchar_t*>(name);
  const HRESULT hr = get_class_object_(CLSID_NULL, riid, ppv);
  if (FAILED(hr)) *ppv = nullptr;
  return hr;
}

bool Module::can_unload() const { return can_unload_now_ && can_unload_now_() == S_OK; }

void* Module::symbol(const char* name) const { return dlsym(handle_, name); }

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

}  // namespace korlib::activation

namespace korlib_host {

using namespace korlib::activation;

namespace {

HRESULT call_registration(const std::filesystem::path& file, const char* entry_point) {
  std::shared_ptr<Module> module;
  RETURN_IF_FAILED(get_module(file, &module));
  const auto function = module->entry_point<DllRegisterServerFunction>(entry_point);
  return function ? function() : fail(CO_E_ERRORINDLL, file.string() + " does not export " + entry_point + ".");
}

}  // namespace

HRESULT register_module(const std::filesystem::path& file) { return call_registration(file, "DllRegisterServer"); }
HRESULT unregister_module(const std::filesystem::path& file) { return call_registration(file, "DllUnregisterServer"); }

HRESULT get_class_object_by_name(const std::filesystem::path& file, const wchar_t* class_name, REFIID riid,
                                 void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  std::shared_ptr<Module> module;
  RETURN_IF_FAILED(get_module(file, &module));
  return module->class_object_by_name(class_name, riid, ppv);
}

std::size_t open_modules() {
  Modules& all = modules();
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

// Closes every module that nobody holds and that agrees.
void CoFreeUnusedLibraries() {
  using namespace korlib::activation;
  Modules& all = modules();
  const std::lock_guard loading(all.load_lock);
  Map idle = take_idle(all);
  std::erase_if(idle, [](const auto& entry) { return entry.second->can_unload(); });
  const std::lock_guard guard(all.map_lock);
  all.open.merge(idle);
}
