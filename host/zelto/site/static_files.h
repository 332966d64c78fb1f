// The files of a site: what a path names, and serving those that are not pages.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_descriptor.h"
#include "base/file_stamp.h"
#include "http/message.h"
#include "site/open_files.h"
#include "site/protected_names.h"

namespace zelto {

struct StaticOptions {
  std::string root;  // the site's folder
  std::vector<std::string> default_documents = {"default.asp", "index.asp",   "default.html",
                                                "index.html",  "default.htm", "index.htm"};
  std::string page_extension = ".asp";
  ProtectedNames protected_names;
  std::size_t open_files = 128;        // that are kept open, or a sixteenth of what the process may open
  bool refuses_unknown_types = false;  // files that would be downloads, but for those below "/.well-known/"
};

// What a request's path names.
struct FoundFile {
  enum class Kind { none, protected_name, page, file, redirect };
  Kind kind = Kind::none;
  std::string path;        // of the page or file, from the root, "/a/default.asp"; for redirect the new path,
                           // for protected_name the name that is protected
  std::string physical;    // the same under the site's folder
  bool is_linked = false;  // a link leads there
  std::shared_ptr<const OpenFile> open = {};  // of a file that was open already
  std::optional<base::FileStamp> stamp = {};  // of a page
};

class StaticFiles {
 public:
  // Throws std::system_error when the folder cannot be opened.
  explicit StaticFiles(StaticOptions options);

  // `path` as HttpRequest::path. A folder gives its default document, or a redirect when its final slash
  // is missing. Nothing outside the root is ever found, not through symbolic links either; what a link leads to is
  // found as it would be by its own name: not at all, or as a page.
  // Throws std::system_error when the system cannot look, because too many files are open.
  FoundFile find(std::string_view path) const;

  // Answers with what find() gave, other than a page: the file, whole or in part, a redirect, or 404. For a client
  // a protected file does not exist.
  void serve(const HttpRequest& request, const FoundFile& found, ResponseSink& sink) const;

  // Closes the files that are kept open and were not asked for since the last call.
  void close_unused() const { open_files_.close_unused(); }

 private:
  // `resolve` as of openat2, beyond what is always refused.
  base::FileDescriptor open_beneath(const std::string& relative, int flags, std::uint64_t resolve = 0) const;
  base::FileDescriptor try_open(const std::string& relative, int flags, std::uint64_t resolve) const;
  std::optional<struct stat> look(std::string_view path) const;
  FoundFile find_open(std::string_view path) const;
  FoundFile find_linked(std::string_view path) const;
  FoundFile found(std::string_view path, std::string_view real, const struct stat& about) const;

  StaticOptions options_;
  base::FileDescriptor root_;
  mutable OpenFiles open_files_;
};

}  // namespace zelto
