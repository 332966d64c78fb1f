#include <fmt/xchar.h>

#include <utility>

#include "base/letter_case.h"
#include "vbscript/emitter.h"

namespace zelto::vbscript {

void Emitter::block(Block& statements) {
  for (const auto& one : statements) statement(*one);
}

// After On Error Resume Next each statement catches what it raises, and writes what stands for it then.
void Emitter::guarded(const Emit& what, std::wstring_view otherwise) {
  if (!is_resuming()) return what();
  put(L"try { ");
  what();
  put(L" } catch ($e) { if (!$resume) throw $e; ");
  if (counts_) put(library(L"settle") + L"($p); ");
  put(library(L"caught") + L"($e); ");
  put(otherwise);
  put(L"} ");
}

void Emitter::statement(Statement& s) {
  out_.at(s.place);
  switch (s.kind) {
    case Statement::dim:
    case Statement::constant:
    case Statement::stop:
      return;
    case Statement::if_:
      return is_resuming() ? if_resuming(s) : if_(s);
    case Statement::select:
      return select(s);
    case Statement::for_:
      return for_(s);
    case Statement::for_each:
      return for_each(s);
    case Statement::do_:
      return do_(s);
    case Statement::with:
      return with(s);
    case Statement::exit:
      return exit(s);
    case Statement::resume_next:
      return put(L"$resume = true; " + library(L"clear") + L"(); ");
    case Statement::resume_stop:
      return put((is_resuming() ? L"$resume = false; " : L"") + library(L"clear") + L"(); ");
    case Statement::html:
      return put(fmt::format(L"$zelto_html({}); ", s.number));
    default:
      guarded([&] {
        simple(s);
        put(L"; ");
        drain();
      });
  }
}

void Emitter::simple(Statement& s) {
  switch (s.kind) {
    case Statement::let:
      if (is_double(*s.first)) return let_double(*s.first, *s.second);
      return assign(*s.first, false, [&] { let_value(*s.second); });
    case Statement::set:
      return assign(*s.first, true, [&] { set_value(*s.second); });
    case Statement::call:
      return call(*s.first, true);
    case Statement::out:
      // Of these the page's own collector knows the text.
      put(type_of(*s.first) == Type::integer || type_of(*s.first) == Type::text ? L"$zelto_out" : library(L"out"));
      put(L"(");
      value(*s.first);
      return put(L")");
    case Statement::redim:
      return redim(s);
    case Statement::erase:
      return erase(s);
    case Statement::execute:
    case Statement::execute_global:
      return execute(s);
    default:
      return;
  }
}

void Emitter::redim(Statement& s) {
  bool is_first = true;
  for (Declared& one : s.declared) {
    if (!std::exchange(is_first, false)) put(L"; ");
    out_.at(one.place);
    const std::wstring text = variable_text(one.name);
    if (text.empty()) {
      put(library(L"raise") + L"(501)");
      continue;
    }
    store(text, [&] {
      put(library(L"redim") + L"(" + text + (s.preserves ? L", true" : L", false"));
      for (const ExpressionPtr& bound : one.bounds) {
        put(L", ");
        value(*bound);
      }
      put(L")");
    });
  }
}

void Emitter::erase(Statement& s) {
  put(library(L"erase") + L"(");
  value(*s.first);
  put(L")");
}

void Emitter::exit(const Statement& s) {
  if (s.leaves == Statement::of_do || s.leaves == Statement::of_for) {
    for (std::size_t i = loops_.size(); i-- > 0;) {
      if (loops_[i].is_for != (s.leaves == Statement::of_for)) continue;
      release_holders(loops_[i].holders);
      return put(L"break " + loops_[i].label + L"; ");
    }
    return;
  }
  const bool has_result =
      procedure_->tree && (procedure_->tree->kind == Procedure::function || procedure_->tree->kind == Procedure::get);
  put(has_result ? L"return $r; " : L"return; ");
}

// Code that is made of text sees the variables of the procedure that it stands in.
void Emitter::execute(Statement& s) {
  put(s.kind == Statement::execute ? L"eval(" : L"(0, eval)(");
  put(library(L"compile") + L"(");
  value(*s.first);
  put(s.kind == Statement::execute ? L", 1, " : L", 2, ");
  put_names();
  put(L"))");
}

std::wstring Emitter::temporary() {
  temporaries_.push_back(L"$t" + std::to_wstring(++temporary_count_));
  return temporaries_.back();
}

void Emitter::loop_label(bool is_for) {
  loops_.push_back({is_for, label(), holders_.size()});
  // So that a time-out in the loop finds its line.
  put(L"if($zelto_never);else " + loops_.back().label + L": ");
}

// Of the names that stand alone, and are let and set.
void Emitter::with(Statement& s) {
  const std::wstring object = counts_ ? holder() : temporary();
  guarded(
      [&] {
        put(object + (counts_ ? L" = " + library(L"hold") + L"(" : L" = "));
        value(*s.first);
        put(counts_ ? L"); " : L"; ");
        drain();
      },
      object + L" = undefined; ");
  withs_.push_back(object);
  block(s.body);
  withs_.pop_back();
  out_.at(s.end);
  end_holder();
}

}  // namespace zelto::vbscript
