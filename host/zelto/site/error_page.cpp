#include "site/error_page.h"

#include <fmt/format.h>
#include <korlib/activation.h>
#include <korlib/adostream.h>
#include <korlib/combstr.h>
#include <korlib/comvariant.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>

#include <mirt/template_places.h>

#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

using mirt::kTextTemplate;

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
std::string caret_line(std::wstring_view line, LONG column) {
  if (column < 1 || static_cast<std::size_t>(column) > line.size() + 1) return {};
  std::string blank(kNumberWidth, ' ');
  for (const wchar_t c : line.substr(0, static_cast<std::size_t>(column) - 1)) blank += c == L'\t' ? '\t' : ' ';
  return "<span class=\"caret\">" + blank + "^</span>";
}

// As the component reads it; nothing when that fails.
std::wstring text_in_charset(const std::string& physical, std::wstring_view charset) {
  CComPtr<IKorLibStream> stream;
  CComBSTR text;
  const bool is_read = SUCCEEDED(CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER,
                                                  korlib::iid_of<IKorLibStream>, stream.put_void())) &&
                       SUCCEEDED(stream->Open(korlib::omitted(), 0, -1, nullptr, nullptr)) &&
                       SUCCEEDED(stream->put_Charset(CComBSTR(charset))) &&
                       SUCCEEDED(stream->LoadFromFile(CComBSTR(std::wstring_view(to_wide(physical))))) &&
                       SUCCEEDED(stream->ReadText(adReadAll, text.put()));
  SetErrorInfo(0, nullptr);
  return is_read ? std::wstring(text.view()) : std::wstring();
}

std::wstring text_of_file(const std::string& physical, std::wstring_view charset) {
  if (std::wstring text = charset.empty() ? L"" : text_in_charset(physical, charset); !text.empty()) return text;
  std::ifstream file(physical, std::ios::binary);
  return to_wide(std::string(std::istreambuf_iterator<char>(file), {}));
}

std::string source_lines(const std::string& physical, LONG wanted, LONG column, std::wstring_view charset = {}) {
  const std::wstring text = text_of_file(physical, charset);
  std::wstring_view rest = text;
  std::string lines;
  for (LONG number = 1; number <= wanted + kLinesAround && !rest.empty(); ++number) {
    const std::size_t end = std::min(rest.find(L'\n'), rest.size());
    std::wstring_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (number < wanted - kLinesAround) continue;
    if (line.ends_with(L'\r')) line.remove_suffix(1);
    const std::string row = fmt::format("{:5}  {}", number, html(line));
    lines += number == wanted ? "<span class=\"here\">" + row + "</span>" + caret_line(line, column) : row + "\n";
  }
  return lines.empty() ? lines : "<pre>" + lines + "</pre>";
}

// "guestbook.asp:12"
std::wstring place_text(std::wstring_view file, LONG line) {
  return std::wstring(file) + (line > 0 ? L":" + std::to_wstring(line) : L"");
}

std::wstring place_text(const PageError::Template& place) {
  return place_text(place.file, place.line) + L":" + std::to_wstring(place.column);
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
      list += fmt::format("<li><code>{}</code>, {}</li>\n", html(next->mark), html(place_text(*next)));
    if (is_last) break;
    const PageError::Call& call = error.calls[inside];
    const std::string name = call.function.empty() ? "the page" : html(call.function) + "()";
    list += fmt::format("<li>{}, {}</li>\n", name, html(place_text(call.file, call.line)));
  }
  const std::string_view title = templates.empty() ? "Calls" : "Marks and calls";
  return fmt::format("<h2>{}, the last one first</h2>\n<ol>\n{}</ol>\n{}", title, list, not_listed(error));
}

// Of the innermost template that has a file. One outside of the site is named by its path.
std::string template_lines(const PageError& error, const std::string& root) {
  const auto place = std::ranges::find_if(error.templates, [](const auto& each) { return each.file != kTextTemplate; });
  if (place == error.templates.end()) return {};
  const std::string file = to_utf8(place->file);
  std::string lines = source_lines(root + file, place->line, place->column, place->charset);
  if (lines.empty()) lines = source_lines(file, place->line, place->column, place->charset);
  return lines.empty() ? lines : fmt::format("<h2>{}</h2>\n{}", html(place->file), lines);
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

std::string debug_error_page(const PageError& error, const std::string& root, std::string_view target,
                             std::string_view foot) {
  std::string body = fmt::format("<h1>{}</h1>\n<dl>", html(error.description));
  const auto row = [&body](std::string_view name, const std::string& value) {
    if (!value.empty()) body += fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, value);
  };
  for (const std::wstring& cause : error.causes) row("Cause", html(cause));
  row("Source", html(error.source));
  row("Code", code_text(error.number));
  row("Request", html(to_wide(target)));
  if (!error.templates.empty()) {
    row("Template", html(place_text(error.templates.front())));
    row("Mark", "<code>" + html(error.templates.front().mark) + "</code>");
  }
  row("File", html(error.file));
  if (error.line > 0) row("Line", std::to_string(error.line));
  if (error.line > 0 && error.column > 0) row("Column", std::to_string(error.column));
  body += "</dl>\n";
  const std::string drawn = template_lines(error, root);
  body += drawn;
  if (!error.file.empty() && error.line > 0) {
    if (!drawn.empty()) body += fmt::format("<h2>{}</h2>\n", html(error.file));
    body += source_lines(root + to_utf8(error.file), error.line, error.column);
  }
  body += call_list(error);
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

std::string error_line(const PageError& error) {
  const std::string where = to_utf8(place_text(error.file, error.line));
  std::string words = to_utf8(error.description);
  for (const std::wstring& cause : error.causes) words += "; caused by: " + to_utf8(cause);
  words += templates_line(error);
  std::string line = fmt::format("{}: {} ({}, {})", where, words, to_utf8(error.source), code_text(error.number));
  if (!error.reference.empty()) line += " [" + error.reference + "]";
  return line;
}

}  // namespace zelto
