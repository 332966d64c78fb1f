// CTemplateCache: the parsed templates of this process, by file path.
#pragma once

#include <map>

#include <korlib/combstr.h>
#include <korlib/hresult.h>

#include "frame/lock.h"
#include "templator/template.h"

// An entry lives until its file's time differs from the one recorded with it, which Take finds out. A file
// that cannot be opened any more keeps being served. Paths are compared exactly, letter case included.
//
// Any thread may call both operations. The lock guards the map only: files are looked at outside it, so
// two threads may both find an entry stale, or both store one; the later store wins. A template taken out
// stays valid for its holder whatever happens to the entry.
class CTemplateCache {
 public:
  CTemplateCache() = default;
  ~CTemplateCache();
  CTemplateCache(const CTemplateCache&) = delete;
  CTemplateCache& operator=(const CTemplateCache&) = delete;

  // A counted template, or null when there is none that is still current. Always S_OK.
  HRESULT Take(const CComBSTR& path, CTemplate** tmpl);
  // Records the file's time in the template and keeps a reference of its own. Always S_OK; without memory
  // the template is simply not kept.
  HRESULT Store(const CComBSTR& path, CTemplate* tmpl);

 private:
  void forget(const CComBSTR& path);

  std::map<CComBSTR, CTemplate*> entries_;
  CCriticalSection lock_;
};

// The process has one, made when the module is loaded.
extern KORLIB_API CTemplateCache g_oTemplateCache;
