#include "vbscript/statement_parser.h"

#include <utility>

#include "base/letter_case.h"

namespace zelto::vbscript {

StatementParser::Made StatementParser::make(Statement::Kind kind) const {
  auto made = std::make_unique<Statement>();
  made->kind = kind;
  made->place = reader_.place();
  return made;
}

Block StatementParser::parse_block() {
  const TokenReader::Level one(reader_);
  Block block;
  while (true) {
    reader_.skip_empty();
    auto statement = parse();
    if (!statement) {
      reader_.refuse_declaration();
      return block;
    }
    block.push_back(std::move(statement));
  }
}

Block StatementParser::parse_body(Around::Kind kind) {
  const Around outer = std::exchange(around_, Around{.procedure = kind});
  Block block = parse_block();
  around_ = outer;
  return block;
}

std::unique_ptr<Statement> StatementParser::parse(bool is_in_line) {
  const Token& token = reader_.token();
  if (token.kind == Token::html) {
    Made made = make(Statement::html);
    made->number = static_cast<std::size_t>(reader_.take().value);
    return made;
  }
  if (token.kind == Token::out) {
    Made made = make(Statement::out);
    reader_.take();
    made->place = reader_.place();
    made->first = expressions_.parse();
    while (reader_.token().kind == Token::symbol && reader_.token().is(L":")) reader_.take();
    if (reader_.token().kind != Token::out_end) reader_.fail(Fault::expected_end_of_statement);
    reader_.take();
    return made;
  }
  Made made = parse_simple();
  if (made && !is_in_line) reader_.end_statement();
  return made;
}

StatementParser::Made StatementParser::parse_simple() {
  switch (reader_.token().word) {
    case Word::dim: {
      Made made = make(Statement::dim);
      reader_.take();
      made->declared = parse_fields(false);
      return made;
    }
    case Word::const_: {
      Made made = make(Statement::constant);
      reader_.take();
      made->declared = parse_constants(false);
      return made;
    }
    case Word::redim:
      return parse_redim();
    case Word::set:
      return parse_set();
    case Word::let:
      return parse_let();
    case Word::call:
      return parse_call();
    case Word::if_:
      return parse_if();
    case Word::select:
      return parse_select();
    case Word::for_:
      return parse_for();
    case Word::do_:
      return parse_do();
    case Word::while_:
      return parse_while();
    case Word::with:
      return parse_with();
    case Word::exit:
      return parse_exit();
    case Word::on:
      return parse_on_error();
    case Word::stop: {
      Made made = make(Statement::stop);
      reader_.take();
      return made;
    }
    case Word::erase:
      if (reader_.token(1).kind == Token::name) {
        Made made = make(Statement::erase);
        reader_.take();
        made->first = expressions_.parse_target(false);
        return made;
      }
      if (!reader_.token(1).is(L"=") && !reader_.token(1).is(L".") && !reader_.token(1).is(L"(")) {
        reader_.take();
        reader_.fail(Fault::expected_identifier);
      }
      return parse_assignment_or_call();
    case Word::me:
      return parse_assignment_or_call();
    default:
      break;
  }
  const Token& token = reader_.token();
  if (token.is(L".") || (token.kind == Token::name && !is_reserved(token.word))) return parse_assignment_or_call();
  return nullptr;
}

bool StatementParser::is_execute() const {
  const Token& token = reader_.token();
  const Token& next = reader_.token(1);
  if (!base::equal_ascii(token.text, L"execute") && !base::equal_ascii(token.text, L"executeglobal")) return false;
  return !next.is(L"=") && !next.is(L".") && !reader_.token(1).is(L",");
}

StatementParser::Made StatementParser::parse_execute(Statement::Kind kind) {
  Made made = make(kind);
  reader_.take();
  made->first = expressions_.parse();
  return made;
}

StatementParser::Made StatementParser::parse_assignment_or_call() {
  if (is_execute()) {
    return parse_execute(base::equal_ascii(reader_.token().text, L"execute") ? Statement::execute
                                                                             : Statement::execute_global);
  }
  Made made = make(Statement::let);
  made->first = expressions_.parse_target(true);
  if (reader_.token().is(L"=")) {
    refuse_me(*made->first);
    reader_.take();
    made->second = expressions_.parse();
    return made;
  }
  made->kind = Statement::call;
  const bool is_called = made->first->kind == Expression::call;
  if (is_called && made->first->parts.size() > 2) reader_.fail(Fault::parentheses_of_sub);
  auto arguments = expressions_.parse_open_arguments();
  if (is_called && !arguments.empty()) reader_.fail(Fault::expected_end_of_statement);
  if (is_called) {
    // `f (x)`: the parentheses are the argument's.
    if (made->first->parts.size() == 2 && made->first->parts[1]) {
      auto wrapped = std::make_unique<Expression>();
      wrapped->kind = Expression::parenthesized;
      wrapped->place = made->first->parts[1]->place;
      wrapped->depth = made->first->parts[1]->depth + 1;
      wrapped->parts.push_back(std::move(made->first->parts[1]));
      made->first->parts[1] = std::move(wrapped);
    }
    return made;
  }
  auto call = std::make_unique<Expression>();
  call->kind = Expression::call;
  call->place = made->first->place;
  call->depth = made->first->depth + 1;
  call->parts.push_back(std::move(made->first));
  for (ExpressionPtr& argument : arguments) {
    if (argument) call->depth = std::max(call->depth, argument->depth + 1);
    call->parts.push_back(std::move(argument));
  }
  made->first = std::move(call);
  return made;
}

// Nothing is assigned to Me.
void StatementParser::refuse_me(const Expression& target) {
  if (target.kind == Expression::me) TokenReader::fail(Fault::invalid_me, target.place);
}

StatementParser::Made StatementParser::parse_let() {
  Made made = make(Statement::let);
  reader_.take();
  return parse_assignment(std::move(made));
}

StatementParser::Made StatementParser::parse_set() {
  Made made = make(Statement::set);
  reader_.take();
  return parse_assignment(std::move(made));
}

StatementParser::Made StatementParser::parse_assignment(Made made) {
  made->first = expressions_.parse_named();
  refuse_me(*made->first);
  reader_.expect(L"=", Fault::expected_equals);
  made->second = expressions_.parse();
  return made;
}

StatementParser::Made StatementParser::parse_call() {
  Made made = make(Statement::call);
  reader_.take();
  ExpressionPtr target = expressions_.parse_named();
  if (target->kind != Expression::call) {
    auto call = std::make_unique<Expression>();
    call->kind = Expression::call;
    call->place = target->place;
    call->depth = target->depth + 1;
    call->parts.push_back(std::move(target));
    target = std::move(call);
  }
  made->first = std::move(target);
  return made;
}

Declared StatementParser::parse_declared() {
  Declared one;
  one.place = reader_.place();
  one.name = reader_.take_identifier();
  if (!reader_.accept(L"(")) return one;
  one.is_array = true;
  if (reader_.accept(L")")) return one;
  do {
    one.bounds.push_back(expressions_.parse());
  } while (reader_.accept(L","));
  reader_.expect(L")", Fault::expected_close);
  return one;
}

std::vector<Declared> StatementParser::parse_fields(bool is_private) {
  std::vector<Declared> all;
  do {
    Declared one = parse_declared();
    for (const ExpressionPtr& bound : one.bounds) {
      const bool is_whole = bound->kind == Expression::number && bound->number_kind != NumberKind::double_;
      if (!is_whole) TokenReader::fail(Fault::expected_integer, bound->place);
    }
    one.is_private = is_private;
    all.push_back(std::move(one));
  } while (reader_.accept(L","));
  return all;
}

std::vector<Declared> StatementParser::parse_constants(bool is_private) {
  std::vector<Declared> all;
  do {
    Declared one;
    one.place = reader_.place();
    one.name = reader_.take_identifier();
    reader_.expect(L"=", Fault::expected_equals);
    one.value = expressions_.parse_constant();
    one.is_private = is_private;
    all.push_back(std::move(one));
  } while (reader_.accept(L","));
  return all;
}

StatementParser::Made StatementParser::parse_redim() {
  Made made = make(Statement::redim);
  reader_.take();
  made->preserves = reader_.accept(Word::preserve);
  do {
    Declared one = parse_declared();
    if (one.bounds.empty()) reader_.fail(one.is_array ? Fault::expected_expression : Fault::expected_open);
    made->declared.push_back(std::move(one));
  } while (reader_.accept(L","));
  return made;
}

StatementParser::Made StatementParser::parse_exit() {
  Made made = make(Statement::exit);
  reader_.take();
  const Place at = reader_.place();
  if (reader_.accept(Word::do_)) {
    made->leaves = Statement::of_do;
    if (around_.dos == 0) TokenReader::fail(Fault::invalid_exit, at);
  } else if (reader_.accept(Word::for_)) {
    made->leaves = Statement::of_for;
    if (around_.fors == 0) TokenReader::fail(Fault::invalid_exit, at);
  } else if (reader_.accept(Word::function)) {
    made->leaves = Statement::of_function;
    if (around_.procedure != Around::function) TokenReader::fail(Fault::invalid_exit, at);
  } else if (reader_.accept(Word::sub)) {
    made->leaves = Statement::of_sub;
    if (around_.procedure != Around::sub) TokenReader::fail(Fault::invalid_exit, at);
  } else if (reader_.accept(Word::property)) {
    made->leaves = Statement::of_property;
    if (around_.procedure != Around::property) TokenReader::fail(Fault::invalid_exit, at);
  } else {
    reader_.fail(Fault::invalid_exit);
  }
  return made;
}

StatementParser::Made StatementParser::parse_on_error() {
  Made made = make(Statement::resume_next);
  reader_.take();
  if (!reader_.accept(Word::error)) reader_.fail(Fault::syntax);
  if (reader_.accept(Word::resume)) {
    reader_.expect(Word::next, Fault::expected_next);
    return made;
  }
  if (!reader_.accept(Word::goto_)) reader_.fail(Fault::syntax);
  if (reader_.token().kind != Token::number || reader_.token().value != 0) reader_.fail(Fault::syntax);
  reader_.take();
  made->kind = Statement::resume_stop;
  return made;
}

}  // namespace zelto::vbscript
