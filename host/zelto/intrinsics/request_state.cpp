#include "intrinsics/request_state.h"

#include <korlib_host/errors.h>

#include <utility>

#include "base/letter_case.h"
#include "intrinsics/server_variables.h"

namespace zelto {

namespace {

constexpr std::wstring_view kTooLarge = L"The request's body is larger than the limit.";

HRESULT refuse(std::wstring_view text) { return korlib::raise(E_FAIL, L"Request", text); }

}  // namespace

RequestState::RequestState(HttpRequest request, PagePlace place) : http_(std::move(request)), place_(std::move(place)) {
  if (!http_.body_too_large) http_.body_length = http_.body.size();  // the body may be given away
}

HRESULT RequestState::query(Fields& fields) {
  if (!query_) {
    auto table = parse_form_fields(http_.query, code_page);
    has_too_long_query_ = !table;
    if (!table) return refuse(L"The query string has more than 1000 fields.");
    query_ = std::make_shared<const FieldTable>(std::move(*table));
  }
  fields = query_;
  return S_OK;
}

HRESULT RequestState::server_variables(Fields& fields) {
  if (!server_variables_) {
    server_variables_ = std::make_shared<const FieldTable>(make_server_variables(http_, place_));
  }
  fields = server_variables_;
  return S_OK;
}

std::shared_ptr<const Field> RequestState::server_variable(std::wstring_view name) const {
  if (server_variables_) return {server_variables_, server_variables_->find(name)};
  return make_server_variable(http_, place_, name);
}

HRESULT RequestState::client_certificate(Fields& fields) {
  fields = std::make_shared<const FieldTable>();
  return S_OK;
}

const ReceivedCookies& RequestState::cookies() {
  if (!cookies_) {
    auto all = std::make_unique<ReceivedCookies>();
    for (const Header& header : http_.headers) {
      if (base::equal_ascii(header.name, "Cookie")) all->add_header(header.value);
    }
    cookies_ = std::move(all);
  }
  return *cookies_;
}

bool RequestState::has_urlencoded_body() const {
  const std::string* type = http_.header("Content-Type");
  return type && base::equal_ascii(type->substr(0, type->find_first_of("; \t")), "application/x-www-form-urlencoded");
}

HRESULT RequestState::form(Fields& fields) {
  if (use_ == BodyUse::bytes) return refuse(L"Form cannot be used after BinaryRead.");
  if (http_.body_too_large) return refuse(kTooLarge);
  if (!form_) {
    auto table = has_urlencoded_body() ? parse_form_fields(http_.body, code_page) : FieldTable();
    use_ = BodyUse::form;
    has_too_many_fields_ = !table;
    if (!table) return refuse(L"The form has more than 1000 fields.");
    form_ = std::make_shared<const FieldTable>(std::move(*table));
  }
  fields = form_;
  return S_OK;
}

HRESULT RequestState::read_bytes(std::size_t count, Body& bytes) {
  if (use_ == BodyUse::form) return refuse(L"BinaryRead cannot be used after Form.");
  if (http_.body_too_large) return refuse(kTooLarge);
  if (bytes_read_ == 0 && count >= http_.body.size()) {
    use_ = BodyUse::bytes;
    bytes = std::exchange(http_.body, Body());
  } else {
    bytes = std::string_view(http_.body).substr(bytes_read_, count);
    use_ = BodyUse::bytes;
    bytes_read_ += bytes.size();
    if (bytes_read_ < http_.body.size()) return S_OK;
    http_.body = Body();
    bytes_read_ = 0;
  }
  is_spent_ = true;
  return S_OK;
}

}  // namespace zelto
