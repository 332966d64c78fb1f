#include "intrinsics/server_variables.h"

#include <algorithm>
#include <iterator>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "intrinsics/request_state.h"
#include "text/charset.h"

namespace zelto {

namespace {

// "Accept-Language" as "HTTP_ACCEPT_LANGUAGE".
std::string variable_name(std::string_view header) {
  std::string name = "HTTP_";
  for (const char c : header) name += base::ascii_upper(c);
  std::ranges::replace(name, '-', '_');
  return name;
}

std::string header_or_empty(const HttpRequest& request, std::string_view name) {
  const std::string* value = request.header(name);
  return value ? *value : std::string();
}

// The Host header's name without its port; the local address when there is none.
std::string server_name(const HttpRequest& request) {
  std::string host = header_or_empty(request, "Host");
  if (host.empty()) return request.local_address;
  const std::size_t bracket = host.find(']');  // an IPv6 address has colons of its own
  const std::size_t colon = host.find(':', bracket == std::string::npos ? 0 : bracket);
  return host.substr(0, colon);
}

// The headers under their variable names, in the order in which each name first came.
std::vector<std::pair<std::string, std::string>> header_variables(const HttpRequest& request) {
  std::vector<std::pair<std::string, std::string>> variables;
  for (const Header& header : request.headers) {
    std::string name = variable_name(header.name);
    const auto same = std::ranges::find(variables, name, [](const auto& v) { return v.first; });
    if (same == variables.end()) {
      variables.emplace_back(std::move(name), header.value);
    } else {
      same->second.append(base::equal_ascii(header.name, "Cookie") ? "; " : ", ").append(header.value);
    }
  }
  return variables;
}

std::string all_http(const HttpRequest& request) {
  std::string all;
  for (const auto& [name, value] : header_variables(request)) all.append(name).append(":").append(value).append("\n");
  return all;
}

std::string all_raw(const HttpRequest& request) {
  std::string all;
  for (const Header& header : request.headers) all.append(header.name).append(": ").append(header.value).append("\r\n");
  return all;
}

struct Variable {
  std::wstring_view name;
  std::string (*value)(const HttpRequest& request, const PagePlace& place);
};

using Http = const HttpRequest&;
using Place = const PagePlace&;

std::string none(Http, Place) { return {}; }
std::string content_type(Http request, Place) { return header_or_empty(request, "Content-Type"); }
std::string method(Http request, Place) { return request.method; }
std::string remote_address(Http request, Place) { return request.remote_address; }
std::string virtual_path(Http, Place place) { return place.virtual_path; }

constexpr Variable kVariables[] = {
    {L"ALL_HTTP", [](Http request, Place) { return all_http(request); }},
    {L"ALL_RAW", [](Http request, Place) { return all_raw(request); }},
    {L"APPL_PHYSICAL_PATH", [](Http, Place place) { return place.site_root + "/"; }},
    {L"AUTH_PASSWORD", none},
    {L"AUTH_TYPE", none},
    {L"AUTH_USER", none},
    {L"CONTENT_LENGTH", [](Http request, Place) { return std::to_string(request.body_length); }},
    {L"CONTENT_TYPE", content_type},
    {L"GATEWAY_INTERFACE", [](Http, Place) { return std::string("CGI/1.1"); }},
    {L"HTTPS", [](Http request, Place) { return std::string(request.secure ? "on" : "off"); }},
    {L"LOCAL_ADDR", [](Http request, Place) { return request.local_address; }},
    {L"LOGON_USER", none},
    {L"PATH_INFO", virtual_path},
    {L"PATH_TRANSLATED", [](Http, Place place) { return place.physical_path; }},
    {L"QUERY_STRING", [](Http request, Place) { return request.query; }},
    {L"REMOTE_ADDR", remote_address},
    {L"REMOTE_HOST", remote_address},
    {L"REMOTE_PORT", [](Http request, Place) { return std::to_string(request.remote_port); }},
    {L"REMOTE_USER", none},
    {L"REQUEST_METHOD", method},
    {L"SCRIPT_NAME", virtual_path},
    {L"SERVER_NAME", [](Http request, Place) { return server_name(request); }},
    {L"SERVER_PORT", [](Http request, Place) { return std::to_string(request.local_port); }},
    {L"SERVER_PORT_SECURE", [](Http request, Place) { return std::string(request.secure ? "1" : "0"); }},
    {L"SERVER_PROTOCOL",
     [](Http request, Place) { return std::string(request.minor_version == 0 ? "HTTP/1.0" : "HTTP/1.1"); }},
    {L"SERVER_SOFTWARE", [](Http, Place) { return std::string("Zelto"); }},
    {L"URL", virtual_path},
    {L"HTTP_METHOD", method},
    {L"HTTP_CONTENT_TYPE", content_type},
};

const Variable* find_fixed(std::wstring_view name) {
  const auto found =
      std::ranges::find_if(kVariables, [&](const Variable& one) { return base::equal_folded(one.name, name); });
  return found == std::end(kVariables) ? nullptr : found;
}

std::shared_ptr<const Field> make_field(std::wstring_view name, std::string_view value) {
  auto field = std::make_shared<Field>();
  field->name = name;
  field->values.push_back(to_wide(value));
  return field;
}

}  // namespace

FieldTable make_server_variables(const HttpRequest& request, const PagePlace& place) {
  FieldTable table;
  for (const auto& [name, value] : kVariables) table.add(name, to_wide(value(request, place)));
  for (const auto& [header, value] : header_variables(request)) {
    const std::wstring name = to_wide(header);
    if (!find_fixed(name)) table.add(name, to_wide(value));
  }
  return table;
}

std::shared_ptr<const Field> make_server_variable(const HttpRequest& request, const PagePlace& place,
                                                  std::wstring_view name) {
  if (const Variable* fixed = find_fixed(name)) return make_field(fixed->name, fixed->value(request, place));
  for (const auto& [header, value] : header_variables(request)) {
    const std::wstring wide = to_wide(header);
    if (base::equal_folded(wide, name)) return make_field(wide, value);
  }
  return nullptr;
}

}  // namespace zelto
