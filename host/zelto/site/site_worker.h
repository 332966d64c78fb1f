// Answers the requests for a site's pages, each with the file that the router has found.
#pragma once

#include "http/worker.h"
#include "script/engine.h"
#include "site/site.h"

namespace zelto {

class SiteWorker final : public Worker {
 public:
  explicit SiteWorker(Site& site) : site_(site) {}

  void handle(HttpRequest&& request, ResponseSink& sink) override;

 private:
  Site& site_;
  script::Engine engine_;
};

}  // namespace zelto
