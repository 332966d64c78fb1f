#include "script/parsed_scripts.h"

#include "script/text.h"

namespace zelto::script {
namespace {

constexpr std::size_t kSweepFrom = 256;  // entries; those of programs that are gone are removed from there on

}  // namespace

ParsedScript::ParsedScript(JSContextGroupRef group, std::u16string_view text, const std::string& url) {
  const JsString source(text);
  const JsString name(url.c_str());
  JSStringRef error = nullptr;
  script_.reset(JSScriptCreateFromString(group, name.get(), 1, source.get(), &error, &line_));
  if (!error) return;
  const JsString owned(error);
  message_ = to_wide(owned.view());
}

const ParsedScript& ParsedScripts::of(const std::shared_ptr<const language::Program>& program) {
  if (scripts_.size() >= kSweepFrom) {
    std::erase_if(scripts_, [](const auto& entry) { return entry.second.program.expired(); });
  }
  Entry& entry = scripts_[program.get()];
  if (entry.program.lock() != program) {
    // The engine takes a program of nothing but `a.b = literal` for data and runs it without a frame, so
    // that its errors would have no place. The last line makes it code, and is nothing that the program may lack.
    entry.parsed = std::make_unique<ParsedScript>(group_, program->text + u"\n;0", program->url);
    entry.program = program;
  }
  return *entry.parsed;
}

}  // namespace zelto::script
