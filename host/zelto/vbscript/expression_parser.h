// Expressions, by their precedences.
#pragma once

#include "vbscript/token_reader.h"

namespace zelto::vbscript {

class ExpressionParser {
 public:
  explicit ExpressionParser(TokenReader& reader) : reader_(reader) {}

  ExpressionPtr parse();
  // A name with its members and what stands in parentheses behind them. Where a statement begins with it, the first
  // argument of a call without parentheses, `f (1), 2`, is left.
  ExpressionPtr parse_target(bool is_statement);
  // What is assigned to, counted or called: a target that a name begins, or a With's dot.
  ExpressionPtr parse_named();
  // A list of arguments up to the statement's end.
  std::vector<ExpressionPtr> parse_open_arguments();
  // -1, "text", #1/1/2000#, True …
  ExpressionPtr parse_constant();

 private:
  ExpressionPtr parse_level(std::size_t level);
  ExpressionPtr parse_unary();
  ExpressionPtr parse_power();
  ExpressionPtr parse_primary();
  ExpressionPtr parse_literal();
  ExpressionPtr parse_chain(ExpressionPtr start, bool is_statement);
  ExpressionPtr parse_member(ExpressionPtr object);
  ExpressionPtr parse_call(ExpressionPtr callee);
  bool begins_open_arguments() const;
  ExpressionPtr make(Expression::Kind kind) const;
  ExpressionPtr make_operation(Operator op, ExpressionPtr left, ExpressionPtr right, Place at) const;

  TokenReader& reader_;
};

}  // namespace zelto::vbscript
