#include "site/error_page.h"

#include <fmt/format.h>

#include <cstdint>
#include <fstream>

#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

constexpr LONG kLinesAround = 5;

constexpr std::string_view kStyle =
    "body{font:16px/1.5 system-ui,sans-serif;margin:2rem auto;max-width:60rem;padding:0 1rem;color:#222}"
    "h1{font-size:1.4rem;color:#a11}dt{color:#666;float:left;width:6rem}dd{margin-left:6rem}"
    "pre{background:#f6f6f4;padding:1rem;overflow:auto}.here{background:#ffe1dc;display:block}";

std::string html(std::wstring_view text) { return to_utf8(html_encode(text, kUtf8CodePage)); }

std::string code_text(HRESULT number) { return fmt::format("0x{:08X}", static_cast<std::uint32_t>(number)); }

std::string page(std::string_view title, std::string_view body) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>{}</title><style>{}</style></head>\n"
      "<body>{}</body></html>\n",
      title, kStyle, body);
}

std::string source_lines(const std::string& physical, LONG wanted) {
  std::ifstream file(physical, std::ios::binary);
  std::string lines;
  std::string line;
  for (LONG number = 1; number <= wanted + kLinesAround && std::getline(file, line); ++number) {
    if (number < wanted - kLinesAround) continue;
    if (line.ends_with('\r')) line.pop_back();
    const std::string row = fmt::format("{:5}  {}", number, html(to_wide(line)));
    lines += number == wanted ? "<span class=\"here\">" + row + "</span>" : row + "\n";
  }
  return lines.empty() ? lines : "<pre>" + lines + "</pre>";
}

}  // namespace

std::string debug_error_page(const PageError& error, const std::string& physical) {
  std::string body = fmt::format("<h1>{}</h1>\n<dl>", html(error.description));
  const auto row = [&body](std::string_view name, const std::string& value) {
    if (!value.empty()) body += fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, value);
  };
  row("Source", html(error.source));
  row("Code", code_text(error.number));
  row("File", html(error.file));
  if (error.line > 0) row("Line", std::to_string(error.line));
  body += "</dl>\n";
  if (!physical.empty() && error.line > 0) body += source_lines(physical, error.line);
  return page("Error in a page", body);
}

std::string plain_error_page(std::string_view status) {
  return page(status, fmt::format("<h1>{}</h1><p>The page could not be made.</p>", status));
}

std::string error_line(const PageError& error) {
  std::string where = to_utf8(error.file);
  if (error.line > 0) where += ":" + std::to_string(error.line);
  return fmt::format("{}: {} ({}, {})", where, to_utf8(error.description), to_utf8(error.source),
                     code_text(error.number));
}

}  // namespace zelto
