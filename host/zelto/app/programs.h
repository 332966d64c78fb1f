// The compiled pages of a site.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "script/outcome.h"
#include "script/program.h"

namespace zelto {

struct LoadedPage {
  std::shared_ptr<const script::Program> program;  // null with `error`
  std::optional<script::ScriptError> error;
  LONG code_page = 65001;
  bool uses_session = true;
};

// Any thread may call any method.
class Programs {
 public:
  explicit Programs(std::string root) : root_(std::move(root)) {}

  // The page, compiled again when one of its files has changed.
  LoadedPage load(const std::string& virtual_path, const std::string& physical);

 private:
  std::string root_;
};

}  // namespace zelto
