#include "app/help/search.h"

#include <algorithm>
#include <charconv>

#include "base/ascii.h"
#include "base/letter_case.h"

namespace zelto::help {

namespace {

constexpr std::string_view kObjects = "objects.md";  // whose headings name those that every page has
constexpr std::string_view kVbscript = "vbscript.md";

// "(#*text#)", also "#*" for short.
bool is_mark(std::string_view name) {
  if (name.starts_with("(#")) return name.size() > 2;
  return name.size() > 1 && name.starts_with('#') && !base::is_alphanumeric(name[1]) && name[1] != '|' &&
         name[1] != ')';
}

// A name as the documents write it: without blanks around it and a call's parentheses, and of a mark its type.
std::string_view sought(std::string_view name) {
  if (name == "(#") return name;
  if (is_mark(name)) name = name.substr(name.find('#') + 1, 1);
  name = base::trimmed(name, [](char c) { return c == ' '; });
  if (name.size() > 1 && name.ends_with('.')) name.remove_suffix(1);  // "Response.", before its member is known
  return name.size() > 1 ? name.substr(0, name.find('(')) : name;
}

// "13" of 0x800A000D, as which the host writes an error that scripts count; empty for any other.
std::string script_number(std::string_view name) {
  constexpr std::string_view kFacility = "0x800A";
  constexpr std::size_t kDigits = 4;
  if (name.size() != kFacility.size() + kDigits || !base::equal_ascii(name.substr(0, kFacility.size()), kFacility))
    return {};
  unsigned number = 0;
  const auto [end, error] = std::from_chars(name.data() + kFacility.size(), name.data() + name.size(), number, 16);
  return error == std::errc() && end == name.data() + name.size() ? std::to_string(number) : std::string();
}

bool matches(std::string_view written, std::string_view name) {
  if (base::equal_ascii(written, name)) return true;
  constexpr std::string_view kAny = "NAME";
  if (!written.ends_with("_NAME")) return false;
  written.remove_suffix(kAny.size());
  // One in capitals is looked for as it is: "script_timeot" is no "SCRIPT_NAME".
  if (std::ranges::none_of(written, [](char c) { return base::ascii_upper(c) != c; }) && !name.starts_with(written))
    return false;
  return name.size() > written.size() && base::equal_ascii(name.substr(0, written.size()), written);
}

bool has_word(std::string_view text, std::string_view word) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    while (at < text.size() && is_name(text[at])) ++at;
    if (base::equal_ascii(text.substr(begin, at - begin), word)) return true;
    at += at == begin;
  }
  return false;
}

// "Response" and "Write": of a name without an object, or without a member, nothing and all of it.
struct Parts {
  std::string_view object;
  std::string_view member;
};
Parts parts_of(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  const bool has_object = dot != std::string_view::npos && dot > 0 && dot + 1 < name.size();
  return has_object ? Parts{name.substr(0, dot), name.substr(dot + 1)} : Parts{{}, name};
}

// Whether the entry stands under a heading with the object's name, or is its row in a table of objects: that of
// "ADODB.Connection" begins with "connection:".
bool is_of(const Entry& entry, std::string_view object) {
  const std::string row = std::string(parts_of(object).member) + ":";
  return has_word(entry.heading, object) || base::equal_ascii(std::string_view(entry.text).substr(0, row.size()), row);
}

// Whether one of its names is that of the object, or of its class.
bool is_about(const Entry& entry, std::string_view object) {
  return std::ranges::any_of(entry.names, [&](const std::string& one) {
    return base::equal_ascii(one, object) || base::equal_ascii(parts_of(one).member, object);
  });
}

using List = std::vector<std::string> Entry::*;

std::vector<const Entry*> entries_with(const std::vector<Entry>& entries, std::string_view name, List list,
                                       std::string_view under) {
  std::vector<const Entry*> found;
  for (const Entry& entry : entries) {
    if (!under.empty() && !is_of(entry, under) && (list != &Entry::mentions || !is_about(entry, under))) continue;
    if (std::ranges::any_of(entry.*list, [&](const std::string& one) { return matches(one, name); }))
      found.push_back(&entry);
  }
  return found;
}

// Those under the heading, or at the beginning of the document, that is called so.
std::vector<const Entry*> topic_called(const std::vector<Entry>& entries, std::string_view name) {
  std::vector<const Entry*> found;
  for (const Entry& entry : entries) {
    const std::string_view document = entry.file.substr(0, entry.file.rfind('.'));
    if (base::equal_ascii(entry.heading, name) || (entry.is_opening && base::equal_ascii(document, name)))
      found.push_back(&entry);
  }
  return found;
}

// Those under headings that have the word, be it one or several: "upload" is found in "Uploads".
std::vector<const Entry*> topics_about(const std::vector<Entry>& entries, std::string_view name) {
  const std::string_view single = name.ends_with('s') ? name.substr(0, name.size() - 1) : name;
  std::vector<const Entry*> found;
  for (const std::string& word : {std::string(name), std::string(single), std::string(single) + "s"}) {
    for (const Entry& entry : entries)
      if (has_word(entry.heading, word)) found.push_back(&entry);
    if (!found.empty()) break;
  }
  return found;
}

// Members of an object that the documents name in front of them: "console" of "console.log".
std::vector<const Entry*> members_of(const std::vector<Entry>& entries, std::string_view name) {
  const std::string beginning = std::string(name) + ".";
  std::vector<const Entry*> found;
  for (const Entry& entry : entries) {
    if (std::ranges::any_of(entry.names, [&](std::string_view one) {
          return base::equal_ascii(one.substr(0, beginning.size()), beginning);
        }))
      found.push_back(&entry);
  }
  return found;
}

// The first of those that have the words anywhere, in any letter case.
std::vector<const Entry*> texts_with(const std::vector<Entry>& entries, std::string_view words) {
  constexpr std::size_t kMost = 5;
  std::vector<const Entry*> found;
  for (const Entry& entry : entries) {
    const std::string_view text = entry.text;
    for (std::size_t at = 0; at + words.size() <= text.size() && found.size() < kMost; ++at) {
      const std::size_t end = at + words.size();
      if (!base::equal_ascii(text.substr(at, words.size()), words)) continue;
      if ((at > 0 && base::is_alphanumeric(text[at - 1])) || (end < text.size() && base::is_alphanumeric(text[end])))
        continue;
      found.push_back(&entry);
      break;
    }
  }
  return found;
}

std::vector<const Entry*> named(const std::vector<Entry>& entries, std::string_view name, List list) {
  const auto [object, member] = parts_of(name);
  auto found = entries_with(entries, name, list, {});
  if (found.empty() && !object.empty()) found = entries_with(entries, member, list, object);
  return found;
}

std::vector<const Entry*> about(const std::vector<Entry>& entries, std::string_view name) {
  for (auto found : {named(entries, name, &Entry::names), topic_called(entries, name), members_of(entries, name),
                     named(entries, name, &Entry::mentions), topics_about(entries, name)})
    if (!found.empty()) return found;
  // Of an object that pages name as they like: "page.SetView".
  const auto [object, member] = parts_of(name);
  if (object.empty()) return {};
  const bool is_known = std::ranges::any_of(entries, [object = object](const Entry& entry) {
    return entry.file == kObjects && has_word(entry.heading, object);
  });
  return is_known ? std::vector<const Entry*>() : about(entries, member);
}

}  // namespace

std::vector<const Entry*> find(const std::vector<Entry>& entries, std::string_view name) {
  const bool is_of_mark = is_mark(name);
  name = sought(name);
  if (name.empty()) return {};
  if (is_of_mark) {
    auto found = named(entries, name, &Entry::names);
    if (found.empty()) found = named(entries, name, &Entry::mentions);
    std::erase_if(found, [](const Entry* one) { return one->file == kVbscript; });  // an operator
    return found;
  }
  if (const std::string number = script_number(name); !number.empty()) {
    if (auto found = named(entries, number, &Entry::names); !found.empty()) return found;
  }
  if (name.size() == 1 && base::is_alphanumeric(name.front())) return named(entries, name, &Entry::names);
  auto found = about(entries, name);
  return found.empty() ? texts_with(entries, name) : found;
}

std::string_view unknown_object(const std::vector<Entry>& entries, std::string_view name) {
  const std::string_view object = parts_of(sought(name)).object;
  if (is_mark(name) || object.empty() || base::ascii_lower(object.front()) == object.front()) return {};
  const std::string_view first = object.substr(0, object.find('.'));  // "Session" of "Session.Contents.Remove"
  const bool is_known = std::ranges::any_of(entries, [&](const Entry& entry) { return is_about(entry, object); }) ||
                        !members_of(entries, first).empty() || !topics_about(entries, first).empty() ||
                        !texts_with(entries, first).empty();
  return is_known ? std::string_view() : object;
}

std::vector<std::string> members_beside(const std::vector<Entry>& entries, std::string_view name) {
  const std::string_view object = parts_of(sought(name)).object;
  std::vector<std::string> members;
  for (const Entry& entry : entries) {
    if (object.empty() || (!is_of(entry, object) && !is_about(entry, object))) continue;
    members.insert(members.end(), entry.names.begin(), entry.names.end());
    members.insert(members.end(), entry.mentions.begin(), entry.mentions.end());
  }
  return members;
}

}  // namespace zelto::help
