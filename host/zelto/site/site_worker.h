// Answers the requests for a site's pages, each with the file that the router has found.
#pragma once

#include <atomic>
#include <cstdint>

#include "http/worker.h"
#include "script/engine.h"
#include "site/site.h"

namespace zelto {

class SiteWorker final : public Worker {
 public:
  explicit SiteWorker(Site& site);
  // With a place for its engine's deadline (Engine::show_deadline).
  SiteWorker(Site& site, std::atomic<std::int64_t>& deadline) : SiteWorker(site) { engine_.show_deadline(deadline); }

  void handle(HttpRequest&& request, ResponseSink& sink) override;
  void rest() override { give_memory_back(); }

 private:
  void give_memory_back();

  Site& site_;
  script::Engine engine_;
};

}  // namespace zelto
