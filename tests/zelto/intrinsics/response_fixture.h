// A page's response as a script has it.
#pragma once

#include <string>
#include <vector>

#include "zelto/intrinsics/page_fixture.h"

namespace test {

using Strings = std::vector<std::string>;

class ResponseTest : public PageTest {
 protected:
  IDispatch* response() {
    if (!object_) object_ = response_object();
    return object_.get();
  }
  CComPtr<IDispatch> cookie(const wchar_t* name) { return object_of(get(response(), L"Cookies", name)); }

 private:
  CComPtr<zelto::ResponseObject> object_;
};

}  // namespace test
