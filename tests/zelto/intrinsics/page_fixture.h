// A page's intrinsic objects over a request that a test writes down, and what comes out of them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "intrinsics/page_state.h"
#include "intrinsics/request_object.h"
#include "intrinsics/response_object.h"
#include "intrinsics/server_object.h"
#include "zelto/intrinsics/calls.h"
#include "zelto/support/memory_sink.h"

namespace test {

class FakePageHost final : public zelto::PageHost {
 public:
  static constexpr HRESULT kEnded = korlib::hresult(0x8004E0F1);

  HRESULT end_page() override {
    ++ends;
    return kEnded;
  }
  HRESULT execute(const std::string& path) override {
    executed.push_back(path);
    return S_OK;
  }
  LONG script_timeout() const override { return timeout; }
  HRESULT set_script_timeout(LONG seconds) override {
    timeout = seconds;
    return S_OK;
  }
  const zelto::PageError* last_error() const override { return error; }

  int ends = 0;
  std::vector<std::string> executed;
  LONG timeout = 90;
  const zelto::PageError* error = nullptr;
};

class PageTest : public testing::Test {
 protected:
  // Before the first use of an object.
  zelto::HttpRequest request{};

  PageTest();
  ~PageTest() override;

  void post_form(std::string_view body);

  zelto::PageState& page();
  zelto::PageStatePtr page_state() { return page(), page_; }
  CComPtr<zelto::RequestObject> request_object();
  CComPtr<zelto::ResponseObject> response_object();
  CComPtr<zelto::ServerObject> server_object();

  MemorySink sink;
  FakePageHost host;

 private:
  zelto::PageStatePtr page_;
};

}  // namespace test
