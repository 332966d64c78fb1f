// A site: its folder, and what all of its pages share.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "app/session_store.h"
#include "http/static_files.h"
#include "intrinsics/application_state.h"
#include "pages/programs.h"

namespace zelto {

struct SiteOptions {
  std::string root;
  StaticOptions files;  // without the root
  bool debug = false;   // error pages tell what went wrong
  std::chrono::seconds script_timeout{90};
  std::size_t script_memory = std::size_t{1} << 30;  // bytes that the objects of one page may take
  LONG session_timeout = 20;                         // minutes
  std::chrono::seconds session_patience{30};         // how long a request waits for its session
  std::string session_suffix;                        // of identifiers
  std::size_t session_limit = 50'000;                // at a time
  std::function<void(std::string_view)> log;         // one line each time; called on any thread
};

class Site {
 public:
  explicit Site(SiteOptions options);

  const SiteOptions& options() const { return options_; }
  const std::string& root() const { return options_.root; }  // canonical, without a slash at its end
  SessionStore& sessions() { return sessions_; }
  const std::shared_ptr<ApplicationState>& application() { return application_; }
  Programs& programs() { return programs_; }
  const StaticFiles& files() const { return files_; }
  void log(std::string_view line) const;

 private:
  SiteOptions options_;
  StaticFiles files_;
  std::shared_ptr<ApplicationState> application_;
  Programs programs_;
  SessionStore sessions_;
};

}  // namespace zelto
