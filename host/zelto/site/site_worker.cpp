#include "site/site_worker.h"

#include <korlib_host/unicode.h>
#include <malloc.h>

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "site/page_run.h"
#include "text/charset.h"

namespace zelto {
namespace {

// From this size on, a request's body is worth the milliseconds that freeing its memory takes.
constexpr std::uint64_t kLargeBody = 1u << 20;

}  // namespace

SiteWorker::SiteWorker(Site& site) : site_(site) {
  engine_.set_on_undeclared([&site](const std::string& url, std::u16string_view names) {
    if (!site.settings()->options.debug) return;
    std::wstring wide;
    korlib::append_utf16(wide, names);
    site.log(std::string(site.path_of(url)) + ": not declared: " + to_utf8(wide) +
             "; with var, let or const in front of the first use the page is faster");
  });
}

void SiteWorker::handle(HttpRequest&& request, ResponseSink& sink) {
  const std::string path = request.file;
  const bool is_large = request.body.size() >= kLargeBody;
  try {
    run_page(site_, engine_, std::move(request), path, sink);
  } catch (const std::exception& error) {
    site_.log("zelto: " + path + ": " + error.what());
    throw;
  }
  if (is_large) give_memory_back();
}

// What pages leave stays otherwise until as much again has come: the engine collects when its heap has grown.
void SiteWorker::give_memory_back() {
  engine_.collect_garbage();
  ::malloc_trim(0);  // the allocator keeps what the threads of uploads have freed
}

}  // namespace zelto
