#include "vbscript/lexer.h"

#include "base/ascii.h"
#include "vbscript/date_literal.h"
#include "vbscript/number_literal.h"

namespace zelto::vbscript {
namespace {

constexpr std::size_t kLongestName = 255;

constexpr bool is_line_break(wchar_t c) { return c == L'\n' || c == L'\r'; }
constexpr bool is_blank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\v' || c == L'\f' || c == 0xA0; }
// Letters beyond ASCII may begin a name, as they may in the language that it becomes.
constexpr bool begins_name(wchar_t c) {
  return base::is_letter(c) || (c >= 0xC0 && c != 0xD7 && c != 0xF7 && c < 0x2000);
}
constexpr bool is_of_name(wchar_t c) { return begins_name(c) || base::is_digit(c) || c == L'_'; }

class Lexer {
 public:
  Lexer(std::wstring_view text, std::span<const PageMark> marks) : text_(text), marks_(marks) {}

  std::vector<Token> run() {
    take_marks();
    while (at_ < text_.size()) step();
    add(Token::line_end);
    add(Token::end);
    return std::move(tokens_);
  }

 private:
  [[noreturn]] void fail(Fault fault, std::size_t at) const {
    throw CompileError{fault, line_, static_cast<int>(at - line_start_)};
  }
  wchar_t peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : L'\0'; }

  Token& add(Token::Kind kind) {
    Token token;
    token.kind = kind;
    token.line = line_;
    token.column = static_cast<int>(at_ - line_start_);
    token.has_blank_before = at_ == line_start_ || is_blank(text_[at_ - 1]);
    return tokens_.emplace_back(std::move(token));
  }

  void step() {
    const wchar_t c = peek();
    if (is_line_break(c)) return end_line();
    if (is_blank(c)) {
      ++at_;
    } else if (c == L'\'') {
      skip_comment();
    } else if (begins_name(c)) {
      read_name();
    } else if (c == L'[') {
      read_bracketed();
    } else if (c == L'"') {
      read_string();
    } else if (c == L'#') {
      read_date();
    } else if (base::is_digit(c) || (c == L'.' && base::is_digit(peek(1))) || (c == L'&' && begins_radix())) {
      read_number();
    } else if (c == L'_' && continues()) {
      skip_comment();
      next_line();
    } else {
      read_symbol();
    }
  }

  void skip_comment() {
    while (at_ < text_.size() && !is_line_break(text_[at_])) ++at_;
  }

  void next_line() {
    if (at_ >= text_.size()) return;
    at_ += peek() == L'\r' && peek(1) == L'\n' ? 2 : 1;
    ++line_;
    line_start_ = at_;
  }

  // Inside of <%= %> a line's end means nothing.
  void end_line() {
    if (!is_in_out_) add(Token::line_end);
    next_line();
    take_marks();
  }

  void take_marks() {
    for (; next_mark_ < marks_.size() && marks_[next_mark_].line <= line_; ++next_mark_) {
      const PageMark& mark = marks_[next_mark_];
      if (mark.kind == PageMark::out_end) {
        add(Token::out_end);
        is_in_out_ = false;
      }
      add(Token::line_end);
      if (mark.kind == PageMark::html) {
        Token& html = add(Token::html);
        html.value = static_cast<double>(mark.number);
        html.text = mark.is_blank ? L"" : L"text";
      }
      if (mark.kind == PageMark::out) {
        add(Token::out);
        is_in_out_ = true;
      }
    }
  }

  // An underscore behind a blank that ends its line.
  bool continues() const {
    if (at_ > line_start_ && !is_blank(text_[at_ - 1]) && is_of_name(text_[at_ - 1])) return false;
    std::size_t at = at_ + 1;
    while (at < text_.size() && is_blank(text_[at])) ++at;
    return at >= text_.size() || is_line_break(text_[at]);
  }

  bool follows_dot() const {
    return !tokens_.empty() && tokens_.back().is(L".") && tokens_.back().line == line_ &&
           static_cast<std::size_t>(tokens_.back().column) + 1 == at_ - line_start_;
  }

  void read_name() {
    const bool is_member = follows_dot();
    std::size_t end = at_;
    while (end < text_.size() && is_of_name(text_[end])) ++end;
    if (end - at_ > kLongestName) fail(Fault::identifier_too_long, at_);
    const std::wstring_view text = text_.substr(at_, end - at_);
    const Word word = word_of(text);
    if (word == Word::rem && !is_member) return skip_comment();
    Token& token = add(Token::name);
    token.text = text;
    token.word = is_member ? Word::none : word;
    at_ = end;
  }

  void read_bracketed() {
    std::size_t end = at_ + 1;
    while (end < text_.size() && text_[end] != L']' && !is_line_break(text_[end])) ++end;
    if (end >= text_.size() || text_[end] != L']') fail(Fault::expected_bracket, end);
    if (end - at_ - 1 > kLongestName) fail(Fault::identifier_too_long, at_);
    add(Token::name).text = text_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
  }

  void read_string() {
    Token& token = add(Token::string);
    const std::size_t begin = at_++;
    while (true) {
      if (at_ >= text_.size() || is_line_break(text_[at_])) fail(Fault::unterminated_string, begin);
      if (text_[at_] == L'"') {
        if (peek(1) != L'"') break;
        ++at_;
      }
      token.text += text_[at_++];
    }
    ++at_;
  }

  void read_date() {
    std::size_t end = at_ + 1;
    while (end < text_.size() && text_[end] != L'#' && !is_line_break(text_[end])) ++end;
    if (end >= text_.size() || text_[end] != L'#') fail(Fault::syntax, at_);
    const auto date = read_date_literal(text_.substr(at_ + 1, end - at_ - 1));
    if (!date) fail(Fault::syntax, at_);
    add(Token::date).value = *date;
    at_ = end + 1;
  }

  bool follows_operand() const {
    if (tokens_.empty()) return false;
    const Token& last = tokens_.back();
    if (last.kind == Token::name) return !is_reserved(last.word) || last.word == Word::me;
    return last.kind == Token::number || last.kind == Token::string || last.kind == Token::date || last.is(L")");
  }

  // &H…, &O… and &7. Behind an operand & joins, but for a call's first argument: f &HFF
  bool begins_radix() const {
    const wchar_t next = base::ascii_lower(peek(1));
    const unsigned bits = next == L'h' ? 4 : 3;
    std::size_t at = at_ + (next == L'h' || next == L'o' ? 2 : 1);
    const std::size_t first = at;
    while (at < text_.size() && base::hex_value(text_[at]) >= 0 && base::hex_value(text_[at]) < 1 << bits) ++at;
    if (at == first) return false;
    if (!follows_operand()) return true;
    const bool is_whole = at >= text_.size() || !is_of_name(text_[at]);
    return tokens_.back().kind == Token::name && is_blank(text_[at_ - 1]) && (next == L'h' || next == L'o') && is_whole;
  }

  void read_number() {
    const NumberLiteral number = read_number_literal(text_.substr(at_));
    if (number.length == 0) fail(Fault::invalid_number, at_);
    const std::size_t end = at_ + number.length;
    if (end < text_.size() && begins_name(text_[end]) && begins_word_in_number(end)) fail(Fault::invalid_number, at_);
    Token& token = add(Token::number);
    token.value = number.value;
    token.number_kind = number.kind;
    at_ = end;
  }
  // 12abc; but 1To or 1Step, which old pages have, are two words.
  bool begins_word_in_number(std::size_t at) const {
    std::size_t end = at;
    while (end < text_.size() && is_of_name(text_[end])) ++end;
    return word_of(text_.substr(at, end - at)) == Word::none;
  }

  void read_symbol() {
    const wchar_t c = peek();
    std::size_t length = 1;
    if (c == L'<' && (peek(1) == L'>' || peek(1) == L'=')) length = 2;
    if (c == L'>' && peek(1) == L'=') length = 2;
    // The older spellings of these.
    if ((c == L'=' && (peek(1) == L'<' || peek(1) == L'>'))) length = 2;
    if (std::wstring_view(L"()+-*/\\^&=<>,.:").find(c) == std::wstring_view::npos) fail(Fault::invalid_character, at_);
    Token& token = add(Token::symbol);
    token.text = text_.substr(at_, length);
    if (token.text == L"=<") token.text = L"<=";
    if (token.text == L"=>") token.text = L">=";
    at_ += length;
  }

  std::wstring_view text_;
  std::span<const PageMark> marks_;
  std::size_t next_mark_ = 0;
  std::size_t at_ = 0;
  std::size_t line_start_ = 0;
  int line_ = 1;
  bool is_in_out_ = false;
  std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> tokenize(std::wstring_view text, std::span<const PageMark> marks) {
  return Lexer(text, marks).run();
}

}  // namespace zelto::vbscript
