// The CGI variables of a request.
#pragma once

#include "http/message.h"
#include "intrinsics/field_table.h"

namespace zelto {

struct PagePlace;

// The fixed names, then HTTP_… for every header (repeated headers joined with ", "). HTTP_METHOD and
// HTTP_CONTENT_TYPE are REQUEST_METHOD and CONTENT_TYPE once more.
FieldTable make_server_variables(const HttpRequest& request, const PagePlace& place);

}  // namespace zelto
