#include "vbscript/parser.h"

#include <algorithm>
#include <utility>

#include "base/letter_case.h"
#include "vbscript/lexer.h"
#include "vbscript/statement_parser.h"

namespace zelto::vbscript {
namespace {

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : reader_(std::move(tokens)), statements_(reader_) {}

  Script parse_script() {
    while (true) {
      reader_.skip_empty();
      if (reader_.token().kind == Token::end) return std::move(script_);
      parse_item();
    }
  }

  ExpressionPtr parse_one_expression() {
    ExpressionPtr one = statements_.expressions().parse();
    reader_.skip_empty();
    if (reader_.token().kind != Token::end) reader_.fail(Fault::expected_end_of_statement);
    return one;
  }

 private:
  void parse_item() {
    const Token& token = reader_.token();
    if (token.is(Word::option)) return parse_option();
    if (token.is(Word::class_)) return parse_class();
    if (token.is(Word::public_) || token.is(Word::private_)) return parse_public();
    if (token.is(Word::sub) || token.is(Word::function)) {
      script_.procedures.push_back(parse_procedure());
      return;
    }
    if (token.is(Word::property) && is_property_member()) reader_.fail(Fault::must_be_in_class);
    if (auto statement = statements_.parse()) {
      script_.body.push_back(std::move(statement));
      return;
    }
    reader_.fail_at_statement(Fault::expected_statement);
  }

  bool is_property_member() const {
    return reader_.token(1).is(Word::get) || reader_.token(1).is(Word::let) || reader_.token(1).is(Word::set);
  }

  void parse_option() {
    const Place at = reader_.place();
    reader_.take();
    reader_.expect(Word::explicit_, Fault::expected_statement);
    if (!script_.body.empty() || !script_.procedures.empty() || !script_.classes.empty()) {
      const bool is_first = std::ranges::all_of(
          script_.body, [](const auto& one) { return one->kind == Statement::html || one->kind == Statement::out; });
      if (!is_first || !script_.procedures.empty() || !script_.classes.empty()) {
        TokenReader::fail(Fault::expected_statement, at);
      }
    }
    script_.is_explicit = true;
    reader_.end_statement();
  }

  // At top level.
  void parse_public() {
    const bool is_private = reader_.take().word == Word::private_;
    if (reader_.token().is(Word::default_)) reader_.fail(Fault::must_be_in_class);
    if (reader_.token().is(Word::sub) || reader_.token().is(Word::function)) {
      script_.procedures.push_back(parse_procedure());
      return;
    }
    auto statement = std::make_unique<Statement>();
    statement->place = reader_.place();
    statement->kind = reader_.accept(Word::const_) ? Statement::constant : Statement::dim;
    statement->declared = statement->kind == Statement::constant ? statements_.parse_constants(is_private)
                                                                 : statements_.parse_fields(is_private);
    reader_.end_statement();
    script_.body.push_back(std::move(statement));
  }

  // From Sub, Function or Property on.
  Procedure parse_procedure() {
    Procedure made;
    made.place = reader_.place();
    const Word word = reader_.take().word;
    StatementParser::Around::Kind around = StatementParser::Around::sub;
    if (word == Word::function) {
      made.kind = Procedure::function;
      around = StatementParser::Around::function;
    } else if (word == Word::property) {
      around = StatementParser::Around::property;
      if (reader_.accept(Word::get)) {
        made.kind = Procedure::get;
      } else if (reader_.accept(Word::let)) {
        made.kind = Procedure::let;
      } else {
        reader_.expect(Word::set, Fault::expected_let_set_get);
        made.kind = Procedure::set;
      }
    }
    made.place = reader_.place();
    made.name = reader_.take_identifier();
    parse_parameters(made);
    // The statements may follow in the line, which single-line procedures of old pages do.
    const Place body = reader_.place();
    const bool is_in_line = !reader_.ends_statement();
    if (made.parameters.empty() && (made.kind == Procedure::let || made.kind == Procedure::set)) {
      TokenReader::fail(Fault::property_needs_argument, made.place);
    }
    made.body = statements_.parse_body(around);
    made.end = reader_.place();
    if (!reader_.token().is(Word::end)) {
      reader_.fail_at_statement(reader_.token().kind == Token::end ? Fault::expected_end : Fault::expected_statement);
    }
    if (is_in_line && made.end.line != body.line) TokenReader::fail(Fault::expected_end_of_statement, body);
    reader_.take();
    if (word == Word::sub) reader_.expect(Word::sub, Fault::expected_sub);
    if (word == Word::function) reader_.expect(Word::function, Fault::expected_function);
    if (word == Word::property) reader_.expect(Word::property, Fault::expected_property);
    reader_.end_statement();
    return made;
  }

  void parse_parameters(Procedure& made) {
    if (!reader_.accept(L"(")) return;
    if (reader_.accept(L")")) return;
    do {
      Parameter parameter;
      parameter.by_value = reader_.accept(Word::byval);
      parameter.by_reference = !parameter.by_value && reader_.accept(Word::byref);
      parameter.place = reader_.place();
      parameter.name = reader_.take_identifier();
      if (reader_.accept(L"(")) reader_.expect(L")", Fault::expected_close);  // an array: the same
      const auto is_same = [&](const Parameter& one) { return base::equal_folded(one.name, parameter.name); };
      if (std::ranges::any_of(made.parameters, is_same)) TokenReader::fail(Fault::name_redefined, parameter.place);
      made.parameters.push_back(std::move(parameter));
    } while (reader_.accept(L","));
    reader_.expect(L")", Fault::expected_close);
  }

  void parse_class() {
    reader_.take();
    Class made;
    made.place = reader_.place();
    made.name = reader_.take_identifier();
    if (!reader_.ends_statement()) reader_.fail(Fault::expected_end_of_statement);
    while (true) {
      reader_.skip_blank_html();
      if (reader_.token().is(Word::end)) break;
      parse_member(made);
    }
    made.end = reader_.place();
    reader_.take();
    reader_.expect(Word::class_, Fault::expected_class);
    reader_.end_statement();
    script_.classes.push_back(std::move(made));
  }

  void parse_member(Class& in) {
    const Place at = reader_.place();
    bool is_private = false;
    bool is_default = false;
    const bool says_public = reader_.accept(Word::public_);
    if (!says_public) is_private = reader_.accept(Word::private_);
    const Place default_at = reader_.place();
    if (reader_.token().is(Word::default_) && reader_.token(1).kind == Token::name) {
      reader_.take();
      is_default = true;
      if (!says_public) TokenReader::fail(Fault::default_not_public, default_at);
    }
    const bool is_property = reader_.token().is(Word::property) && is_property_member();
    if (reader_.token().is(Word::sub) || reader_.token().is(Word::function) || is_property) {
      Procedure member = parse_procedure();
      member.is_private = is_private;
      member.is_default = is_default;
      if (is_default && (member.kind == Procedure::let || member.kind == Procedure::set)) {
        TokenReader::fail(Fault::default_not_get, default_at);
      }
      in.members.push_back(std::move(member));
      return;
    }
    if (reader_.token().is(Word::property)) reader_.fail(Fault::expected_let_set_get);
    if (is_default) TokenReader::fail(Fault::default_of_what, default_at);
    if (!says_public && !is_private && !reader_.accept(Word::dim)) {
      reader_.fail(reader_.token().kind == Token::end ? Fault::expected_end : Fault::expected_statement);
    }
    if (reader_.token().is(Word::const_)) TokenReader::fail(Fault::syntax, at);
    for (Declared& field : statements_.parse_fields(is_private)) in.fields.push_back(std::move(field));
    reader_.end_statement();
  }

  TokenReader reader_;
  StatementParser statements_;
  Script script_;
};

}  // namespace

Script parse(std::wstring_view text, std::span<const PageMark> marks) {
  return Parser(tokenize(text, marks)).parse_script();
}

ExpressionPtr parse_expression(std::wstring_view text) { return Parser(tokenize(text)).parse_one_expression(); }

}  // namespace zelto::vbscript
