#include "app/site_worker.h"

namespace zelto {

void SiteWorker::handle(HttpRequest&& request, ResponseSink& sink) {
  const FoundFile found = site_.files().find(request.path);
  if (found.kind != FoundFile::Kind::kPage) {
    site_.files().serve(request, found, sink);
    return;
  }
  pages_.run(std::move(request), found.path, found.physical, sink);
}

}  // namespace zelto
