#include "templator/template.h"

#include <korlib/bstr.h>
#include <korlib/winapi.h>

CTemplate::~CTemplate() {
  for (BSTR text : Texts) SysFreeString(text);
  for (CMarkData* mark : Marks) delete mark;
}

CTemplate* CTemplate::AddRef() {
  InterlockedIncrement(&RefCount);
  return this;
}

LONG CTemplate::Release() {
  const auto left = static_cast<LONG>(InterlockedDecrement(&RefCount));
  if (left == 0) delete this;
  return left;
}
