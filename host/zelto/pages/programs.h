// The compiled pages of a site.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "language/program.h"
#include "pages/page_compiler.h"

namespace zelto {

struct LoadedPage {
  std::shared_ptr<const language::Program> program;  // null with `error`
  std::optional<language::ScriptError> error;        // a directive, include or delimiter that is wrong
  pages::Directive directive;
};

// Any thread may call any method. A page is compiled when it is first asked for and shared by all workers;
// it is compiled again when one of the files that it was made of has changed. A page with an error is
// looked at anew each time.
class Programs {
 public:
  // `language` is that of pages that do not say.
  explicit Programs(std::string root, pages::Language language = pages::Language::javascript)
      : root_(std::move(root)), language_(language) {}

  // `physical` is the page's canonical path, and `seen` the stamp that its file had when the request came: what was
  // compiled of that is not looked at again.
  LoadedPage load(const std::string& virtual_path, const std::string& physical,
                  const std::optional<pages::FileStamp>& seen = std::nullopt);
  // Whether the page used the session when it was last compiled; false of one that never was.
  bool uses_session(const std::string& physical);

 private:
  std::shared_ptr<const pages::CompiledPage> current(const std::string& physical,
                                                     const std::optional<pages::FileStamp>& seen);

  std::string root_;
  pages::Language language_;
  std::mutex lock_;
  std::unordered_map<std::string, std::shared_ptr<const pages::CompiledPage>> pages_;
};

}  // namespace zelto
