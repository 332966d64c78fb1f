// Any text as the attributes of a tag, and as a directive: what was read, written again, reads the same.
#include "pages/directive.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "pages/tag_attributes.h"
#include "text/characters.h"
#include "text/charset.h"
#include "text/locale.h"
#include "text_input.h"

namespace {

using zelto::pages::Attribute;
using zelto::pages::Directive;

// name="value" with whichever quotes the value does not hold; nothing for one that holds both, as one without quotes
// may.
std::optional<std::wstring> written(const std::vector<Attribute>& attributes) {
  std::wstring text;
  for (const auto& [name, value] : attributes) {
    const wchar_t quote = value.find(L'"') == std::wstring_view::npos ? L'"' : L'\'';
    if (value.find(quote) != std::wstring_view::npos) return std::nullopt;
    text.append(name).append(L" = ").append(1, quote).append(value).append(1, quote).append(L" ");
  }
  return text;
}

void same(const std::vector<Attribute>& expected, const std::vector<Attribute>& found) {
  fuzz::require(expected.size() == found.size(), "as many attributes");
  for (std::size_t i = 0; i < expected.size(); ++i) {
    fuzz::require(expected[i].name == found[i].name && expected[i].value == found[i].value, "the same attributes");
  }
}

void check_attributes(std::wstring_view text, const std::vector<Attribute>& attributes) {
  const wchar_t* at = text.data();
  for (const auto& [name, value] : attributes) {
    fuzz::require(!name.empty() && name.data() >= at && name.data() + name.size() <= text.data() + text.size(),
                  "names of the text, in order");
    at = name.data() + name.size();
    if (value.empty()) continue;
    fuzz::require(value.data() > at && value.data() + value.size() <= text.data() + text.size(), "values likewise");
    at = value.data() + value.size();
  }
  const std::optional<std::wstring> again = written(attributes);
  if (!again) return;
  const auto read = zelto::pages::read_attributes(*again);
  fuzz::require(read.has_value(), "what is written so is read");
  same(attributes, *read);
  const std::wstring tag_text = *again + L">";
  const auto tag = zelto::pages::read_tag(tag_text, 0);
  fuzz::require(tag && tag->end == tag_text.size(), "as a tag as well");
  same(attributes, tag->all);
}

struct Read {
  std::optional<Directive> directive;
  std::string fault;
};

Read read(std::wstring_view text) {
  try {
    return {zelto::pages::read_directive(text), {}};
  } catch (const std::string& fault) {
    return {std::nullopt, fault};
  }
}

void check_directive(std::wstring_view text) {
  const Read found = read(text);
  if (!found.directive) {
    fuzz::require(found.fault.ends_with('.'), "a fault is a sentence");
    fuzz::require(zelto::plain_line(found.fault) == found.fault, "of one line, that steers no terminal");
    return;
  }
  const Directive& directive = *found.directive;
  std::wstring again = directive.uses_session ? L"enablesessionstate=TRUE" : L"EnableSessionState='False'";
  if (directive.code_page) {
    fuzz::require(zelto::charset_of(*directive.code_page).has_value(), "a code page that is known");
    again += L" CodePage=" + std::to_wstring(*directive.code_page);
  }
  if (directive.lcid) {
    fuzz::require(zelto::is_locale(*directive.lcid), "a locale that is known");
    again += L"\nLCID=\"" + std::to_wstring(*directive.lcid) + L"\"";
  }
  for (const std::wstring& text_again : std::array{again, again + L" @"}) {
    const Read same_again = read(text_again);
    fuzz::require(same_again.directive && same_again.directive->code_page == directive.code_page &&
                      same_again.directive->lcid == directive.lcid &&
                      same_again.directive->uses_session == directive.uses_session,
                  "what is written so is the same directive");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  fuzz::require(zelto::charset_of(zelto::pages::code_page_of_source(bytes)).has_value(), "a code page to read with");
  const std::wstring text = zelto::to_wide(bytes);
  check_directive(text);
  if (const auto attributes = zelto::pages::read_attributes(text)) check_attributes(text, *attributes);
  if (const auto tag = zelto::pages::read_tag(text, 0)) {
    fuzz::require(tag->end > 0 && tag->end <= text.size() && text[tag->end - 1] == L'>', "a tag ends with its bracket");
    check_attributes(text, tag->all);
  }
  return 0;
}
