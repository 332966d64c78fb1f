// One request for a page, from its first line to the last byte of its answer.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "http/message.h"
#include "intrinsics/page_state.h"
#include "script/engine.h"
#include "site/site.h"

namespace zelto {

// Runs pages of a site on one thread.
class PageWorker {
 public:
  explicit PageWorker(Site& site) : site_(site) {}

  // `physical` is the page's file, `virtual_path` the same from the site's root. Answers the status.
  int run(HttpRequest request, const std::string& virtual_path, const std::string& physical, ResponseSink& sink);

 private:
  Site& site_;
  script::Engine engine_;
};

}  // namespace zelto
