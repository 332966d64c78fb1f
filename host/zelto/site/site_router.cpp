#include "site/site_router.h"

#include <string>
#include <system_error>

#include "http/status.h"
#include "site/page_session.h"
#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

// For the author, who would otherwise look for the mistake in the file's place or permissions.
std::string protected_text(const std::string& name) {
  return to_utf8(html_encode(L"\"" + to_wide(name) + L"\" is a protected name: ", kUtf8CodePage)) +
         "nothing of this name is sent to a client, whether it exists or not. Pages can read it. "
         "<code>zelto serve --help</code> lists these names; <code>protect</code> in zelto.toml adds to them.";
}

}  // namespace

Router::Route SiteRouter::route(HttpRequest& request, ResponseSink& sink) {
  const auto settings = site_.settings();
  try {
    const FoundFile found = settings->files.find(request.path);
    if (found.kind == FoundFile::Kind::page) {
      request.file = found.path;
      request.file_stamp = found.stamp;
      return {.turn = session_of(request, found.physical)};
    }
    if (found.kind == FoundFile::Kind::protected_name && settings->options.debug)
      serve_status(sink, status::kNotFound, protected_text(found.path));
    else
      settings->files.serve(request, found, sink);
  } catch (const std::system_error& error) {
    // Not a missing file: the next request may find it.
    site_.log("zelto: " + request.path + ": " + error.what());
    serve_status(sink, status::kUnavailable, {}, {{"Retry-After", "5"}});
  }
  return {.answered = true, .turn = {}};
}

// Requests of one session wait for each other here, not in a worker. A page that was never compiled may not use it.
std::string SiteRouter::session_of(const HttpRequest& request, const std::string& page) const {
  const std::string_view id = sent_session(request);
  if (id.empty() || !site_.programs().uses_session(page) || !site_.sessions().has(id)) return {};
  return std::string(id);
}

}  // namespace zelto
