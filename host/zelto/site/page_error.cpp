#include "site/page_error.h"

#include <utility>

#include "text/charset.h"

namespace zelto {

namespace {

std::vector<PageError::Call> calls_of(const std::vector<language::Frame>& frames, const Site& site) {
  std::vector<PageError::Call> calls;
  calls.reserve(frames.size());
  for (const language::Frame& frame : frames)
    calls.push_back({frame.function, to_wide(site.path_of(frame.file)), frame.line});
  return calls;
}

std::vector<PageError::Cause> causes_of(const language::ScriptError& error, const Site& site) {
  std::vector<PageError::Cause> causes;
  causes.reserve(error.causes.size());
  for (const language::Cause& each : error.causes) {
    const auto kind = each.kind == language::Cause::part     ? PageError::Cause::part
                      : each.kind == language::Cause::opener ? PageError::Cause::opener
                                                             : PageError::Cause::cause;
    causes.push_back({kind, each.message, each.source, to_wide(site.path_of(each.file)), each.line, each.column,
                      calls_of(each.calls, site), each.depth});
  }
  return causes;
}

}  // namespace

PageError page_error(const language::ScriptError& error, const Site& site) {
  PageError made;
  made.number = error.number;
  made.source = error.source;
  made.description = error.message;
  made.category = L"Script";
  made.file = to_wide(site.path_of(error.file));
  made.line = error.line;
  made.column = error.column > 0 ? error.column : -1;
  made.calls = calls_of(error.calls, site);
  made.more_calls = error.more_calls;
  made.has_lost_calls = error.has_lost_calls;
  made.causes = causes_of(error, site);
  made.more_causes = error.more_causes;
  for (const language::TemplatePlace& place : error.templates)
    made.templates.push_back(
        {to_wide(site.path_of(place.file)), place.line, place.column, place.mark, place.calls, {}});
  made.more_templates = error.more_templates;
  return made;
}

}  // namespace zelto
