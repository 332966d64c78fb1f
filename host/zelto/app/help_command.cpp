#include "app/help_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>

#include "app/command_line.h"
#include "app/help/entries.h"
#include "app/help/search.h"
#include "app/suggestion.h"
#include "text/characters.h"

namespace zelto {

namespace {

constexpr std::size_t kWidth = 96;

// Lines of whole words, each with two blanks in front.
std::string wrapped(std::string_view text) {
  std::string lines = " ";
  std::size_t column = 1;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string_view word = text.substr(at, end - at);
    at = end + 1;
    if (word.empty()) continue;
    if (column > 1 && column + 1 + word.size() > kWidth) {
      lines += "\n ";
      column = 1;
    }
    lines.append(" ").append(word);
    column += 1 + word.size();
  }
  return lines + "\n";
}

void print_entries(const std::vector<const help::Entry*>& found) {
  const help::Entry* last = nullptr;
  for (const help::Entry* entry : found) {
    const bool goes_on = last && last->file == entry->file && last->heading == entry->heading;
    if (last) std::cout << "\n";
    if (!goes_on) std::cout << "docs/" << entry->file << ", " << entry->heading << ":\n";
    std::cout << wrapped(entry->text);
    last = entry;
  }
  if (last) std::cout << "\n";
}

// "did you mean 'Response.Write'?" of a name that the documents do not know; or else what to ask for.
std::string advice(const std::vector<help::Entry>& entries, std::string_view name) {
  if (name.starts_with("(#")) return "no mark has that type: zelto help templates tells which there are";
  std::vector<std::string> known;
  for (const help::Entry& entry : entries) {
    // Short words of VBScript's, "If" or "Exp", are near to too many others.
    constexpr std::size_t kShortest = 4;
    std::ranges::copy_if(entry.names, std::back_inserter(known), [&](const std::string& one) {
      return entry.file != "vbscript.md" || one.size() >= kShortest;
    });
    known.push_back(entry.heading);
    known.emplace_back(entry.file.substr(0, entry.file.rfind('.')));
  }
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) {
    const std::string meant = suggestion(known, name);
    return meant.empty() ? "zelto help lists them" : meant;
  }
  const std::string_view object = name.substr(0, dot);
  const std::string_view member = name.substr(dot + 1);
  if (const std::string one = nearest(help::members_beside(entries, name), member); !one.empty())
    return fmt::format("did you mean '{}.{}'?", object, one);
  if (const std::string one = nearest(known, object); !one.empty() && !help::unknown_object(entries, name).empty())
    return fmt::format("did you mean '{}.{}'?", one, member);
  for (const help::Entry& entry : entries) known.insert(known.end(), entry.mentions.begin(), entry.mentions.end());
  const std::string meant = suggestion(known, member);
  return meant.empty() ? "zelto help lists them" : meant;
}

// False for what the documents do not know.
bool print_one(const std::vector<help::Entry>& entries, const std::string& name) {
  const std::vector<const help::Entry*> found = help::find(entries, name);
  const std::string_view object = help::unknown_object(entries, name);
  if (object.empty()) print_entries(found);
  if (!found.empty() && object.empty()) return true;
  const std::string shown = plain_line(name);
  const std::string meant = advice(entries, name);
  std::cerr << "zelto: the documents say nothing about '" << shown << "'; " << meant << "\n";
  return false;
}

// A line for each document: what to ask for, and its title.
void print_documents(const std::vector<help::Entry>& entries) {
  std::cout << "zelto help NAME tells of a member, mark, event, key or command, or of one of these:\n\n";
  std::string_view last;
  for (const help::Entry& entry : entries) {
    if (entry.file == last) continue;
    last = entry.file;
    std::cout << fmt::format("  {:<12}{}\n", last.substr(0, last.rfind('.')), entry.heading);
  }
}

}  // namespace

int print_help(const HelpCommand& command) {
  std::vector<help::Entry> entries;
  for (const help::Page& page : help::pages()) {
    std::vector<help::Entry> of_page = help::entries_of(page);
    entries.insert(entries.end(), std::make_move_iterator(of_page.begin()), std::make_move_iterator(of_page.end()));
  }
  if (command.names.empty()) print_documents(entries);
  int code = kSuccess;
  for (const std::string& name : command.names)
    if (!print_one(entries, name)) code = kFailure;
  return code;
}

}  // namespace zelto
