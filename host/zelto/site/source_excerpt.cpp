#include "site/source_excerpt.h"

#include <fmt/format.h>
#include <korlib/activation.h>
#include <korlib/adostream.h>
#include <korlib/combstr.h>
#include <korlib/comvariant.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

#include <algorithm>
#include <string_view>

#include "pages/directive.h"
#include "pages/source_file.h"
#include "text/cell_width.h"
#include "text/characters.h"
#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

constexpr LONG kLinesAround = 5;
constexpr std::size_t kNumberWidth = 7;  // of a line's number and the blanks after it
constexpr std::size_t kLongest = 240;    // characters of a line
constexpr std::size_t kBefore = 120;     // of them, in front of the column
constexpr std::wstring_view kCut = L"…";
constexpr wchar_t kReplacement = 0xFFFD;  // what decoding puts in place of bytes that are no character

// Takes a line from the text, which ends as files of any system have it.
std::wstring_view take_line(std::wstring_view& text) {
  const std::size_t end = std::min(text.find_first_of(L"\r\n"), text.size());
  const std::wstring_view line = text.substr(0, end);
  text.remove_prefix(end);
  text.remove_prefix(text.starts_with(L"\r\n") ? 2 : std::min<std::size_t>(text.size(), 1));
  return line;
}

// What is shown of a line.
struct Part {
  std::wstring text;
  std::size_t column = 0;  // in it, from 1; 0 for none
};

Part part_of(std::wstring_view line, LONG column) {
  const auto at = static_cast<std::size_t>(std::max<LONG>(column, 0));
  Part part{std::wstring(line), at <= line.size() + 1 ? at : 0};
  if (line.size() <= kLongest) return part;
  const std::size_t begin = part.column > kBefore ? part.column - kBefore : 0;
  part.text = (begin > 0 ? kCut : L"");
  part.text += line.substr(begin, kLongest);
  if (begin + kLongest < line.size()) part.text += kCut;
  if (part.column > 0 && begin > 0) part.column -= begin - kCut.size();
  return part;
}

// The same with escapes for what turns the direction of writing.
Part with_escapes(const Part& part) {
  Part shown{{}, part.column};
  for (std::size_t i = 0; i < part.text.size(); ++i) {
    const wchar_t c = part.text[i];
    const std::string escape(direction_escape(to_utf8({&c, 1})));
    shown.text += escape.empty() ? std::wstring(1, c) : to_wide(escape);
    if (!escape.empty() && i + 1 < part.column) shown.column += escape.size() - 1;
  }
  return shown;
}

// A line under the wanted one: a tab stands under a tab, and what is twice as wide under what is.
std::string caret_line(const Part& part) {
  if (part.column == 0) return {};
  std::wstring blank(kNumberWidth, L' ');
  for (const wchar_t c : part.text.substr(0, part.column - 1)) {
    const int width = cell_width(c);
    if (c == L'\t' || width == 1)
      blank += c == L'\t' ? L'\t' : L' ';
    else if (width == 2)
      blank += L'\u3000';
  }
  return "<span class=\"caret\">" + to_utf8(blank) + "^</span>";
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

// Which page has included a file is not known: a file that is UTF-8 is read as such.
LONG code_page_of(const std::string& bytes, const std::vector<std::string>& pages) {
  if (const auto own = pages::written_code_page(bytes)) return *own;
  if (to_wide(bytes).find(kReplacement) == std::wstring::npos) return kUtf8CodePage;
  for (const std::string& page : pages) {
    const auto source = pages::read_source(page);
    if (const auto code_page = source ? pages::written_code_page(source->bytes) : std::nullopt) return *code_page;
  }
  return kUtf8CodePage;
}

std::wstring text_of_file(const std::string& physical, const SourceReading& reading) {
  const std::wstring_view charset = reading.charset;
  if (std::wstring text = charset.empty() ? L"" : text_in_charset(physical, charset); !text.empty()) return text;
  const auto source = pages::read_source(physical);
  if (!source) return {};
  return pages::decode_source(source->bytes, code_page_of(source->bytes, reading.pages));
}

}  // namespace

std::string source_excerpt(const std::string& physical, LONG line, LONG column, const SourceReading& reading) {
  if (line < 1) return {};
  const std::wstring decoded = text_of_file(physical, reading);
  std::wstring_view text = decoded;
  std::string lines;
  for (LONG number = 1; number <= line + kLinesAround && !text.empty(); ++number) {
    const std::wstring_view each = take_line(text);
    if (number < line - kLinesAround) continue;
    const Part part = with_escapes(part_of(each, number == line ? column : 0));
    const std::string row = fmt::format("{:5}  {}", number, shown_as_html(part.text));
    lines += number == line ? "<span class=\"here\">" + row + "</span>" + caret_line(part) : row + "\n";
  }
  return lines.empty() ? lines : "<pre>" + lines + "</pre>";
}

}  // namespace zelto
