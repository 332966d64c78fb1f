#include "vbscript/uses.h"

#include "base/letter_case.h"

namespace zelto::vbscript {
namespace {

class Collector {
 public:
  Uses run(const Block& block) {
    add(block);
    return std::move(uses_);
  }

 private:
  void add(const Block& block) {
    for (const auto& statement : block) add(*statement);
  }

  void add(const Statement& statement) {
    if (assigns(statement.kind) && statement.first) assign(statement);
    for (const auto& part : {&statement.first, &statement.second, &statement.third, &statement.fourth}) {
      if (*part) add(**part);
    }
    add_declared(statement);
    uses_.has_resume |= statement.kind == Statement::resume_next;
    uses_.makes_code |= statement.kind == Statement::execute || statement.kind == Statement::execute_global;
    for (const Branch& branch : statement.branches) {
      for (const ExpressionPtr& test : branch.tests) add(*test);
      add(branch.body);
    }
    const bool is_loop =
        statement.kind == Statement::for_ || statement.kind == Statement::for_each || statement.kind == Statement::do_;
    loops_ += is_loop ? 1 : 0;
    add(statement.body);
    loops_ -= is_loop ? 1 : 0;
  }

  static bool assigns(Statement::Kind kind) {
    return kind == Statement::let || kind == Statement::set || kind == Statement::for_ || kind == Statement::for_each ||
           kind == Statement::erase;
  }

  void assign(const Statement& statement) {
    if (statement.first->kind != Expression::name) return;
    const std::wstring folded = base::folded(statement.first->text);
    uses_.assigned.insert(folded);
    if (statement.kind == Statement::let) {
      uses_.lets.push_back({folded, statement.second.get(), loops_ > 0});
    } else {
      uses_.replaced.insert(folded);
    }
  }

  void add_declared(const Statement& statement) {
    for (const Declared& one : statement.declared) {
      if (statement.kind == Statement::dim) uses_.variables.push_back(&one);
      if (statement.kind == Statement::constant) uses_.constants.push_back(&one);
      if (statement.kind == Statement::redim) {
        uses_.redimmed.push_back(&one);
        uses_.assigned.insert(base::folded(one.name));
        uses_.replaced.insert(base::folded(one.name));
      }
      if (one.value) add(*one.value);
      for (const ExpressionPtr& bound : one.bounds) add(*bound);
    }
  }

  void add(const Expression& expression) {
    if (expression.kind == Expression::name) {
      uses_.names.push_back(&expression);
      uses_.makes_code |= base::equal_ascii(expression.text, L"eval");
    }
    uses_.names_me |= expression.kind == Expression::me;
    if (expression.kind == Expression::call) {
      const Expression& callee = *expression.parts[0];
      for (std::size_t i = 1; i < expression.parts.size(); ++i) {
        const Expression* argument = expression.parts[i].get();
        if (argument && argument->kind == Expression::name) {
          uses_.passed.push_back({base::folded(argument->text), &callee, i - 1});
        }
      }
    }
    for (const ExpressionPtr& part : expression.parts) {
      if (part) add(*part);
    }
  }

  Uses uses_;
  unsigned loops_ = 0;  // around the statement
};

}  // namespace

Uses uses_of(const Block& block) { return Collector().run(block); }

}  // namespace zelto::vbscript
