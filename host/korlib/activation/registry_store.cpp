#include <korlib_host/registry_store.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <mutex>
#include <vector>

#include "activation/registry_file.h"
#include "base/file_descriptor.h"
#include "base/file_stamp.h"

namespace korlib_host {

using korlib::activation::RegistryKey;

namespace {

constexpr std::size_t kMaxNameLength = 255;
constexpr std::size_t kMaxTextLength = 32767;

// No file has a stamp of its own.
base::FileStamp stamp_of(const std::filesystem::path& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 ? base::FileStamp::of(status) : base::FileStamp();
}

// Keeps other writing processes out for as long as the result is open.
base::FileDescriptor wait_for_turn(const std::filesystem::path& file) {
  base::FileDescriptor turn(open((file.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
  if (turn) flock(turn.get(), LOCK_EX);
  return turn;
}

// The names of a path; false when one is empty or too long, or when there are too many.
bool split(std::wstring_view path, std::vector<std::wstring_view>* names) {
  if (path.empty()) return true;
  for (;;) {
    const std::size_t end = path.find(L'\\');
    const std::wstring_view name = path.substr(0, end);
    if (name.empty() || name.size() > kMaxNameLength) return false;
    names->push_back(name);
    if (names->size() > korlib::activation::kMaxRegistryDepth) return false;
    if (end == path.npos) return true;
    path.remove_prefix(end + 1);
  }
}

RegistryKey* find(RegistryKey& root, const std::vector<std::wstring_view>& names) {
  RegistryKey* at = &root;
  for (const std::wstring_view name : names) {
    const auto found = at->keys.find(name);
    if (found == at->keys.end()) return nullptr;
    at = &found->second;
  }
  return at;
}

struct Current {
  std::mutex lock;
  std::shared_ptr<RegistryStore> store;
};

Current& current() {
  static auto* const instance = new Current;
  return *instance;
}

}  // namespace

class RegistryStore::Impl {
 public:
  Impl(std::filesystem::path file, std::chrono::milliseconds look_every)
      : file_(std::move(file)), look_every_(look_every) {
    load(stamp_of(file_));
  }

  // Calls `look` with the key, or null, while nothing can change it.
  template <class Look>
  auto read(std::wstring_view path, Look look) {
    const std::lock_guard guard(lock_);
    if (Clock::now() - looked_ >= look_every_) refresh();
    std::vector<std::wstring_view> names;
    return look(split(path, &names) ? find(root_, names) : nullptr);
  }

  // Calls `change` with the root of a copy and the names of the path; the copy becomes the store once it
  // is on disk.
  template <class Change>
  HRESULT write(std::wstring_view path, Change change) {
    std::vector<std::wstring_view> names;
    if (!split(path, &names)) return E_INVALIDARG;
    const std::lock_guard guard(lock_);
    std::error_code ignored;  // a folder that is missing shows when the file cannot be written
    std::filesystem::create_directories(file_.parent_path(), ignored);
    const base::FileDescriptor turn = wait_for_turn(file_);
    refresh();
    if (!problem_.empty()) return E_FAIL;
    RegistryKey copy = root_;
    RETURN_IF_FAILED(change(copy, names));
    std::string problem;
    if (!korlib::activation::save_registry(file_, copy, &problem)) return E_FAIL;
    root_ = std::move(copy);
    stamp_ = stamp_of(file_);
    return S_OK;
  }

  std::string problem() {
    const std::lock_guard guard(lock_);
    refresh();
    return problem_;
  }

 private:
  using Clock = std::chrono::steady_clock;

  void refresh() {
    looked_ = Clock::now();
    const base::FileStamp now = stamp_of(file_);
    if (now != stamp_) load(now);
  }
  void load(const base::FileStamp& stamp) {
    stamp_ = stamp;
    korlib::activation::load_registry(file_, &root_, &problem_);
  }

  const std::filesystem::path file_;
  const std::chrono::milliseconds look_every_;
  std::mutex lock_;
  Clock::time_point looked_ = Clock::now();
  RegistryKey root_;
  std::string problem_;
  base::FileStamp stamp_;
};

RegistryStore::RegistryStore(std::filesystem::path file, std::chrono::milliseconds look_every)
    : impl_(std::make_unique<Impl>(std::move(file), look_every)) {}
RegistryStore::~RegistryStore() = default;

bool RegistryStore::has_key(std::wstring_view key) const {
  return impl_->read(key, [](const RegistryKey* found) { return found != nullptr; });
}

std::optional<std::wstring> RegistryStore::value(std::wstring_view key, std::wstring_view name) const {
  return impl_->read(key, [name](const RegistryKey* found) -> std::optional<std::wstring> {
    if (!found) return std::nullopt;
    const auto value = found->values.find(name);
    return value == found->values.end() ? std::nullopt : std::optional(value->second);
  });
}

std::vector<std::wstring> RegistryStore::keys(std::wstring_view key) const {
  return impl_->read(key, [](const RegistryKey* found) {
    std::vector<std::wstring> names;
    if (!found) return names;
    for (const auto& [name, below] : found->keys) names.push_back(name);
    return names;
  });
}

HRESULT RegistryStore::create_key(std::wstring_view key) {
  return impl_->write(key, [](RegistryKey& root, const std::vector<std::wstring_view>& names) {
    RegistryKey* at = &root;
    for (const std::wstring_view name : names) at = &at->keys[std::wstring(name)];
    return S_OK;
  });
}

HRESULT RegistryStore::set_value(std::wstring_view key, std::wstring_view name, std::wstring_view text) {
  if (name.size() > kMaxNameLength || text.size() > kMaxTextLength) return E_INVALIDARG;
  return impl_->write(key, [&](RegistryKey& root, const std::vector<std::wstring_view>& names) {
    RegistryKey* const found = find(root, names);
    if (!found) return E_INVALIDARG;
    found->values[std::wstring(name)] = text;
    return S_OK;
  });
}

HRESULT RegistryStore::delete_key(std::wstring_view key) {
  return impl_->write(key, [](RegistryKey& root, std::vector<std::wstring_view> names) {
    if (names.empty()) return E_INVALIDARG;
    const std::wstring_view last = names.back();
    names.pop_back();
    RegistryKey* const parent = find(root, names);
    if (!parent) return E_INVALIDARG;
    const auto found = parent->keys.find(last);
    if (found == parent->keys.end() || !found->second.keys.empty()) return E_INVALIDARG;
    parent->keys.erase(found);
    return S_OK;
  });
}

std::string RegistryStore::problem() const { return impl_->problem(); }

void set_registry(std::shared_ptr<RegistryStore> store) {
  Current& now = current();
  const std::lock_guard guard(now.lock);
  now.store = std::move(store);
}

std::shared_ptr<RegistryStore> registry() {
  Current& now = current();
  const std::lock_guard guard(now.lock);
  return now.store;
}

}  // namespace korlib_host
