// Statements, and the blocks that they make up.
#pragma once

#include <string>
#include <vector>

#include "vbscript/expression_parser.h"
#include "vbscript/tree.h"

namespace zelto::vbscript {

class StatementParser {
 public:
  explicit StatementParser(TokenReader& reader) : reader_(reader), expressions_(reader) {}

  // What may be left at a statement: those that enclose it.
  struct Around {
    unsigned dos = 0;
    unsigned fors = 0;
    enum Kind : unsigned char { nothing, sub, function, property } procedure = nothing;
  };

  // The next statement, with the line's end behind it where `is_in_line` is false; null where none begins: at the word
  // that ends a block.
  std::unique_ptr<Statement> parse(bool is_in_line = false);
  // The statements up to a word that cannot begin one.
  Block parse_block();
  // Of a procedure; where it stands must hold no other.
  Block parse_body(Around::Kind kind);

  std::vector<Declared> parse_fields(bool is_private);
  std::vector<Declared> parse_constants(bool is_private);
  ExpressionParser& expressions() { return expressions_; }

 private:
  using Made = std::unique_ptr<Statement>;

  Made make(Statement::Kind kind) const;
  Made parse_simple();
  Made parse_assignment_or_call();
  Made parse_let();
  Made parse_set();
  Made parse_assignment(Made made);
  static void refuse_me(const Expression& target);
  Made parse_call();
  Made parse_redim();
  Made parse_if();
  bool parse_line_branch(Block* block);
  Made parse_select();
  Made parse_for();
  Made parse_for_each(Made loop);
  Made parse_do();
  Made parse_while();
  Made parse_with();
  Made parse_exit();
  Made parse_on_error();
  Made parse_execute(Statement::Kind kind);
  Declared parse_declared();
  void end_block(Made& statement, Word what, Fault fault);
  void end_loop(Made& statement, const std::wstring& variable);
  bool is_execute() const;

  TokenReader& reader_;
  ExpressionParser expressions_;
  Around around_;
};

}  // namespace zelto::vbscript
