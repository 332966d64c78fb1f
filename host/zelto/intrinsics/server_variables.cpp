#include "intrinsics/server_variables.h"

#include <algorithm>

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

}  // namespace

FieldTable make_server_variables(const HttpRequest& request, const PagePlace& place) {
  FieldTable table;
  const auto add = [&table](std::string_view name, std::string_view value) {
    table.add(to_wide(name), to_wide(value));
  };
  const auto headers = header_variables(request);
  std::string all_http;
  for (const auto& [name, value] : headers) all_http.append(name).append(":").append(value).append("\n");
  std::string all_raw;
  for (const Header& header : request.headers)
    all_raw.append(header.name).append(": ").append(header.value).append("\r\n");
  const std::string content_type = header_or_empty(request, "Content-Type");

  add("ALL_HTTP", all_http);
  add("ALL_RAW", all_raw);
  add("APPL_PHYSICAL_PATH", place.site_root + "/");
  for (const char* name : {"AUTH_PASSWORD", "AUTH_TYPE", "AUTH_USER"}) add(name, "");
  add("CONTENT_LENGTH", std::to_string(request.body_length));
  add("CONTENT_TYPE", content_type);
  add("GATEWAY_INTERFACE", "CGI/1.1");
  add("HTTPS", request.secure ? "on" : "off");
  add("LOCAL_ADDR", request.local_address);
  add("LOGON_USER", "");
  add("PATH_INFO", place.virtual_path);
  add("PATH_TRANSLATED", place.physical_path);
  add("QUERY_STRING", request.query);
  add("REMOTE_ADDR", request.remote_address);
  add("REMOTE_HOST", request.remote_address);
  add("REMOTE_PORT", std::to_string(request.remote_port));
  add("REMOTE_USER", "");
  add("REQUEST_METHOD", request.method);
  add("SCRIPT_NAME", place.virtual_path);
  add("SERVER_NAME", server_name(request));
  add("SERVER_PORT", std::to_string(request.local_port));
  add("SERVER_PORT_SECURE", request.secure ? "1" : "0");
  add("SERVER_PROTOCOL", request.minor_version == 0 ? "HTTP/1.0" : "HTTP/1.1");
  add("SERVER_SOFTWARE", "Zelto");
  add("URL", place.virtual_path);
  add("HTTP_METHOD", request.method);
  add("HTTP_CONTENT_TYPE", content_type);
  for (const auto& [name, value] : headers) {
    if (name != "HTTP_METHOD" && name != "HTTP_CONTENT_TYPE") add(name, value);
  }
  return table;
}

}  // namespace zelto
