#include "site/page_error.h"

#include "text/charset.h"

namespace zelto {

PageError page_error(const language::ScriptError& error, const Site& site) {
  PageError made;
  made.number = error.number;
  made.source = error.source;
  made.description = error.message;
  made.category = L"Script";
  made.file = to_wide(site.path_of(error.file));
  made.line = error.line;
  made.column = error.column > 0 ? error.column : -1;
  for (const language::Frame& call : error.calls)
    made.calls.push_back({call.function, to_wide(site.path_of(call.file)), call.line});
  made.more_calls = error.more_calls;
  made.has_lost_calls = error.has_lost_calls;
  made.causes = error.causes;
  for (const language::TemplatePlace& place : error.templates)
    made.templates.push_back(
        {to_wide(site.path_of(place.file)), place.line, place.column, place.mark, place.calls, {}});
  made.more_templates = error.more_templates;
  return made;
}

}  // namespace zelto
