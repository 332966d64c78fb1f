// Answers what needs no worker, a file or that there is none, and tells of which session a page's request is.
#pragma once

#include "http/worker.h"
#include "site/site.h"

namespace zelto {

class SiteRouter final : public Router {
 public:
  explicit SiteRouter(Site& site) : site_(site) {}

  Route route(HttpRequest& request, ResponseSink& sink) override;

 private:
  std::string session_of(const HttpRequest& request, const std::string& page) const;

  Site& site_;
};

}  // namespace zelto
