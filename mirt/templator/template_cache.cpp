#include "templator/template_cache.h"

#include <mutex>

namespace {

// False when the file cannot be opened or has no time to tell.
bool last_write_of(const CComBSTR& path, FILETIME* written) {
  const HANDLE file = CreateFileW(path.view().data(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == invalid_handle()) return false;
  FILETIME created{};
  FILETIME accessed{};
  const BOOL told = GetFileTime(file, &created, &accessed, written);
  CloseHandle(file);
  return told != FALSE;
}

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
  FILETIME written{};
  if (last_write_of(path, &written) && CompareFileTime(&(*tmpl)->LastWrite, &written) != 0) {
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
  FILETIME written{};
  if (last_write_of(path, &written)) tmpl->LastWrite = written;
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
