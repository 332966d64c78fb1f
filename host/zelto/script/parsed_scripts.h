// Programs in the form that one virtual machine has parsed them into.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "language/program.h"
#include "script/jsc.h"

namespace zelto::script {

class ParsedScript {
 public:
  ParsedScript(JSContextGroupRef group, std::u16string_view text, const std::string& url);

  JSScriptRef get() const noexcept { return script_.get(); }  // null: a syntax error
  const std::wstring& message() const noexcept { return message_; }
  int line() const noexcept { return line_; }

 private:
  struct Release {
    void operator()(JSScriptRef script) const { JSScriptRelease(script); }
  };
  std::unique_ptr<OpaqueJSScript, Release> script_;
  std::wstring message_;
  int line_ = 0;
};

// What was parsed of the programs that are still in use.
class ParsedScripts {
 public:
  explicit ParsedScripts(JSContextGroupRef group) : group_(group) {}

  const ParsedScript& of(const std::shared_ptr<const language::Program>& program);
  void clear() { scripts_.clear(); }

 private:
  struct Entry {
    std::weak_ptr<const language::Program> program;
    std::unique_ptr<ParsedScript> parsed;
  };

  JSContextGroupRef group_;
  std::unordered_map<const language::Program*, Entry> scripts_;
};

}  // namespace zelto::script
