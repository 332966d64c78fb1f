// The CGI variables of a request.
#pragma once

#include <memory>
#include <string_view>

#include "http/message.h"
#include "intrinsics/field_table.h"

namespace zelto {

struct PagePlace;

// The fixed names, then HTTP_… for every header (repeated headers joined with ", "). HTTP_METHOD and
// HTTP_CONTENT_TYPE are REQUEST_METHOD and CONTENT_TYPE once more.
FieldTable make_server_variables(const HttpRequest& request, const PagePlace& place);
// The one of that name, in any letter case, without making the others; null where there is none.
std::shared_ptr<const Field> make_server_variable(const HttpRequest& request, const PagePlace& place,
                                                  std::wstring_view name);

}  // namespace zelto
