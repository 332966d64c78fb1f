#include "app/site_worker.h"

#include <exception>
#include <string>
#include <utility>

namespace zelto {

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
  const FoundFile found = site_.files().find(request.path);
  if (found.kind != FoundFile::Kind::kPage) {
    site_.files().serve(request, found, sink);
    return;
  }
  pages_.run(std::move(request), found.path, found.physical, sink);
}

}  // namespace zelto
