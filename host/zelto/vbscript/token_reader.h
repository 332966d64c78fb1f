// Goes through tokens, and says what is missing.
#pragma once

#include <vector>

#include "vbscript/compile_error.h"
#include "vbscript/tree.h"

namespace zelto::vbscript {

class TokenReader {
 public:
  explicit TokenReader(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  const Token& token(std::size_t ahead = 0) const {
    return tokens_[at_ + ahead < tokens_.size() ? at_ + ahead : tokens_.size() - 1];
  }
  Place place() const { return {token().line, token().column}; }
  const Token& take() {
    const Token& taken = token();
    if (at_ + 1 < tokens_.size()) ++at_;
    return taken;
  }
  template <class What>
  bool accept(const What& what) {
    if (!token().is(what)) return false;
    take();
    return true;
  }
  template <class What>
  void expect(const What& what, Fault otherwise) {
    if (!accept(what)) fail(otherwise);
  }

  [[noreturn]] void fail(Fault fault) const { fail(fault, place()); }
  [[noreturn]] static void fail(Fault fault, Place at) { throw CompileError{fault, at.line, at.column}; }

  // Of a thing that is declared, or a member: where `is_member`, it may be a reserved word.
  std::wstring take_identifier() {
    if (token().kind != Token::name || is_reserved(token().word)) fail(Fault::expected_identifier);
    return take().text;
  }

  // Where an expression should begin: nothing does, or something that cannot.
  [[noreturn]] void fail_at_expression() const {
    const bool is_end = ends_statement() || token().kind == Token::html || token().kind == Token::out_end;
    fail(is_end ? Fault::expected_expression : Fault::syntax);
  }

  bool ends_statement() const {
    return token().kind == Token::line_end || token().kind == Token::end || token().is(L":");
  }
  // What a page puts between pieces of script ends a statement as well; an Else ends those in front of it in a line.
  void end_statement() {
    if (token().kind == Token::line_end || token().is(L":")) {
      take();
      return;
    }
    if (token().kind != Token::end) fail(Fault::expected_end_of_statement);
  }
  // Where a statement should begin, or the word should stand that ends the block. A loop's end that stands there tells
  // more: mostly that an End If is missing in front of it.
  [[noreturn]] void fail_at_statement(Fault otherwise) const {
    if (token().is(Word::loop)) fail(Fault::loop_without_do);
    fail(token().is(Word::next) ? Fault::unexpected_next : otherwise);
  }
  void expect_end(Word what, Fault otherwise) {
    if (!accept(what)) fail_at_statement(otherwise);
  }
  // A procedure or class may not stand in a block.
  void refuse_declaration() const {
    const bool is_declaration = token().is(Word::sub) || token().is(Word::function) || token().is(Word::class_) ||
                                token().is(Word::public_) || token().is(Word::private_) || token().is(Word::option);
    if (is_declaration) fail(Fault::syntax);
  }
  void skip_empty() {
    while (token().kind == Token::line_end || token().is(L":")) take();
  }
  // Also the blanks between two pieces of a page's script, where no text can be written.
  void skip_blank_html() {
    skip_empty();
    while (token().kind == Token::html && token().text.empty()) {
      take();
      skip_empty();
    }
  }

  // Keeps what is parsed of a hostile text within the stack of whoever goes through the tree.
  class Level {
   public:
    explicit Level(TokenReader& reader) : reader_(reader) {
      if (++reader_.levels_ > kMost) reader_.fail(Fault::out_of_memory);
    }
    ~Level() { --reader_.levels_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

   private:
    static constexpr unsigned kMost = 400;
    TokenReader& reader_;
  };

 private:
  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  unsigned levels_ = 0;
};

}  // namespace zelto::vbscript
