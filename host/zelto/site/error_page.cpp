#include "site/error_page.h"

#include <fmt/format.h>

#include <atomic>
#include <cstdint>
#include <fstream>
#include <random>

#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

constexpr LONG kLinesAround = 5;
constexpr std::size_t kNumberWidth = 7;  // of a line's number and the blanks after it

constexpr std::string_view kStyle =
    "body{font:16px/1.5 system-ui,sans-serif;margin:2rem auto;max-width:60rem;padding:0 1rem;color:#222}"
    "h1{font-size:1.4rem;color:#a11}dt{color:#666;float:left;width:6rem}dd{margin-left:6rem}"
    "pre{background:#f6f6f4;padding:1rem;overflow:auto}.here,.caret{background:#ffe1dc;display:block}h2{font-size:1."
    "1rem}";

std::string html(std::wstring_view text) { return to_utf8(html_encode(text, kUtf8CodePage)); }

std::string code_text(HRESULT number) { return fmt::format("0x{:08X}", static_cast<std::uint32_t>(number)); }

std::string page(std::string_view title, std::string_view body) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>{}</title><style>{}</style></head>\n"
      "<body>{}</body></html>\n",
      title, kStyle, body);
}

// A line under the wanted one that shows the column, a tab standing under a tab.
std::string caret_line(std::string_view line, LONG column) {
  const std::wstring text = to_wide(line);
  if (column < 1 || static_cast<std::size_t>(column) > text.size() + 1) return {};
  std::string blank(kNumberWidth, ' ');
  for (const wchar_t c : text.substr(0, static_cast<std::size_t>(column) - 1)) blank += c == L'\t' ? '\t' : ' ';
  return "<span class=\"caret\">" + blank + "^</span>";
}

std::string source_lines(const std::string& physical, LONG wanted, LONG column) {
  std::ifstream file(physical, std::ios::binary);
  std::string lines;
  std::string line;
  for (LONG number = 1; number <= wanted + kLinesAround && std::getline(file, line); ++number) {
    if (number < wanted - kLinesAround) continue;
    if (line.ends_with('\r')) line.pop_back();
    const std::string row = fmt::format("{:5}  {}", number, html(to_wide(line)));
    lines += number == wanted ? "<span class=\"here\">" + row + "</span>" + caret_line(line, column) : row + "\n";
  }
  return lines.empty() ? lines : "<pre>" + lines + "</pre>";
}

// "guestbook.asp:12"
std::wstring place_text(std::wstring_view file, LONG line) {
  return std::wstring(file) + (line > 0 ? L":" + std::to_wstring(line) : L"");
}

// One call alone is the place of the error itself.
std::string call_list(const std::vector<PageError::Call>& calls) {
  if (calls.size() < 2) return {};
  std::string list;
  for (const PageError::Call& call : calls) {
    const std::string name = call.function.empty() ? "the page" : html(call.function) + "()";
    list += fmt::format("<li>{}, {}</li>\n", name, html(place_text(call.file, call.line)));
  }
  return "<h2>Calls, the last one first</h2>\n<ol>\n" + list + "</ol>\n";
}

}  // namespace

std::string debug_error_page(const PageError& error, const std::string& physical, std::string_view target) {
  std::string body = fmt::format("<h1>{}</h1>\n<dl>", html(error.description));
  const auto row = [&body](std::string_view name, const std::string& value) {
    if (!value.empty()) body += fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, value);
  };
  for (const std::wstring& cause : error.causes) row("Cause", html(cause));
  row("Source", html(error.source));
  row("Code", code_text(error.number));
  row("Request", html(to_wide(target)));
  row("File", html(error.file));
  if (error.line > 0) row("Line", std::to_string(error.line));
  if (error.line > 0 && error.column > 0) row("Column", std::to_string(error.column));
  body += "</dl>\n";
  if (!physical.empty() && error.line > 0) body += source_lines(physical, error.line, error.column);
  body += call_list(error.calls);
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

std::string error_line(const PageError& error) {
  const std::string where = to_utf8(place_text(error.file, error.line));
  std::string words = to_utf8(error.description);
  for (const std::wstring& cause : error.causes) words += "; caused by: " + to_utf8(cause);
  std::string line = fmt::format("{}: {} ({}, {})", where, words, to_utf8(error.source), code_text(error.number));
  if (!error.reference.empty()) line += " [" + error.reference + "]";
  return line;
}

}  // namespace zelto
