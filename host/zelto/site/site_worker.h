// Answers the requests of a site: pages, files, and what is neither.
#pragma once

#include "http/worker.h"
#include "site/page_run.h"

namespace zelto {

class SiteWorker final : public Worker {
 public:
  explicit SiteWorker(Site& site) : site_(site), pages_(site) {}

  void handle(HttpRequest&& request, ResponseSink& sink) override;

 private:
  void answer(HttpRequest&& request, ResponseSink& sink);

  Site& site_;
  PageWorker pages_;
};

}  // namespace zelto
