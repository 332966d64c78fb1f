#include "pages/page_scanner.h"

#include "base/letter_case.h"

namespace zelto::pages {

namespace {

class Scanner {
 public:
  explicit Scanner(std::wstring_view text) : text_(text), tags_(text) {}

  std::vector<Piece> scan() {
    while (at_ < text_.size()) {
      const std::size_t open = text_.find(L'<', at_);
      if (open == std::wstring_view::npos) break;
      at_ = open;
      if (!script_block() && !include() && !server_tag()) ++at_;
    }
    at_ = text_.size();
    flush(at_);
    return std::move(pieces_);
  }

 private:
  // <% … %>: up to the first "%>", wherever it stands.
  bool script_block() {
    if (!follows(L"<%")) return false;
    const std::size_t open = at_;
    flush(open);
    std::size_t inside = open + 2;
    Piece::Kind kind = Piece::code;
    // No script begins with "@", so a directive may stand after blanks.
    const std::size_t first = skip_blanks(text_, inside);
    if (first < text_.size() && text_[first] == L'@') {
      kind = Piece::directive;
      inside = first + 1;
    } else if (inside < text_.size() && text_[inside] == L'=') {
      kind = Piece::expression;
      ++inside;
    }
    const std::size_t close = text_.find(L"%>", inside);
    if (close == std::wstring_view::npos) throw ScanFault{"This \"<%\" is not closed with \"%>\".", open};
    add(kind, inside, close);
    resume(close + 2);
    return true;
  }

  bool include() {
    if (!follows(L"<!--")) return false;
    const std::size_t open = at_;
    std::size_t at = skip_blanks(text_, open + 4);
    if (!has_word(text_, at, L"#include")) return false;
    at = skip_blanks(text_, at + 8);
    const bool is_virtual = has_word(text_, at, L"virtual");
    if (!is_virtual && !has_word(text_, at, L"file")) {
      throw ScanFault{"An include names its file as file=\"…\" or virtual=\"…\".", open};
    }
    at = skip_blanks(text_, at + (is_virtual ? 7 : 4));
    const std::optional<AttributeValue> value = read_attribute_value(text_, at);
    const std::size_t close = text_.find(L"-->", value ? value->end : at);
    if (!value || value->text.empty() || close == std::wstring_view::npos) {
      throw ScanFault{"An include is written <!-- #include file=\"…\" -->.", open};
    }
    flush(open);
    pieces_.push_back({Piece::include, value->text, offset_of(value->text), is_virtual});
    resume(close + 3);
    return true;
  }

  // <script runat="server"> … </script>; other tags, and scripts for the browser, are text.
  bool server_tag() {
    const bool is_script = has_word(text_, at_ + 1, L"script");
    if (!is_script && !has_word(text_, at_ + 1, L"object")) return false;
    const std::size_t open = at_;
    const std::optional<TagAttributes> tag = tags_.read(open + 7);
    if (!tag) return false;
    if (!is_script) {
      throw ScanFault{"<object runat=\"server\"> is not known here: use Server.CreateObject.", open};
    }
    std::optional<Language> language;
    if (tag->has(L"language")) language = language_of(tag->value_of(L"language"));
    if (tag->has(L"language") && !language) {
      throw ScanFault{"This host runs pages in JavaScript and VBScript: <script language=\"" +
                          ascii(tag->value_of(L"language")) + "\"> cannot be run.",
                      open};
    }
    const std::size_t close = find_closing_tag(tag->end, L"script");
    if (close == std::wstring_view::npos) throw ScanFault{"This <script runat=\"server\"> is not closed.", open};
    flush(open);
    if (tag->has(L"src")) {
      add_script_file(tag->value_of(L"src"), text_.substr(tag->end, close - tag->end), open);
    } else {
      add(Piece::code, tag->end, close);
    }
    pieces_.back().language = language;
    const std::size_t end = text_.find(L'>', close);
    resume(end == std::wstring_view::npos ? text_.size() : end + 1);
    return true;
  }

  // Browsers ignore what such an element holds; here its author would miss it.
  void add_script_file(std::wstring_view path, std::wstring_view inside, std::size_t open) {
    if (path.empty()) throw ScanFault{"<script runat=\"server\"> names no file in its src.", open};
    if (skip_blanks(inside, 0) < inside.size()) {
      throw ScanFault{"A <script runat=\"server\"> with a src holds no script of its own: use a second one.", open};
    }
    const bool is_virtual = path.front() == L'/' || path.front() == L'\\';
    pieces_.push_back({Piece::script, path, offset_of(path), is_virtual});
  }

  std::size_t find_closing_tag(std::size_t from, std::wstring_view name) const {
    for (std::size_t at = text_.find(L"</", from); at != std::wstring_view::npos; at = text_.find(L"</", at + 2)) {
      if (has_word(text_, at + 2, name)) return at;
    }
    return std::wstring_view::npos;
  }

  bool follows(std::wstring_view what) const { return text_.substr(at_).starts_with(what); }
  std::size_t offset_of(std::wstring_view part) const { return static_cast<std::size_t>(part.data() - text_.data()); }

  void flush(std::size_t end) {
    if (end > literal_) add(Piece::literal, literal_, end);
    literal_ = end;
  }
  void add(Piece::Kind kind, std::size_t begin, std::size_t end) {
    pieces_.push_back({kind, text_.substr(begin, end - begin), begin, false});
  }
  void resume(std::size_t at) { at_ = literal_ = at; }

  std::wstring_view text_;
  ServerTags tags_;
  std::size_t at_ = 0;
  std::size_t literal_ = 0;  // where the literal text that is being read began
  std::vector<Piece> pieces_;
};

}  // namespace

std::vector<Piece> scan_page(std::wstring_view text) { return Scanner(text).scan(); }

void LineCounter::move_to(std::size_t offset) {
  for (; at_ < offset && at_ < text_.size(); ++at_) {
    const bool is_return = text_[at_] == L'\r' && !text_.substr(at_ + 1).starts_with(L'\n');
    if (text_[at_] != L'\n' && !is_return) continue;
    ++line_;
    line_start_ = at_ + 1;
  }
}

}  // namespace zelto::pages
