#include "site/site_worker.h"

#include <exception>
#include <string>
#include <utility>

#include "site/page_run.h"

namespace zelto {

void SiteWorker::handle(HttpRequest&& request, ResponseSink& sink) {
  const std::string path = request.file;
  try {
    run_page(site_, engine_, std::move(request), path, sink);
  } catch (const std::exception& error) {
    site_.log("zelto: " + path + ": " + error.what());
    throw;
  }
}

}  // namespace zelto
