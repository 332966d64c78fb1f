// If, Select Case and loops.
#include <fmt/xchar.h>

#include <algorithm>

#include "base/letter_case.h"
#include "vbscript/emitter.h"

namespace zelto::vbscript {
namespace {

// The engine reads a chain of else by recursion.
constexpr std::size_t kMostElses = 100;

bool is_integer_literal(const Expression* e) {
  if (!e) return false;
  if (e->kind == Expression::operation && e->op == Operator::negate) return is_integer_literal(e->parts[0].get());
  return e->kind == Expression::number && e->number_kind == NumberKind::integer;
}
double literal_value(const Expression& e) {
  return e.kind == Expression::operation ? -literal_value(*e.parts[0]) : e.value;
}

}  // namespace

void Emitter::if_(Statement& s) {
  if (s.branches.size() > kMostElses) return if_resuming(s);
  for (std::size_t i = 0; i < s.branches.size(); ++i) {
    Branch& branch = s.branches[i];
    out_.at(branch.place);
    if (i > 0) put(L"} else ");
    if (!branch.tests.empty()) {
      put(L"if (");
      condition(*branch.tests[0]);
      put(L") ");
    }
    put(L"{ ");
    block(branch.body);
  }
  out_.at(s.end);
  put(L"} ");
}

// Where a condition fails, what follows it is its branch.
void Emitter::if_resuming(Statement& s) {
  const std::wstring around = label();
  const std::wstring test = temporary();
  put(around + L": { ");
  for (Branch& branch : s.branches) {
    out_.at(branch.place);
    if (branch.tests.empty()) {
      block(branch.body);
      continue;
    }
    guarded(
        [&] {
          put(test + L" = ");
          condition(*branch.tests[0]);
          put(L"; ");
        },
        test + L" = true; ");
    put(L"if (" + test + L") { ");
    block(branch.body);
    put(L"break " + around + L"; } ");
  }
  out_.at(s.end);
  put(L"} ");
}

void Emitter::test_case(Branch& branch, const std::wstring& subject) {
  for (std::size_t i = 0; i < branch.tests.size(); ++i) {
    Expression& test = *branch.tests[i];
    if (i > 0) put(L" || ");
    out_.at(test.place);
    const int written = written_as(test, test);
    const bool is_plain = test.kind == Expression::string || is_numeric(test);
    if (written != 0 && is_plain) {
      put(fmt::format(L"(typeof {0} === \"{1}\" ? {0} === ", subject, written == 1 ? L"number" : L"string"));
      value(test);
      put(L" : ");
    }
    put(library(L"eq") + L"(" + subject + L", ");
    value(test);
    if (written != 0) put(fmt::format(L", {}", written));
    put(written != 0 && is_plain ? L") === true)" : L") === true");
  }
}

void Emitter::select(Statement& s) {
  const std::wstring around = label();
  const std::wstring subject = temporary();
  const std::wstring test = is_resuming() ? temporary() : std::wstring();
  if (is_resuming()) put(test + L" = false; ");
  guarded(
      [&] {
        put(subject + L" = ");
        let_value(*s.first);
        put(L"; ");
        drain();
      },
      test + L" = true; ");
  put(around + L": { ");
  for (Branch& branch : s.branches) {
    out_.at(branch.place);
    if (branch.tests.empty()) {
      block(branch.body);
      continue;
    }
    if (is_resuming()) {
      guarded(
          [&] {
            put(fmt::format(L"if (!{0}) {0} = ", test));
            drained(false, [&] { test_case(branch, subject); });
            put(L"; ");
          },
          test + L" = true; ");
      put(L"if (" + test + L") { ");
    } else {
      const bool is_plain = std::ranges::all_of(branch.tests, [&](const ExpressionPtr& one) { return is_quiet(*one); });
      put(L"if (");
      drained(is_plain, [&] { test_case(branch, subject); });
      put(L") { ");
    }
    block(branch.body);
    put(L"break " + around + L"; } ");
  }
  out_.at(s.end);
  put(L"} ");
}

// Whether nothing but the loop itself changes its variable.
bool Emitter::is_counter(const Statement& s) const {
  const std::wstring folded = base::folded(s.first->text);
  const auto own = procedure_->names.find(folded);
  const bool is_variable =
      own != procedure_->names.end() && own->second.kind == Symbol::variable && !own->second.is_reference;
  if (!is_variable || procedure_->uses.makes_code) return false;
  if (!procedure_->tree && (!is_alone_ || names_.makes_code || names_.assigned_from_within.contains(folded)))
    return false;
  const Uses uses = uses_of(s.body);
  const bool is_passed = std::ranges::any_of(uses.passed, [&](const Uses::Passed& one) {
    return one.name == folded && takes_reference(names_, *procedure_, one);
  });
  return !is_passed && !uses.assigned.contains(folded);
}

// The counter is a plain number where it is known to be an integer from the first value on; else the library tells what
// it is, and makes each of its values.
void Emitter::for_(Statement& s) {
  const std::wstring text = variable_text(s.first->text);
  if (text.empty())
    return loop(
        s, [&] { raise_of(501, s.first->text); }, L"false", L"0", temporary());
  const bool is_counting = is_counter(s);
  if (is_counting) steady_.push_back(base::folded(s.first->text));
  count(s, text, is_counting);
  if (is_counting) steady_.pop_back();
}

void Emitter::count(Statement& s, const std::wstring& text, bool is_counting) {
  const bool has_literal_step = !s.fourth || is_integer_literal(s.fourth.get());
  const double step = s.fourth && has_literal_step ? literal_value(*s.fourth) : 1;
  const bool is_integer = is_counting && has_literal_step && step != 0 && type_of(*s.second) == Type::integer;
  const std::wstring limit = temporary();
  if (is_integer) {
    const Emit begin = [&] {
      put(limit + L" = ");
      const bool is_plain = is_numeric(*s.third);
      if (!is_plain) put(library(L"num") + L"(");
      value(*s.third);
      put(is_plain ? L", " : L"), ");
      empty_counter(text);
      put(text + L" = ");
      value(*s.second);
    };
    const std::wstring next = step == 1 ? text + L"++" : fmt::format(L"{} += {}", text, static_cast<int>(step));
    // Where the loop may fail to begin, it may be anything.
    if (!is_resuming()) counters_.push_back(base::folded(s.first->text));
    loop(s, begin, text + (step < 0 ? L" >= " : L" <= ") + limit, next, limit);
    if (!is_resuming()) counters_.pop_back();
    return;
  }
  const std::wstring counted = temporary();
  const std::wstring box = temporary();
  const std::wstring by = has_literal_step ? std::to_wstring(static_cast<int>(step)) : temporary();
  const Emit begin = [&] {
    put(counted + L" = " + library(L"forn") + L"(");
    value(*s.second);
    put(L", ");
    value(*s.third);
    put(L", ");
    if (s.fourth) value(*s.fourth);
    put(s.fourth ? L"), " : L"1), ");
    if (!has_literal_step) put(by + L" = " + counted + L".step, ");
    empty_counter(text);
    put(fmt::format(L"{0} = {1}.to, {2} = {1}.box, {3} = {2} === undefined ? {1}.at : {2}({1}.at)", limit, counted, box,
                    text));
  };
  std::wstring test = text + (step < 0 ? L" >= " : L" <= ") + limit;
  if (!has_literal_step) test = fmt::format(L"({0} < 0 ? {1} >= {2} : {1} <= {2})", by, text, limit);
  const std::wstring sum = (is_counting ? text : library(L"num") + L"(" + text + L")") + L" + " + by;
  // What the loop's statements made of it keeps its kind.
  const std::wstring next =
      is_counting ? sum
                  : fmt::format(L"typeof {0} === \"number\" ? {1} : {2}({0}, {3})", text, sum, library(L"next"), by);
  loop(s, begin, test, fmt::format(L"{0} = {1} === undefined ? {2} : {1}({3})", text, box, next, sum), limit);
}

void Emitter::loop(Statement& s, const Emit& begin, const std::wstring& test, const std::wstring& next,
                   const std::wstring& limit) {
  if (is_resuming()) return for_resuming(s, begin, test, next, limit);
  loop_label(true);
  put(L"for (");
  begin();
  if (counts_) put(L", " + library(L"after") + L"($p)");
  put(L"; " + test + L"; " + next + L") { ");
  block(s.body);
  loops_.pop_back();
  out_.at(s.end);
  put(L"} ");
}

// A loop that cannot begin has its statements run once, which follow; then its Next fails. One whose variable cannot be
// counted on is left.
void Emitter::for_resuming(Statement& s, const Emit& begin, const std::wstring& test, const std::wstring& next,
                           const std::wstring& limit) {
  const std::wstring failed = temporary();
  guarded(
      [&] {
        begin();
        put(L"; " + failed + L" = false; ");
        drain();
      },
      failed + L" = true; ");
  loop_label(true);
  put(fmt::format(L"for (; {} || {};) {{ ", failed, test));
  block(s.body);
  out_.at(s.end);
  guarded(
      [&] {
        put(fmt::format(L"if ({0}) {0} = false, {1} = NaN, {2}(); else {3}; ", failed, limit, library(L"not_begun"),
                        next));
      },
      L"break " + loops_.back().label + L"; ");
  loops_.pop_back();
  put(L"} ");
}

// By index, not by the engine's own `for … of`: the optimized code of a loop that has one is left at its first step
// each time that the page runs, and after some such times no longer made.
void Emitter::for_each(Statement& s) {
  const std::wstring text = variable_text(s.first->text);
  const std::wstring items = temporary();
  const std::wstring at = L"$i" + items.substr(2);
  const std::wstring held = counts_ ? holder() : std::wstring();
  guarded(
      [&] {
        if (text.empty()) {
          raise_of(501, s.first->text);
          return put(L"; ");
        }
        put(items + L" = " + library(L"each") + L"(");
        if (counts_) put(held + L" = " + library(L"hold") + L"(");
        value(*s.second);
        put(counts_ ? L")); " : L"); ");
        drain();
      },
      items + L" = " + library(L"once") + L"(" + (text.empty() ? L"0" : text) + L"); ");
  loop_label(true);
  put(fmt::format(L"for (let {0} = 0; {0} < {1}.length; {0}++) {{ ", at, items));
  if (!text.empty()) {
    store(text, [&] { put(fmt::format(L"{}[{}]", items, at)); });
    put(L"; ");
  }
  block(s.body);
  loops_.pop_back();
  out_.at(s.end);
  put(L"} ");
  end_holder();
}

void Emitter::do_(Statement& s) {
  const std::wstring test = is_resuming() && s.first ? temporary() : std::wstring();
  const bool is_while = s.number == 1;
  const auto leave = [&](std::wstring_view failing) {
    guarded(
        [&] {
          if (is_resuming()) put(test + L" = ");
          if (!is_resuming()) put(L"if (");
          put(s.is_until ? L"" : L"!(");
          condition(*s.first);
          put(s.is_until ? L"" : L")");
          if (is_resuming()) put(L"; ");
        },
        test + std::wstring(failing));
    if (is_resuming()) put(L"if (" + test);
    put(L") break; ");
  };
  loop_label(false);
  // Exit Do does not leave a While.
  const Loop own = loops_.back();
  if (is_while) loops_.pop_back();
  const bool is_plain = s.first && s.tests_first && !is_resuming();
  put(is_plain ? (s.is_until ? L"while (!(" : L"while (") : L"for (;;) { ");
  if (is_plain) {
    condition(*s.first);
    put(s.is_until ? L")) { " : L") { ");
  } else if (s.first && s.tests_first) {
    leave(L" = false; ");
  }
  block(s.body);
  if (!is_while) loops_.pop_back();
  out_.at(s.end);
  if (s.first && !s.tests_first) leave(L" = true; ");
  put(L"} ");
}

}  // namespace zelto::vbscript
