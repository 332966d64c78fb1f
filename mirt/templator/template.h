// CTemplate: one parsed template, shared by the cache and by every page that draws it.
#pragma once

#include <vector>

#include <korlib/types.h>

#include "templator/mark_data.h"

// Reads Texts[0], Marks[0], Texts[1] … Marks[n-1], Texts[n] once it is parsed; what a failed parse leaves
// behind is shorter and can only be released.
//
// Reference-counted: a holder makes one with new, shares it with AddRef and gives it up with Release. Any
// thread may count; the contents are not changed once others can see them.
struct CTemplate {
  CTemplate() = default;
  ~CTemplate();
  CTemplate(const CTemplate&) = delete;
  CTemplate& operator=(const CTemplate&) = delete;

  CTemplate* AddRef();
  LONG Release();  // the new count

  std::vector<BSTR> Texts;  // owned literal runs, never null
  std::vector<CMarkData*> Marks;
  LONG RefCount = 1;     // changed and read by any thread, so atomically
  FILETIME LastWrite{};  // of the file it came from; written by the cache before it publishes the template
};
