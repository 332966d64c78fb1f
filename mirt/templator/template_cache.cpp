#include "templator/template_cache.h"

#include <mutex>

namespace {

// A template file, open for as long as this lives where it can be opened at all.
class TemplateFile {
 public:
  explicit TemplateFile(const CComBSTR& path)
      : handle_(CreateFileW(path.view().data(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~TemplateFile() {
    if (is_open()) CloseHandle(handle_);
  }
  TemplateFile(const TemplateFile&) = delete;
  TemplateFile& operator=(const TemplateFile&) = delete;

  // False when the time is not known; *written is then left alone.
  bool last_write(FILETIME* written) const {
    if (!is_open()) return false;
    FILETIME created{};
    FILETIME accessed{};
    FILETIME told{};
    if (!GetFileTime(handle_, &created, &accessed, &told)) return false;
    *written = told;
    return true;
  }

 private:
  bool is_open() const { return handle_ != invalid_handle(); }

  HANDLE handle_;
};

}  // namespace

CTemplateCache::~CTemplateCache() {
  for (const auto& [path, tmpl] : entries_) tmpl->Release();
}

HRESULT CTemplateCache::Take(const CComBSTR& path, CTemplate** tmpl) {
  {
    const std::lock_guard guard(lock_);
    const auto found = entries_.find(path);
    *tmpl = found == entries_.end() ? nullptr : found->second->AddRef();
  }
  if (!*tmpl) return S_OK;
  const TemplateFile file(path);
  FILETIME written{};
  if (file.last_write(&written) && CompareFileTime(&(*tmpl)->LastWrite, &written) != 0) {
    forget(path);
    (*tmpl)->Release();
    *tmpl = nullptr;
  }
  return S_OK;
}

void CTemplateCache::forget(const CComBSTR& path) {
  const std::lock_guard guard(lock_);
  const auto found = entries_.find(path);
  if (found == entries_.end()) return;
  found->second->Release();
  entries_.erase(found);
}

HRESULT CTemplateCache::Store(const CComBSTR& path, CTemplate* tmpl) try {
  TemplateFile(path).last_write(&tmpl->LastWrite);
  CComBSTR key(path);
  if (path.get() && !key.get()) return S_OK;
  const std::lock_guard guard(lock_);
  CTemplate*& entry = entries_[std::move(key)];
  if (entry) entry->Release();
  entry = tmpl->AddRef();
  return S_OK;
} catch (...) {
  return S_OK;
}
