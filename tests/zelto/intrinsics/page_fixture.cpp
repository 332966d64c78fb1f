#include "zelto/intrinsics/page_fixture.h"

namespace test {

PageTest::PageTest() {
  request.method = "GET";
  request.path = "/shop/list.asp";
  request.remote_address = "192.0.2.7";
  request.remote_port = 50000;
  request.local_address = "127.0.0.1";
  request.local_port = 8080;
  request.headers = {{"Host", "example.org:8080"}};
}

PageTest::~PageTest() {
  if (page_) page_->end();
}

void PageTest::post_form(std::string_view body) {
  request.method = "POST";
  request.headers.push_back({"Content-Type", "application/x-www-form-urlencoded; charset=utf-8"});
  request.body = zelto::Body(body);
}

zelto::PageState& PageTest::page() {
  if (!page_) {
    page_ = std::make_shared<zelto::PageState>(
        std::move(request), zelto::PagePlace{"/shop/list.asp", "/srv/site/shop/list.asp", "/srv/site"}, sink, &host);
  }
  return *page_;
}

CComPtr<zelto::RequestObject> PageTest::request_object() {
  page();
  return korlib::make<zelto::RequestObject>(page_);
}

CComPtr<zelto::ResponseObject> PageTest::response_object() {
  page();
  return korlib::make<zelto::ResponseObject>(page_);
}

CComPtr<zelto::ServerObject> PageTest::server_object() {
  page();
  return korlib::make<zelto::ServerObject>(page_);
}

}  // namespace test
