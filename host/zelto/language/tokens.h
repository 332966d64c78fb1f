// A script cut into tokens, with as much grammar as rewriting it needs.
//
// The hard questions of the language's surface are answered while the tokens are made, because each
// depends on the one before: whether a slash divides or begins a regular expression, whether a brace
// opens a block or an object, where a statement begins, and where a line end ends one.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace zelto::language {

struct Token {
  enum Kind : unsigned char {
    name,        // identifier that is not a keyword here, also #private and a member name after a dot
    keyword,     // reserved word that is not an operand
    literal,     // number, string, regular expression, template without substitutions, this, null …
    punctuator,  // operators, commas, semicolons
    open,        // ( [ { and the part of a template up to a substitution
    close,       // ) ] } and the part of a template after a substitution
  };
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  Kind kind = punctuator;
  bool newline_before = false;
  bool statement_start = false;  // the first token of a statement
  bool ends_operand = false;     // an operator, a dot or an argument list may follow
  bool control = false;          // the parentheses of if, while, for, with, switch or catch
  bool function_part = false;    // the parameter list or the body of a function or class
  std::size_t begin = 0;         // position in the text
  std::size_t end = 0;
  std::size_t partner = kNone;  // of open and close: the other one
  unsigned depth = 0;           // brackets around it
};

struct Tokens {
  std::vector<Token> all;
  std::vector<std::size_t> markup_comments;  // where "<!--" begins a comment that ends with its line
};

// Tokens beside the text that they were cut from, which both outlive it.
class TokenText {
 public:
  TokenText(std::wstring_view text, const std::vector<Token>& tokens) noexcept : text_(text), tokens_(tokens) {}

  // Empty where there is no such token; Token::kNone is in front of the first.
  std::wstring_view word(std::size_t i) const {
    return i < tokens_.size() ? text_.substr(tokens_[i].begin, tokens_[i].end - tokens_[i].begin) : std::wstring_view();
  }
  const Token& token(std::size_t i) const { return tokens_[i]; }
  // Whether a statement ends in front of token `i`, or with it.
  bool ends_statement(std::size_t i) const {
    return i >= tokens_.size() || tokens_[i].statement_start || is(i, L";", L"}");
  }
  // Whether the token is one of these.
  bool is(std::size_t i, const auto*... words) const { return ((word(i) == words) || ...); }

 protected:
  std::wstring_view text_;
  const std::vector<Token>& tokens_;
};

// Nothing when the text ends inside a string, a comment, a template or a bracket, or closes the wrong
// one: the engine then says what is wrong with it.
std::optional<Tokens> tokenize(std::wstring_view text);

// What keeps a text from being cut into tokens.
struct TextFault {
  enum Kind : unsigned char {
    string,              // not closed in its line
    regular_expression,  // likewise
    template_literal,    // not closed at all
    comment,             // likewise
    bracket,             // likewise
    wrong_closer,        // closes another bracket than the one that is open
    stray_closer,        // closes none
    escape,              // of a name, that does not end
  };
  Kind kind;
  std::size_t at;                     // of strings, comments and the like where they begin
  std::size_t opener = Token::kNone;  // of a wrong closer: where the open bracket stands
};
struct PartialTokens {
  std::vector<Token> all;  // in front of the fault
  std::optional<TextFault> fault;
};
PartialTokens tokenize_partly(std::wstring_view text);

}  // namespace zelto::language
