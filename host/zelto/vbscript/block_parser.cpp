// The statements that hold others.
#include <algorithm>

#include "base/letter_case.h"
#include "vbscript/statement_parser.h"

namespace zelto::vbscript {

// `End If` and the like; `EndIf` is no word.
void StatementParser::end_block(Made& statement, Word what, Fault fault) {
  statement->end = reader_.place();
  reader_.expect_end(Word::end, Fault::expected_end);
  reader_.expect(what, fault);
}

StatementParser::Made StatementParser::parse_if() {
  const TokenReader::Level one(reader_);
  Made made = make(Statement::if_);
  reader_.take();
  Branch first;
  first.place = made->place;
  first.tests.push_back(expressions_.parse());
  reader_.expect(Word::then, Fault::expected_then);
  if (reader_.token().kind != Token::line_end && !reader_.token().is(L":")) {
    const bool has_else = parse_line_branch(&first.body);
    made->branches.push_back(std::move(first));
    if (has_else) {
      Branch last;
      last.place = reader_.place();
      parse_line_branch(&last.body);
      made->branches.push_back(std::move(last));
    }
    made->end = reader_.place();
    return made;
  }
  first.body = parse_block();
  made->branches.push_back(std::move(first));
  while (reader_.token().is(Word::elseif) || (reader_.token().is(Word::else_))) {
    Branch branch;
    branch.place = reader_.place();
    const bool is_last = reader_.take().word == Word::else_;
    if (!is_last) {
      branch.tests.push_back(expressions_.parse());
      reader_.expect(Word::then, Fault::expected_then);
    }
    branch.body = parse_block();
    made->branches.push_back(std::move(branch));
    if (is_last) break;
  }
  end_block(made, Word::if_, Fault::expected_if);
  return made;
}

// The statements of `If x Then a : b Else c` up to the Else, which it takes, or the line's end. An End If there is the
// statement's as well.
bool StatementParser::parse_line_branch(Block* block) {
  while (reader_.token().is(L":")) reader_.take();
  while (true) {
    auto statement = parse(true);
    if (!statement && block->empty()) {
      const bool is_nothing =
          reader_.token().is(Word::else_) || reader_.token().kind == Token::line_end || reader_.token().is(Word::end);
      if (!is_nothing) reader_.fail(Fault::expected_statement);
    }
    if (statement) block->push_back(std::move(statement));
    bool has_colon = false;
    while (reader_.accept(L":")) has_colon = true;
    if (reader_.accept(Word::else_)) return true;
    if (reader_.token().is(Word::end) && reader_.token(1).is(Word::if_)) {
      reader_.take();
      reader_.take();
      return false;
    }
    if (reader_.token().kind == Token::line_end || reader_.token().kind == Token::end) return false;
    if (!has_colon) reader_.fail(Fault::expected_end_of_statement);
  }
}

StatementParser::Made StatementParser::parse_select() {
  const TokenReader::Level one(reader_);
  Made made = make(Statement::select);
  reader_.take();
  reader_.expect(Word::case_, Fault::expected_case);
  made->first = expressions_.parse();
  if (!reader_.ends_statement()) reader_.fail(Fault::expected_end_of_statement);
  reader_.skip_blank_html();
  while (reader_.token().is(Word::case_)) {
    Branch branch;
    branch.place = reader_.place();
    reader_.take();
    const bool is_last = reader_.accept(Word::else_);
    if (!is_last) {
      do {
        branch.tests.push_back(expressions_.parse());
      } while (reader_.accept(L","));
    }
    // `Case 1 To 3` is another language's; statements may follow in the line.
    if (reader_.token().is(Word::to)) reader_.fail(Fault::expected_end_of_statement);
    branch.body = parse_block();
    made->branches.push_back(std::move(branch));
    if (is_last) break;
  }
  if (!reader_.token().is(Word::end)) {
    reader_.fail_at_statement(made->branches.empty() ? Fault::expected_case : Fault::expected_end);
  }
  end_block(made, Word::select, Fault::expected_select);
  return made;
}

StatementParser::Made StatementParser::parse_for() {
  const TokenReader::Level one(reader_);
  Made made = make(Statement::for_);
  reader_.take();
  if (reader_.accept(Word::each)) return parse_for_each(std::move(made));
  made->first = expressions_.parse_named();
  if (made->first->kind != Expression::name) TokenReader::fail(Fault::invalid_loop_variable, made->first->place);
  reader_.expect(L"=", Fault::expected_equals);
  made->second = expressions_.parse();
  reader_.expect(Word::to, Fault::expected_to);
  made->third = expressions_.parse();
  if (reader_.accept(Word::step)) made->fourth = expressions_.parse();
  end_loop(made, made->first->text);
  return made;
}

StatementParser::Made StatementParser::parse_for_each(Made loop) {
  loop->kind = Statement::for_each;
  loop->first = expressions_.parse_named();
  if (loop->first->kind != Expression::name) TokenReader::fail(Fault::invalid_loop_variable, loop->first->place);
  reader_.expect(Word::in, Fault::expected_in);
  loop->second = expressions_.parse();
  end_loop(loop, loop->first->text);
  return loop;
}

// The body, up to Next, which may name the variable.
void StatementParser::end_loop(Made& statement, const std::wstring& variable) {
  if (!reader_.ends_statement()) reader_.fail(Fault::expected_end_of_statement);
  ++around_.fors;
  statement->body = parse_block();
  --around_.fors;
  statement->end = reader_.place();
  reader_.expect(Word::next, Fault::expected_next);
  if (reader_.token().kind != Token::name || reader_.token().is(Word::else_)) return;
  if (!base::equal_folded(reader_.token().text, variable)) reader_.fail(Fault::invalid_loop_variable);
  reader_.take();
}

StatementParser::Made StatementParser::parse_do() {
  const TokenReader::Level one(reader_);
  Made made = make(Statement::do_);
  reader_.take();
  const auto parse_test = [&] {
    made->is_until = reader_.token().is(Word::until);
    if (!reader_.accept(Word::while_) && !reader_.accept(Word::until)) return;
    made->first = expressions_.parse();
  };
  parse_test();
  made->tests_first = made->first != nullptr;
  if (!reader_.ends_statement()) {
    reader_.fail(made->first ? Fault::expected_end_of_statement : Fault::expected_while_until_or_end);
  }
  ++around_.dos;
  made->body = parse_block();
  --around_.dos;
  made->end = reader_.place();
  reader_.expect(Word::loop, Fault::expected_loop);
  if (!made->first) {
    parse_test();
    const bool ends = reader_.ends_statement() || reader_.token().is(Word::else_) || reader_.token().is(Word::end);
    if (!made->first && !ends) reader_.fail(Fault::expected_while_until_or_end);
  }
  return made;
}

StatementParser::Made StatementParser::parse_while() {
  const TokenReader::Level one(reader_);
  Made made = make(Statement::do_);
  reader_.take();
  made->first = expressions_.parse();
  made->tests_first = true;
  if (!reader_.ends_statement()) reader_.fail(Fault::expected_end_of_statement);
  made->body = parse_block();
  made->end = reader_.place();
  reader_.expect(Word::wend, Fault::expected_wend);
  made->number = 1;  // no Exit Do leaves it
  return made;
}

StatementParser::Made StatementParser::parse_with() {
  const TokenReader::Level one(reader_);
  Made made = make(Statement::with);
  reader_.take();
  made->first = expressions_.parse();
  if (!reader_.ends_statement()) reader_.fail(Fault::expected_end_of_statement);
  made->body = parse_block();
  end_block(made, Word::with, Fault::expected_with);
  return made;
}

}  // namespace zelto::vbscript
