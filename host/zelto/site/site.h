// A site: its folder, and what all of its pages share.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "intrinsics/application.h"
#include "pages/programs.h"
#include "site/session_store.h"
#include "site/static_files.h"

namespace zelto {

struct SiteOptions {
  std::string root;
  StaticOptions files;                                     // without the root
  pages::Language language = pages::Language::javascript;  // of pages that do not say
  bool debug = false;                                      // error pages tell what went wrong
  bool debug_panel = false;                                // with it, HTML answers end with what the page did
  std::chrono::seconds script_timeout{90};
  std::size_t script_memory = std::size_t{1} << 30;  // bytes that one page may take
  std::size_t kept_memory = std::size_t{4} << 30;    // bytes of the program beyond which pages keep nothing more in it
  LONG session_timeout = 20;                         // minutes
  std::chrono::seconds session_patience{30};         // how long a request waits for its session
  std::string session_suffix;                        // of identifiers
  std::size_t session_limit = 50'000;                // at a time
  std::function<void(std::string_view)> log;         // one line each time; called on any thread
};

// What holds for a request from its beginning to its end.
struct SiteSettings {
  explicit SiteSettings(SiteOptions given);

  const SiteOptions options;  // the root is canonical
  const StaticFiles files;
};

class Site {
 public:
  explicit Site(SiteOptions options);

  const std::string& root() const { return root_; }  // canonical, without a slash at its end
  // Any thread may ask for the settings, or change them: requests that have begun keep those that they have. The root,
  // the pages' language, the log, the sessions' patience and the suffix of their identifiers stay. Throws, and changes
  // nothing, when the folder has gone.
  std::shared_ptr<const SiteSettings> settings() const;
  void change(SiteOptions options);
  SessionStore& sessions() { return sessions_; }
  const std::shared_ptr<ApplicationState>& application() { return application_; }
  Programs& programs() { return programs_; }
  // A file's path from the root; as it is when it lies elsewhere.
  std::string_view path_of(std::string_view file) const;
  // Parts of a line may be a client's: its control characters become blanks, so that they begin no line of their own
  // and steer no terminal.
  void log(std::string_view line) const;
  // What the site's author must know at the start: one line, or empty.
  std::string notice() const;

 private:
  mutable std::mutex mutex_;  // guards settings_
  std::shared_ptr<const SiteSettings> settings_;
  const std::string root_;
  const std::function<void(std::string_view)> log_;
  std::shared_ptr<ApplicationState> application_;
  Programs programs_;
  SessionStore sessions_;
};

}  // namespace zelto
