#include "language/tokens.h"

#include <algorithm>
#include <utility>

#include "base/ascii.h"
#include "language/lexemes.h"

namespace zelto::language {
namespace {

// What a bracket was opened for; decides what follows its closing one.
enum class Role {
  group,         // parentheses, square brackets
  control,       // if (…)
  parameters,    // function f(…)
  block,         // statements; a statement follows
  body,          // statements of a function expression or class body; an operator may follow
  arrow_body,    // statements of an arrow function
  object,        // an object literal
  class_block,   // the members of a class declaration
  class_value,   // the members of a class expression
  substitution,  // ${…}
};

struct Bracket {
  std::size_t token;
  Role role;
  wchar_t closer;
  unsigned questions = 0;        // conditional operators whose colon is still to come
  bool case_label = false;       // between `case` and its colon
  bool header_is_value = false;  // a function or class expression's header is being read
  bool in_header = false;        // between `function` or `class` and its body
  bool header_is_class = false;
};

class Tokenizer {
 public:
  explicit Tokenizer(std::wstring_view text) : text_(text) { stack_.push_back({Token::kNone, Role::block, 0}); }

  std::optional<Tokens> run() {
    if (!cut() || stack_.size() > 1) return std::nullopt;
    return Tokens{std::move(tokens_), std::move(markup_comments_)};
  }

  PartialTokens run_partly() {
    PartialTokens partial;
    if (!cut())
      partial.fault = fault();
    else if (stack_.size() > 1)
      partial.fault = {TextFault::bracket, tokens_[top().token].begin};
    partial.all = std::move(tokens_);
    return partial;
  }

 private:
  // False when the text ends inside a word, or closes the wrong bracket.
  bool cut() {
    if (text_.starts_with(L"#!")) at_ = past_line(text_, at_);
    for (;;) {
      if (!skip_blank()) return false;
      if (at_ >= text_.size()) return true;
      if (!one()) return false;
      newline_ = false;
    }
  }

  // Where cutting has ended.
  TextFault fault() {
    const wchar_t c = peek();
    if (c == L'"' || c == L'\'') return {TextFault::string, at_};
    if (c == L'`') return {TextFault::template_literal, at_};
    if (looking_at(L"/*")) return {TextFault::comment, at_};
    if (c == L'/') return {TextFault::regular_expression, at_};
    if (c != L')' && c != L']' && c != L'}') return {TextFault::escape, at_};
    if (stack_.size() == 1) return {TextFault::stray_closer, at_};
    const std::size_t opener = tokens_[top().token].begin;
    if (top().role == Role::substitution && top().closer == c) return {TextFault::template_literal, opener};
    return {TextFault::wrong_closer, at_, opener};
  }

  wchar_t peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : L'\0'; }
  bool looking_at(std::wstring_view what) const { return text_.substr(at_).starts_with(what); }
  Bracket& top() { return stack_.back(); }
  const Token* previous() const { return tokens_.empty() ? nullptr : &tokens_.back(); }
  std::wstring_view word(const Token& token) const { return text_.substr(token.begin, token.end - token.begin); }
  bool previous_is(std::wstring_view what) const { return previous() && word(*previous()) == what; }

  // Blanks, line ends and comments, the two that look like markup included.
  bool skip_blank() {
    while (at_ < text_.size()) {
      if (is_line_end(peek())) {
        newline_ = true;
        ++at_;
      } else if (is_blank(peek())) {
        ++at_;
      } else if (looking_at(L"//") || looking_at(L"<!--") || (looking_at(L"-->") && (newline_ || tokens_.empty()))) {
        if (peek() == L'<') markup_comments_.push_back(at_);
        at_ = past_line(text_, at_);
      } else if (looking_at(L"/*")) {
        const std::size_t close = text_.find(L"*/", at_ + 2);
        if (close == std::wstring_view::npos) return false;
        const std::wstring_view comment = text_.substr(at_, close - at_);
        newline_ = newline_ || std::any_of(comment.begin(), comment.end(), is_line_end);
        at_ = close + 2;
      } else {
        break;
      }
    }
    return true;
  }

  Token& add(Token::Kind kind, std::size_t length) {
    Token token;
    token.kind = kind;
    token.newline_before = newline_;
    token.begin = at_;
    token.end = at_ + length;
    token.depth = static_cast<unsigned>(stack_.size() - 1);
    token.statement_start = starts_statement(kind, text_.substr(at_, length));
    statement_next_ = false;
    after_arrow_body_ = false;
    at_ = token.end;
    tokens_.push_back(token);
    return tokens_.back();
  }

  bool in_statements() {
    const Role role = top().role;
    return role == Role::block || role == Role::body || role == Role::arrow_body;
  }

  bool starts_statement(Token::Kind kind, std::wstring_view text) {
    if (!in_statements()) return false;
    if (statement_next_ || !previous()) return true;
    // An operand on a new line after an operand: the line end was a semicolon.
    const bool operand = (kind == Token::literal && text[0] != L'`') || kind == Token::name ||
                         (kind == Token::keyword && text != L"in" && text != L"instanceof");
    const bool restricted = previous_is(L"return") || previous_is(L"break") || previous_is(L"continue");
    return newline_ && operand && (previous()->ends_operand || restricted);
  }

  bool one() {
    const wchar_t c = peek();
    if (c == L'"' || c == L'\'') return operand(past_string(text_, at_));
    if (c == L'`') return template_part(at_ + 1, false);
    if (base::is_digit(c) || (c == L'.' && base::is_digit(peek(1)))) return operand(past_number(text_, at_));
    if (is_word(c) || c == L'#') return identifier();
    if (c == L'(' || c == L'[' || c == L'{') return open(c);
    if (c == L')' || c == L']' || c == L'}') return close(c);
    if (c == L'/' && !divides()) return operand(past_regular_expression(text_, at_));
    return operator_();
  }

  bool divides() {
    if (!previous() || !previous()->ends_operand) return false;
    if (top().role == Role::control && previous_is(L"of")) return false;
    return !(newline_ && after_arrow_body_);
  }

  // A literal up to `end`.
  bool operand(std::size_t end) {
    if (end == kOpen) return false;
    add(Token::literal, end - at_).ends_operand = true;
    return true;
  }

  // From `from` to the end of the template or to its next substitution.
  bool template_part(std::size_t from, bool continued) {
    const std::size_t end = past_template_part(text_, from);
    if (end == kOpen) return false;
    const bool opens = text_[end - 1] == L'{';
    if (opens && !continued) return open_with(end - at_, Role::substitution, L'}');
    if (!opens && !continued) return operand(end);
    if (!opens) return close_with(end - at_);
    // `}…${`: closes one substitution and opens the next, as one token that stays open.
    at_ = end;
    after_arrow_body_ = false;
    Token comma;
    comma.begin = comma.end = at_;
    comma.depth = static_cast<unsigned>(stack_.size() - 1);
    tokens_.push_back(comma);
    return true;
  }

  bool identifier() {
    const std::size_t end = past_word(text_, at_);
    if (end == kOpen) return false;
    const std::wstring_view text = text_.substr(at_, end - at_);
    const bool member = previous_is(L".") || previous_is(L"?.");
    if (!member && is_operand_word(text)) return operand(end);
    if (!member && is_keyword(text)) return keyword(text);
    const bool label = !member && in_statements() && is_label(end);
    add(Token::name, text.size()).ends_operand = true;
    if (label && tokens_.back().statement_start) statement_label_ = true;
    return true;
  }

  bool is_label(std::size_t i) const {
    while (i < text_.size() && (is_blank(text_[i]) || is_line_end(text_[i]))) ++i;
    return i < text_.size() && text_[i] == L':';
  }

  bool keyword(std::wstring_view text) {
    Token& token = add(Token::keyword, text.size());
    if (text == L"function" || text == L"class") {
      top().in_header = true;
      top().header_is_class = text == L"class";
      top().header_is_value = !token.statement_start && !declared_behind_modifier();
    } else if (text == L"else" || text == L"do" || text == L"try" || text == L"finally") {
      statement_next_ = true;
    } else if (text == L"case" || text == L"default") {
      top().case_label = in_statements();
    }
    return true;
  }

  // `async function f` and `export default class` are declarations as well.
  bool declared_behind_modifier() const {
    if (tokens_.size() < 2) return false;
    const Token& modifier = tokens_[tokens_.size() - 2];
    const std::wstring_view text = word(modifier);
    return (text == L"async" && modifier.statement_start) || text == L"export" || text == L"default";
  }

  bool open(wchar_t c) {
    if (c == L'[') return open_with(1, Role::group, L']');
    if (c == L'(') {
      const Token* before = previous();
      const bool control = before && before->kind == Token::keyword &&
                           (is_control_word(word(*before)) || (word(*before) == L"await" && tokens_.size() > 1 &&
                                                               word(tokens_[tokens_.size() - 2]) == L"for"));
      if (previous_is(L"class")) top().in_header = false;  // a method of that name
      const bool parameters = top().in_header && !top().header_is_class;
      return open_with(1, control ? Role::control : parameters ? Role::parameters : Role::group, L')');
    }
    return open_with(1, brace_role(), L'}');
  }

  Role brace_role() {
    const Token* before = previous();
    if (top().in_header) {
      const bool value = top().header_is_value;
      const bool is_class = top().header_is_class;
      if (is_class && before && before->kind == Token::punctuator) return Role::object;
      top().in_header = false;
      if (is_class) return value ? Role::class_value : Role::class_block;
      return value ? Role::body : Role::block;
    }
    if (!before || statement_next_) return Role::block;
    if (word(*before) == L"=>") return Role::arrow_body;
    if (before->kind == Token::close && word(*before) == L")") return Role::block;
    if (previous_is(L"catch") || previous_is(L"static")) return Role::block;
    if (before->ends_operand && newline_ && in_statements()) return Role::block;
    return Role::object;
  }

  bool open_with(std::size_t length, Role role, wchar_t closer) {
    Token& token = add(Token::open, length);
    token.control = role == Role::control;
    token.function_part = role == Role::parameters || role == Role::body || role == Role::arrow_body;
    stack_.push_back({tokens_.size() - 1, role, closer});
    statement_next_ = in_statements();
    return true;
  }

  bool close(wchar_t c) {
    if (stack_.size() == 1 || top().closer != c) return false;
    return top().role == Role::substitution ? template_part(at_ + 1, true) : close_with(1);
  }

  bool close_with(std::size_t length) {
    const Bracket bracket = top();
    stack_.pop_back();
    Token& token = add(Token::close, length);
    token.statement_start = false;
    token.partner = bracket.token;
    token.control = bracket.role == Role::control;
    token.function_part = tokens_[bracket.token].function_part;
    tokens_[bracket.token].partner = tokens_.size() - 1;
    const bool statements = bracket.role == Role::block || bracket.role == Role::class_block;
    token.ends_operand = !statements && bracket.role != Role::control;
    after_arrow_body_ = bracket.role == Role::arrow_body;
    statement_next_ = (statements || bracket.role == Role::control) && in_statements();
    return true;
  }

  bool operator_() {
    const std::wstring_view text = punctuator_at(text_, at_);
    const bool increment = text == L"++" || text == L"--";
    const bool postfix = increment && previous() && previous()->ends_operand && !newline_;
    const bool prefix = (increment && !postfix) || text == L"!" || text == L"~";
    const bool starts = prefix && newline_ && previous() && previous()->ends_operand && in_statements();
    Token& token = add(Token::punctuator, text.size());
    token.statement_start = token.statement_start || starts;
    token.ends_operand = postfix;
    if (text == L";") {
      statement_next_ = in_statements();
      top().in_header = false;
    } else if (text == L"?") {
      ++top().questions;
    } else if (text == L":") {
      colon();
    } else if (text == L"," || text == L"=") {
      if (!top().header_is_class || text == L",") top().in_header = false;
    }
    return true;
  }

  void colon() {
    top().in_header = false;
    if (top().questions > 0) {
      --top().questions;
    } else if (top().case_label || statement_label_) {
      top().case_label = false;
      statement_label_ = false;
      statement_next_ = true;
    }
  }

  std::wstring_view text_;
  std::vector<Token> tokens_;
  std::vector<std::size_t> markup_comments_;
  std::size_t at_ = 0;
  bool newline_ = false;
  bool statement_next_ = true;
  bool statement_label_ = false;
  bool after_arrow_body_ = false;
  std::vector<Bracket> stack_;
};

}  // namespace

std::optional<Tokens> tokenize(std::wstring_view text) { return Tokenizer(text).run(); }

PartialTokens tokenize_partly(std::wstring_view text) { return Tokenizer(text).run_partly(); }

}  // namespace zelto::language
