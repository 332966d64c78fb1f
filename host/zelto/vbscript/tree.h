// A script as a tree.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vbscript/token.h"

namespace zelto::vbscript {

struct Place {
  int line = 1;    // from 1
  int column = 0;  // in characters from 0
};

enum class Operator : unsigned char {
  pow,
  negate,
  plus,
  mul,
  div,
  idiv,
  mod,
  add,
  sub,
  cat,
  eq,
  ne,
  lt,
  gt,
  le,
  ge,
  is,
  not_,
  and_,
  or_,
  xor_,
  eqv,
  imp,
};

// What is known of an expression's value, from the text alone.
enum class Type : unsigned char {
  any,
  integer,  // a plain number, whole and within 32 bits
  number,   // a plain number
  text,
  boolean,
  logic,  // a boolean or Null
  plain,  // what need not be copied, and is no object
};

// Whether an expression of plain numbers gives a Double.
enum class Real : unsigned char {
  unknown,
  no,     // what it is made of may be anything
  maybe,  // where one of its variables, or of its elements of arrays, is a Double
  mixed,  // likewise of what has no mark: the result of Mod
  surely,
};

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

struct Expression {
  enum Kind : unsigned char {
    literal_empty,
    literal_null,
    literal_nothing,
    literal_boolean,  // `value`
    number,
    string,
    date,
    name,
    me,
    call,       // parts: what is called or indexed, then the arguments; null: one that is left out
    member,     // parts: the object; none: that of the innermost With
    instance,   // New `text`
    operation,  // parts: one operand or two
    parenthesized,
  };
  Kind kind = literal_empty;
  Operator op = Operator::add;
  NumberKind number_kind = NumberKind::integer;
  Type type = Type::any;
  bool has_type = false;  // `type` has been found out
  Real real = Real::unknown;
  Place place;
  unsigned depth = 1;  // of the tree below
  double value = 0;
  std::wstring text;
  std::vector<ExpressionPtr> parts;
};

struct Statement;
using Block = std::vector<std::unique_ptr<Statement>>;

// Of Dim, ReDim, a field or a constant.
struct Declared {
  std::wstring name;
  Place place;
  bool is_array = false;              // with parentheses
  std::vector<ExpressionPtr> bounds;  // the upper ones; none: to be given by a ReDim
  ExpressionPtr value;                // of a constant
  bool is_private = false;            // of a field
};

struct Parameter {
  std::wstring name;
  Place place;
  bool by_value = false;
  bool by_reference = false;  // it says so
};

struct Procedure {
  enum Kind : unsigned char { sub, function, get, let, set };
  Kind kind = sub;
  bool is_private = false;
  bool is_default = false;
  std::wstring name;
  Place place;
  Place end;
  std::vector<Parameter> parameters;
  Block body;
};

struct Class {
  std::wstring name;
  Place place;
  Place end;
  std::vector<Declared> fields;
  std::vector<Procedure> members;
};

// Of If and Select Case.
struct Branch {
  Place place;
  std::vector<ExpressionPtr> tests;  // none: Else
  Block body;
};

struct Statement {
  enum Kind : unsigned char {
    let,  // first = second
    set,
    call,  // first
    dim,
    redim,
    erase,  // first
    constant,
    if_,
    select,  // first
    for_,    // first = second To third Step fourth
    for_each,
    do_,
    exit,
    with,  // first
    resume_next,
    resume_stop,
    stop,
    html,            // `number`
    out,             // first
    execute,         // first: the text
    execute_global,  // likewise
  };
  enum Exit : unsigned char { of_do, of_for, of_function, of_property, of_sub };

  Kind kind = let;
  Place place;
  Place end;  // where the block's last word stands
  ExpressionPtr first;
  ExpressionPtr second;
  ExpressionPtr third;
  ExpressionPtr fourth;
  std::vector<Declared> declared;
  std::vector<Branch> branches;
  Block body;
  std::size_t number = 0;
  bool preserves = false;    // ReDim Preserve
  bool tests_first = false;  // Do While, While
  bool is_until = false;
  Exit leaves = of_do;
};

struct Script {
  bool is_explicit = false;
  Block body;
  std::vector<Procedure> procedures;
  std::vector<Class> classes;
};

}  // namespace zelto::vbscript
