#include "site/open_files.h"

#include <utility>

namespace zelto {

OpenFiles::File OpenFiles::find(std::string_view path) {
  const std::lock_guard lock(lock_);
  const auto found = places_.find(path);
  if (found == places_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, found->second);
  found->second->is_used = true;
  return found->second->file;
}

void OpenFiles::keep(std::string_view path, File file) {
  if (most_ == 0) return;
  Entries forgotten;
  Entries kept;
  kept.push_back({std::string(path), std::move(file)});
  const std::lock_guard lock(lock_);
  forget_locked(path, forgotten);
  if (entries_.size() >= most_) forget_locked(entries_.back().path, forgotten);
  places_.emplace(kept.front().path, kept.begin());
  entries_.splice(entries_.begin(), kept);
}

void OpenFiles::forget(std::string_view path) {
  Entries forgotten;
  const std::lock_guard lock(lock_);
  forget_locked(path, forgotten);
}

void OpenFiles::close_unused() {
  Entries closed;
  const std::lock_guard lock(lock_);
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    const auto one = entry++;
    if (std::exchange(one->is_used, false)) continue;
    places_.erase(one->path);
    closed.splice(closed.end(), entries_, one);
  }
}

void OpenFiles::close_all() {
  Entries closed;
  const std::lock_guard lock(lock_);
  places_.clear();
  closed.swap(entries_);
}

void OpenFiles::forget_locked(std::string_view path, Entries& forgotten) {
  const auto found = places_.find(path);
  if (found == places_.end()) return;
  const auto place = found->second;
  places_.erase(found);
  forgotten.splice(forgotten.end(), entries_, place);
}

}  // namespace zelto
