// Answers the requests of a site: pages, files, and what is neither.
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
  void answer(HttpRequest&& request, ResponseSink& sink);

  Site& site_;
  script::Engine engine_;
};

}  // namespace zelto
