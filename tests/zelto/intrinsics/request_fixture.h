// A page's request as a script has it.
#pragma once

#include <string>

#include "zelto/intrinsics/page_fixture.h"

namespace test {

class RequestTest : public PageTest {
 protected:
  CComPtr<IDispatch> collection(const wchar_t* name) { return object_of(get(request_object().get(), name)); }
  // The text of collection(name).
  std::wstring text(const wchar_t* collection, const wchar_t* name) {
    return text_of(default_of(object_of(get(request_object().get(), collection, name))));
  }
};

}  // namespace test
