#include "templator/template.h"

#include <atomic>

#include <korlib/bstr.h>

CTemplate::~CTemplate() {
  for (BSTR text : Texts) SysFreeString(text);
  for (CMarkData* mark : Marks) delete mark;
}

CTemplate* CTemplate::AddRef() {
  std::atomic_ref(RefCount).fetch_add(1);
  return this;
}

LONG CTemplate::Release() {
  const LONG left = std::atomic_ref(RefCount).fetch_sub(1) - 1;
  if (left == 0) delete this;
  return left;
}
