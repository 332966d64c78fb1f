// What the request's intrinsic objects share: the request as received, and what was read of it so far.
#pragma once

#include <korlib/types.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "http/message.h"
#include "intrinsics/cookies.h"
#include "intrinsics/field_table.h"

namespace zelto {

// Where the running page lies.
struct PagePlace {
  std::string virtual_path;   // "/shop/list.asp"
  std::string physical_path;  // of that page
  std::string site_root;      // physical, without a slash at its end
};

// Lives as long as any object that a page or component still holds, also beyond the request. Belongs to
// the request's thread.
class RequestState {
 public:
  using Fields = std::shared_ptr<const FieldTable>;

  RequestState(HttpRequest request, PagePlace place);

  const HttpRequest& http() const { return http_; }
  const PagePlace& place() const { return place_; }

  // The code page in which fields are read; it counts for what is read first after it was set.
  LONG code_page = 65001;

  // Each is built when it is first asked for. Fields, and bytes of the body, that cannot be had fail with a message.
  HRESULT query(Fields& fields);
  HRESULT server_variables(Fields& fields);
  // One of them, null where there is none. Every page of the component asks for some, and few need them all.
  std::shared_ptr<const Field> server_variable(std::wstring_view name) const;
  HRESULT client_certificate(Fields& fields);  // none: no client is asked for one
  const ReceivedCookies& cookies();

  // The body as a submitted form. Only an urlencoded body has fields; any other reads as an empty form.
  // From then on its bytes can't be read.
  HRESULT form(Fields& fields);
  bool has_urlencoded_body() const;
  bool was_read_as_bytes() const { return use_ == BodyUse::bytes; }
  // The body is larger than its limit, or was asked for as a form and has more fields than one may have.
  bool is_too_large() const { return http_.body_too_large || has_too_many_fields_; }
  // The query string was asked for and has more fields than one may have.
  bool has_too_long_query() const { return has_too_long_query_; }

  // The next bytes of the body, up to `count`. From then on it can't be read as a form. All of it read at
  // once is handed over as it is, not copied, and is no longer held here.
  HRESULT read_bytes(std::size_t count, Body& bytes);
  // Whether the last byte was handed over; an empty body is spent when it was read once.
  bool is_spent() const { return is_spent_; }
  std::uint64_t total_bytes() const { return http_.body_length; }

 private:
  enum class BodyUse { none, form, bytes };

  HttpRequest http_;
  PagePlace place_;
  Fields query_;
  Fields form_;
  Fields server_variables_;
  std::unique_ptr<ReceivedCookies> cookies_;
  BodyUse use_ = BodyUse::none;
  std::size_t bytes_read_ = 0;
  bool is_spent_ = false;
  bool has_too_many_fields_ = false;
  bool has_too_long_query_ = false;
};

}  // namespace zelto
