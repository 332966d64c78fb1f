#include "site/site_worker.h"

#include <malloc.h>

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "site/page_run.h"

namespace zelto {
namespace {

// From this size on, a request's body is worth the milliseconds that freeing its memory takes.
constexpr std::uint64_t kLargeBody = 1u << 20;

}  // namespace

void SiteWorker::handle(HttpRequest&& request, ResponseSink& sink) {
  const std::string path = request.file;
  const bool is_large = request.body.size() >= kLargeBody;
  try {
    run_page(site_, engine_, std::move(request), path, sink);
  } catch (const std::exception& error) {
    site_.log("zelto: " + path + ": " + error.what());
    throw;
  }
  if (!is_large) return;
  engine_.collect_garbage();
  ::malloc_trim(0);  // the allocator keeps what the threads of uploads have freed
}

}  // namespace zelto
