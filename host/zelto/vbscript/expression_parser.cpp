#include "vbscript/expression_parser.h"

#include <algorithm>
#include <span>
#include <utility>

namespace zelto::vbscript {
namespace {

// How deep a tree may be: an operator's chain, `a & b & …`, grows to the left.
constexpr unsigned kDeepest = 1500;

struct Binary {
  std::wstring_view symbol;  // empty: a word
  Word word;
  Operator op;
};
constexpr Binary kImp[] = {{{}, Word::imp, Operator::imp}};
constexpr Binary kEqv[] = {{{}, Word::eqv, Operator::eqv}};
constexpr Binary kXor[] = {{{}, Word::xor_, Operator::xor_}};
constexpr Binary kOr[] = {{{}, Word::or_, Operator::or_}};
constexpr Binary kAnd[] = {{{}, Word::and_, Operator::and_}};
constexpr Binary kComparisons[] = {
    {L"=", Word::none, Operator::eq}, {L"<>", Word::none, Operator::ne}, {L"<", Word::none, Operator::lt},
    {L">", Word::none, Operator::gt}, {L"<=", Word::none, Operator::le}, {L">=", Word::none, Operator::ge},
    {{}, Word::is, Operator::is},
};
constexpr Binary kCat[] = {{L"&", Word::none, Operator::cat}};
constexpr Binary kSums[] = {{L"+", Word::none, Operator::add}, {L"-", Word::none, Operator::sub}};
constexpr Binary kMod[] = {{{}, Word::mod, Operator::mod}};
constexpr Binary kWhole[] = {{L"\\", Word::none, Operator::idiv}};
constexpr Binary kProducts[] = {{L"*", Word::none, Operator::mul}, {L"/", Word::none, Operator::div}};

// The loosest first; Not stands between And and the comparisons.
constexpr std::span<const Binary> kLevels[] = {kImp, kEqv,  kXor, kOr,    kAnd,     kComparisons,
                                               kCat, kSums, kMod, kWhole, kProducts};
constexpr std::size_t kNot = 5;

const Binary* operator_of(const Token& token, std::span<const Binary> level) {
  const auto found = std::ranges::find_if(
      level, [&](const Binary& one) { return one.symbol.empty() ? token.is(one.word) : token.is(one.symbol); });
  return found == level.end() ? nullptr : &*found;
}

}  // namespace

ExpressionPtr ExpressionParser::make(Expression::Kind kind) const {
  auto made = std::make_unique<Expression>();
  made->kind = kind;
  made->place = reader_.place();
  return made;
}

ExpressionPtr ExpressionParser::make_operation(Operator op, ExpressionPtr left, ExpressionPtr right, Place at) const {
  auto made = std::make_unique<Expression>();
  made->kind = Expression::operation;
  made->op = op;
  made->place = at;
  made->depth = 1 + std::max(left->depth, right ? right->depth : 0U);
  if (made->depth > kDeepest) TokenReader::fail(Fault::out_of_memory, at);
  made->parts.push_back(std::move(left));
  if (right) made->parts.push_back(std::move(right));
  return made;
}

ExpressionPtr ExpressionParser::parse() { return parse_level(0); }

ExpressionPtr ExpressionParser::parse_level(std::size_t level) {
  if (level == std::size(kLevels)) return parse_unary();
  if (level == kNot && reader_.token().is(Word::not_)) {
    const TokenReader::Level one(reader_);
    const Place at = reader_.place();
    reader_.take();
    return make_operation(Operator::not_, parse_level(kNot), nullptr, at);
  }
  ExpressionPtr left = parse_level(level + 1);
  while (const Binary* found = operator_of(reader_.token(), kLevels[level])) {
    const Place at = reader_.place();
    reader_.take();
    left = make_operation(found->op, std::move(left), parse_level(level + 1), at);
  }
  return left;
}

ExpressionPtr ExpressionParser::parse_unary() {
  const TokenReader::Level one(reader_);
  const Place at = reader_.place();
  if (reader_.accept(L"-")) return make_operation(Operator::negate, parse_unary(), nullptr, at);
  if (reader_.accept(L"+")) return make_operation(Operator::plus, parse_unary(), nullptr, at);
  return parse_power();
}

// 2 ^ -1 is a power as well.
ExpressionPtr ExpressionParser::parse_power() {
  ExpressionPtr left = parse_primary();
  while (reader_.token().is(L"^")) {
    const Place at = reader_.place();
    reader_.take();
    const bool is_signed = reader_.token().is(L"-") || reader_.token().is(L"+");
    ExpressionPtr right = is_signed ? parse_unary() : parse_primary();
    left = make_operation(Operator::pow, std::move(left), std::move(right), at);
  }
  return left;
}

ExpressionPtr ExpressionParser::parse_literal() {
  const Token& token = reader_.token();
  const auto with = [&](Expression::Kind kind, double value) {
    ExpressionPtr made = make(kind);
    made->value = value;
    made->number_kind = token.number_kind;
    reader_.take();
    return made;
  };
  if (token.kind == Token::number) return with(Expression::number, token.value);
  if (token.kind == Token::date) return with(Expression::date, token.value);
  if (token.kind == Token::string) {
    ExpressionPtr made = make(Expression::string);
    made->text = token.text;
    reader_.take();
    return made;
  }
  switch (token.word) {
    case Word::true_:
    case Word::false_:
      return with(Expression::literal_boolean, token.word == Word::true_ ? 1 : 0);
    case Word::empty:
      return with(Expression::literal_empty, 0);
    case Word::null:
      return with(Expression::literal_null, 0);
    case Word::nothing:
      return with(Expression::literal_nothing, 0);
    default:
      return nullptr;
  }
}

ExpressionPtr ExpressionParser::parse_constant() {
  const TokenReader::Level one(reader_);
  const Place at = reader_.place();
  if (reader_.accept(L"-")) return make_operation(Operator::negate, parse_constant(), nullptr, at);
  if (reader_.accept(L"+")) return parse_constant();
  const bool is_wrapped = reader_.accept(L"(");
  ExpressionPtr literal = is_wrapped ? parse_constant() : parse_literal();
  if (!literal) reader_.fail(Fault::expected_literal);
  if (is_wrapped) reader_.expect(L")", Fault::expected_close);
  return literal;
}

ExpressionPtr ExpressionParser::parse_primary() {
  if (ExpressionPtr literal = parse_literal()) return literal;
  const Token& token = reader_.token();
  if (token.is(L"(")) {
    const TokenReader::Level one(reader_);
    ExpressionPtr made = make(Expression::parenthesized);
    reader_.take();
    made->parts.push_back(parse());
    made->depth = made->parts[0]->depth + 1;
    reader_.expect(L")", Fault::expected_close);
    return parse_chain(std::move(made), false);
  }
  if (token.is(Word::new_)) {
    ExpressionPtr made = make(Expression::instance);
    reader_.take();
    made->text = reader_.take_identifier();
    return made;
  }
  // `a = Not b`, and behind any other operator.
  if (token.is(Word::not_)) return parse_level(kNot);
  return parse_target(false);
}

ExpressionPtr ExpressionParser::parse_target(bool is_statement) {
  const Token& token = reader_.token();
  if (token.is(L".")) return parse_chain(parse_member(nullptr), is_statement);
  if (token.kind != Token::name || (is_reserved(token.word) && token.word != Word::me)) {
    if (is_statement) reader_.fail(Fault::expected_statement);
    reader_.fail_at_expression();
  }
  ExpressionPtr start = make(token.is(Word::me) ? Expression::me : Expression::name);
  start->text = token.text;
  reader_.take();
  return parse_chain(std::move(start), is_statement);
}

ExpressionPtr ExpressionParser::parse_named() {
  const Token& token = reader_.token();
  if (token.kind != Token::name && !token.is(L".")) reader_.fail(Fault::expected_identifier);
  if (is_reserved(token.word) && token.word != Word::me) reader_.fail(Fault::expected_identifier);
  return parse_target(false);
}

ExpressionPtr ExpressionParser::parse_member(ExpressionPtr object) {
  reader_.take();  // the dot
  if (reader_.token().kind != Token::name) reader_.fail(Fault::expected_identifier);
  ExpressionPtr made = make(Expression::member);
  made->text = reader_.take().text;
  if (object) {
    made->depth = object->depth + 1;
    made->parts.push_back(std::move(object));
  }
  if (made->depth > kDeepest) TokenReader::fail(Fault::out_of_memory, made->place);
  return made;
}

ExpressionPtr ExpressionParser::parse_chain(ExpressionPtr start, bool is_statement) {
  while (true) {
    const Token& token = reader_.token();
    // `f .x` hands a member of the With's object to what a statement calls.
    if (token.is(L".") && !(is_statement && token.has_blank_before)) {
      start = parse_member(std::move(start));
    } else if (token.is(L"(") && !(is_statement && begins_open_arguments())) {
      start = parse_call(std::move(start));
    } else {
      return start;
    }
  }
}

ExpressionPtr ExpressionParser::parse_call(ExpressionPtr callee) {
  const TokenReader::Level one(reader_);
  ExpressionPtr call = make(Expression::call);
  call->place = callee->place;
  call->depth = callee->depth + 1;
  call->parts.push_back(std::move(callee));
  reader_.take();  // the parenthesis
  if (reader_.accept(L")")) return call;
  while (true) {
    const bool is_omitted = reader_.token().is(L",") || reader_.token().is(L")");
    call->parts.push_back(is_omitted ? nullptr : parse());
    if (!is_omitted) call->depth = std::max(call->depth, call->parts.back()->depth + 1);
    if (call->depth > kDeepest) TokenReader::fail(Fault::out_of_memory, call->place);
    if (reader_.accept(L")")) return call;
    reader_.expect(L",", Fault::expected_close);
  }
}

// Whether what stands behind the closing parenthesis shows that the one here begins an argument: `f (1), 2`,
// `f (a) & b`.
bool ExpressionParser::begins_open_arguments() const {
  std::size_t ahead = 0;
  for (unsigned open = 0; reader_.token(ahead).kind != Token::end; ++ahead) {
    const Token& token = reader_.token(ahead);
    if (token.kind == Token::line_end) return false;
    open += token.is(L"(");
    if (token.is(L")") && --open == 0) break;
  }
  const Token& next = reader_.token(ahead + 1);
  const bool ends = next.kind == Token::line_end || next.kind == Token::end || next.is(L":") || next.is(Word::else_) ||
                    next.is(Word::end) || next.is(Word::elseif) || next.kind == Token::html || next.kind == Token::out;
  return !ends && !next.is(L"=") && !next.is(L"(") && !next.is(L".");
}

std::vector<ExpressionPtr> ExpressionParser::parse_open_arguments() {
  std::vector<ExpressionPtr> arguments;
  const auto ends = [&] {
    return reader_.ends_statement() || reader_.token().is(Word::else_) || reader_.token().is(Word::end);
  };
  if (ends()) return arguments;
  while (true) {
    const bool is_omitted = reader_.token().is(L",") || ends();
    arguments.push_back(is_omitted ? nullptr : parse());
    if (!reader_.accept(L",")) return arguments;
  }
}

}  // namespace zelto::vbscript
