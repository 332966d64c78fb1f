#include "site/error_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <random>

#include <mirt/template_places.h>

#include "site/source_excerpt.h"
#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

using mirt::kTextTemplate;

constexpr LONG kLinesAround = 5;  // of the place of an error, that its excerpt shows

constexpr std::string_view kStyle =
    "body{font:16px/1.5 system-ui,sans-serif;margin:2rem auto;max-width:60rem;padding:0 1rem;color:#222}"
    "h1{font-size:1.4rem;color:#a11}dt{color:#666;float:left;width:6rem}dd{margin-left:6rem}"
    "pre{background:#f6f6f4;padding:1rem;overflow:auto}.here,.caret{background:#ffe1dc;display:block}h2{font-size:1."
    "1rem}";

std::string code_text(HRESULT number) { return fmt::format("0x{:08X}", static_cast<std::uint32_t>(number)); }

std::string page(std::string_view title, std::string_view body) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>{}</title><style>{}</style></head>\n"
      "<body>{}</body></html>\n",
      title, kStyle, body);
}

// "guestbook.asp:12"
std::wstring place_text(std::wstring_view file, LONG line) {
  return std::wstring(file) + (line > 0 ? L":" + std::to_wstring(line) : L"");
}

std::wstring place_text(const PageError::Template& place) {
  return place_text(place.file, place.line) + L":" + std::to_wstring(place.column);
}

std::string call_item(const PageError::Call& call) {
  const std::string name = call.function.empty() ? "the page" : shown_as_html(call.function) + "()";
  return fmt::format("<li>{}, {}</li>\n", name, shown_as_html(place_text(call.file, call.line)));
}

std::string counted(std::size_t count, std::string_view what) {
  return count == 0 ? std::string() : fmt::format("{} more {}{}", count, what, count > 1 ? "s" : "");
}

// "and 24 more marks, at least 68 more calls"
std::string not_listed(const PageError& error) {
  const std::string marks = counted(error.more_templates, "mark");
  std::string calls = counted(error.more_calls, "call");
  if (error.has_lost_calls) calls = calls.empty() ? "more calls" : "at least " + calls;
  if (marks.empty() && calls.empty()) return {};
  return fmt::format("<p>and {}{}{}</p>\n", marks, marks.empty() || calls.empty() ? "" : ", ", calls);
}

// Marks stand where they were drawn: around the calls that they made. One call alone is the place of the error itself.
std::string call_list(const PageError& error) {
  const auto& templates = error.templates;
  if (error.calls.size() + templates.size() < 2) return {};
  std::string list;
  auto next = templates.begin();
  for (std::size_t inside = 0; inside <= error.calls.size(); ++inside) {
    const bool is_last = inside == error.calls.size();
    for (; next != templates.end() && (is_last || next->calls <= inside); ++next)
      list +=
          fmt::format("<li><code>{}</code>, {}</li>\n", shown_as_html(next->mark), shown_as_html(place_text(*next)));
    if (is_last) break;
    list += call_item(error.calls[inside]);
  }
  const std::string_view title = templates.empty() ? "Calls" : "Marks and calls";
  return fmt::format("<h2>{}, the last one first</h2>\n<ol>\n{}</ol>\n{}", title, list, not_listed(error));
}

std::string indented(const std::string& text, unsigned depth) {
  return depth == 0 ? text : fmt::format("<span style=\"margin-left:{}rem\">{}</span>", 2 * depth, text);
}

std::string_view title_of(PageError::Cause::Kind kind) {
  switch (kind) {
    case PageError::Cause::cause:
      return "Caused by";
    case PageError::Cause::part:
      return "One of them";
    case PageError::Cause::opener:
      break;
  }
  return "Open";
}

// Those that the error's files may be parts of: an executed page stands nearer to its error than the one that was asked
// for.
std::vector<std::string> pages_of(const PageError& error, const std::string& root, std::string_view page) {
  std::vector<std::string> pages;
  for (const PageError::Call& call : error.calls) {
    std::string file = root + to_utf8(call.file);
    if (std::ranges::find(pages, file) == pages.end()) pages.push_back(std::move(file));
  }
  pages.push_back(root + std::string(page));
  return pages;
}

// With its own lines, unless the error's show them as well, and functions.
std::string cause_part(const PageError& error, const PageError::Cause& cause, const std::string& root,
                       const std::vector<std::string>& pages) {
  const bool is_shown = cause.file == error.file && std::abs(cause.line - error.line) <= kLinesAround;
  if (cause.file.empty() || (is_shown && cause.calls.size() < 2)) return {};
  std::string part =
      fmt::format("<h2>{}: {}</h2>\n<p>{}</p>\n", title_of(cause.kind), shown_as_html(cause.description),
                  shown_as_html(place_text(cause.file, cause.line) + L":" + std::to_wstring(cause.column)));
  if (!is_shown) part += source_excerpt(root + to_utf8(cause.file), cause.line, cause.column, {{}, pages});
  if (cause.calls.size() < 2) return part;
  part += "<ol>\n";
  for (const PageError::Call& call : cause.calls) part += call_item(call);
  return part + "</ol>\n";
}

// The place of a cause, where that is another one than the error's.
std::wstring other_place(const PageError& error, const PageError::Cause& cause) {
  if (cause.file.empty() || (cause.file == error.file && cause.line == error.line)) return {};
  return L" (" + place_text(cause.file, cause.line) + L")";
}

// "; caused by: all [one of them: a; one of them: b (/page.asp:3)]"
std::string causes_line(const PageError& error) {
  std::string line;
  unsigned depth = 0;
  for (const PageError::Cause& cause : error.causes) {
    if (cause.kind == PageError::Cause::opener) continue;
    const bool is_deeper = cause.depth > depth;
    for (; depth < cause.depth; ++depth) line += " [";
    for (; depth > cause.depth; --depth) line += "]";
    if (!is_deeper) line += "; ";
    line += cause.kind == PageError::Cause::part ? "one of them: " : "caused by: ";
    line += to_utf8(cause.description + other_place(error, cause));
  }
  line.append(depth, ']');
  return error.more_causes == 0 ? line : line + fmt::format(" and {} more", error.more_causes);
}

// Who says so and its code, where the words do not end with that.
std::string teller(const PageError& error) {
  std::string text = to_utf8(error.source);
  const std::string code = code_text(error.number);
  if (!to_utf8(error.description).ends_with("(" + code + ")")) text += (text.empty() ? "" : ", ") + code;
  return text.empty() ? text : " (" + text + ")";
}

// Of the innermost template that has a file. One outside of the site is named by its path.
std::string template_lines(const PageError& error, const std::string& root) {
  const auto place = std::ranges::find_if(error.templates, [](const auto& each) { return each.file != kTextTemplate; });
  if (place == error.templates.end()) return {};
  const std::string file = to_utf8(place->file);
  std::string lines = source_excerpt(root + file, place->line, place->column, {place->charset, {}});
  if (lines.empty()) lines = source_excerpt(file, place->line, place->column, {place->charset, {}});
  return lines.empty() ? lines : fmt::format("<h2>{}</h2>\n{}", shown_as_html(place->file), lines);
}

// Marks are the template's author's, and as long as he likes.
std::string templates_line(const PageError& error) {
  constexpr std::size_t kMost = 8;
  const std::size_t count = error.templates.size();
  std::string line;
  for (std::size_t i = 0; i < std::min(count, kMost); ++i) {
    const PageError::Template& place = error.templates[i];
    line += (i == 0 ? "; in " : ", ") + to_utf8(place_text(place) + L" " + place.mark);
  }
  const std::size_t more = count - std::min(count, kMost) + error.more_templates;
  return more == 0 ? line : line + fmt::format(" and {} more", more);
}

}  // namespace

std::string debug_error_page(const PageError& error, const std::string& root, std::string_view page_path,
                             std::string_view target, std::string_view foot) {
  const std::vector<std::string> pages = pages_of(error, root, page_path);
  std::string body = fmt::format("<h1>{}</h1>\n<dl>", shown_as_html(error.description));
  const auto row = [&body](std::string_view name, const std::string& value) {
    if (!value.empty()) body += fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, value);
  };
  for (const PageError::Cause& cause : error.causes) {
    if (cause.kind == PageError::Cause::opener) continue;
    const std::string text = shown_as_html(cause.description + other_place(error, cause));
    row(cause.kind == PageError::Cause::part ? "Part" : "Cause", indented(text, cause.depth));
  }
  if (error.more_causes > 0) row("Causes", fmt::format("and {} more", error.more_causes));
  row("Source", shown_as_html(error.source));
  row("Code", code_text(error.number));
  row("Request", shown_as_html(to_wide(target)));
  if (!error.templates.empty()) {
    row("Template", shown_as_html(place_text(error.templates.front())));
    row("Mark", "<code>" + shown_as_html(error.templates.front().mark) + "</code>");
  }
  row("File", shown_as_html(error.file));
  if (error.line > 0) row("Line", std::to_string(error.line));
  if (error.line > 0 && error.column > 0) row("Column", std::to_string(error.column));
  body += "</dl>\n";
  const std::string drawn = template_lines(error, root);
  body += drawn;
  if (!error.file.empty() && error.line > 0) {
    if (!drawn.empty()) body += fmt::format("<h2>{}</h2>\n", shown_as_html(error.file));
    body += source_excerpt(root + to_utf8(error.file), error.line, error.column, {{}, pages});
  }
  body += call_list(error);
  for (const PageError::Cause& cause : error.causes) body += cause_part(error, cause, root, pages);
  body += foot;
  return page("Error in a page", body);
}

std::string plain_error_page(std::string_view status, std::string_view reference) {
  std::string body = fmt::format("<h1>{}</h1><p>The page could not be made.</p>", status);
  if (!reference.empty()) body += fmt::format("<p>Reference: {}</p>", reference);
  return page(status, body);
}

// The numbers of one process follow each other; where they begin differs.
std::string new_reference() {
  static std::atomic<std::uint32_t> next{std::random_device()()};
  return fmt::format("{:08x}", next++);
}

std::string error_line(const PageError& error, std::string_view page) {
  const std::string file = to_utf8(error.file);
  std::string line = to_utf8(place_text(error.file, error.line)) + ": " + to_utf8(error.description);
  line += causes_line(error) + templates_line(error);
  if (file != page) line += "; in the page " + std::string(page);
  line += teller(error);
  if (!error.reference.empty()) line += " [" + error.reference + "]";
  return line;
}

std::string reference_comment(std::string_view reference) {
  return fmt::format("\n<!-- The page ends here because of an error. Reference: {} -->\n", reference);
}

}  // namespace zelto
