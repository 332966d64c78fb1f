#include "site/site_worker.h"

#include <exception>
#include <string>
#include <utility>

#include "http/status.h"
#include "site/page_run.h"
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

void SiteWorker::handle(HttpRequest&& request, ResponseSink& sink) {
  const std::string path = request.path;
  try {
    answer(std::move(request), sink);
  } catch (const std::exception& error) {
    site_.log("zelto: " + path + ": " + error.what());
    throw;
  }
}

void SiteWorker::answer(HttpRequest&& request, ResponseSink& sink) {
  const auto settings = site_.settings();
  const FoundFile found = settings->files.find(request.path);
  if (found.kind == FoundFile::Kind::protected_name && settings->options.debug && !request.body_too_large) {
    serve_status(sink, status::kNotFound, protected_text(found.path));
    return;
  }
  if (found.kind != FoundFile::Kind::page) {
    settings->files.serve(request, found, sink);
    return;
  }
  run_page(site_, engine_, std::move(request), found.path, sink);
}

}  // namespace zelto
