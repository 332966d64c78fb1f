#include "language/rewriter.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "base/letter_case.h"
#include "language/chains.h"
#include "language/loops.h"
#include "language/spreads.h"
#include "language/written_source.h"

namespace zelto::language {
namespace {

// Properties without arguments that pages also write in small letters, with parentheses after them.
// clang-format off
constexpr auto kProperties = std::to_array<std::wstring_view>(
    {L"absolutepage", L"absoluteposition", L"actualsize", L"bof", L"buffer", L"charset", L"codepage",
     L"commandtext", L"contents", L"contenttype", L"cookies", L"count", L"definedsize", L"editmode", L"eof", L"eos",
     L"errors", L"expires", L"fields", L"form", L"haskeys", L"lcid", L"line", L"mode", L"name", L"number",
     L"pagecount", L"pagesize", L"parameters", L"position", L"properties", L"provider", L"querystring",
     L"recordcount", L"scripttimeout", L"servervariables", L"sessionid", L"size", L"sort", L"source", L"state",
     L"status", L"timeout", L"totalbytes", L"type", L"value", L"version"});
// clang-format on

static_assert(std::ranges::is_sorted(kProperties));

struct Function {
  std::wstring_view object;
  std::wstring_view member;
  const wchar_t* name;
};
constexpr Function kFunctions[] = {
    {L"Response", L"Write", L"$zelto_write"},
    {L"Server", L"HTMLEncode", L"$zelto_html_encode"},
    {L"Server", L"URLEncode", L"$zelto_url_encode"},
};

// Methods of the language and of most scripts begin with a small letter, members of automation objects with a
// capital one: so the calls that scripts make most stay as they are.
bool may_be_property(std::wstring_view name) {
  if (name.front() >= L'A' && name.front() <= L'Z') return true;
  return std::ranges::binary_search(kProperties, base::ascii_lowered(name));
}

class Rewriter : private Chains {
 public:
  Rewriter(std::wstring_view text, const std::vector<Token>& tokens)
      : Chains(text, tokens), loops_(text, tokens), spreads_(text, tokens), is_read_(tokens.size()), edits_(text) {}

  Rewritten run() {
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      rewrite_token(i);
      if (tokens_[i].statement_start) read_value(i, L", 1)");
      if (const wchar_t* function = function_of(i)) {
        call_function(i, function);
      } else if (is_assigned_call(i)) {
        assign_call(i);
      } else if (is_bare_call(i)) {
        call_bare(i);
      } else if (is_member_call(i)) {
        call_member(i);
      } else if (is_item(i)) {
        read_item(i);
      }
    }
    return {edits_.apply(), {}, {}};
  }

 private:
  void rewrite_token(std::size_t i) {
    const std::wstring_view text = word(i);
    switch (tokens_[i].kind) {
      case Token::keyword:
        if (text == L"throw" && tokens_[i].statement_start) edits_.insert(tokens_[i].end, L" $zelto.thrown =");
        if (text == L"return" && !line_ends_behind(i)) read_value(i + 1, L")");
        if (loops_.begins(i)) place_loop(i);
        break;
      case Token::punctuator:
        if (is_assignment(i)) read_value(i + 1, L")");
        if (text == L"=") place_pattern(i);
        if (spreads_.is_value(i)) edits_.insert(tokens_[i + 1].begin, std::wstring(kPatternPlace));
        if (text == L"," && is_call(around_)) read_value(i + 1, L")");
        if (text == L"?.") last_optional_ = i;
        break;
      case Token::open:
        if (is_call(i) || is_condition(i)) read_value(i + 1, L")");
        if (is_new_error(i)) make_error(i);
        if (is_catch_body(i)) edits_.insert(tokens_[i].end, L" $zelto_caught(" + std::wstring(word(i - 2)) + L");");
        enclosing_.push_back(std::exchange(around_, i));
        if (is_pattern(i)) ++patterns_;
        break;
      case Token::close:
        if (is_pattern(around_)) --patterns_;
        around_ = enclosing_.back();
        enclosing_.pop_back();
        break;
      case Token::literal:
        if (text.front() == L'"' || text.front() == L'\'') escape_line_ends(i);
        if (text == L"this") hand_over(i);
        break;
      case Token::name:
        if (is(i - 1, L"const")) constants_.insert(text);
        if (sets_constant(i)) edits_.insert(tokens_[i].begin, std::wstring(kStatementPlace));
        break;
    }
  }

  // The engine looks at its limits as each round begins, and takes for its place that of the last expression in front
  // that may throw: the name of a value may be unknown, as far as it knows. A label belongs to the loop.
  void place_loop(std::size_t i) {
    while (i >= 2 && is(i - 1, L":") && tokens_[i - 2].kind == Token::name && tokens_[i - 2].statement_start) i -= 2;
    edits_.insert(tokens_[i].begin, std::wstring(kStatementPlace));
  }

  // `NAME = x` of what may be a constant: that it cannot be set has no place of its own. The name may be that of a
  // variable elsewhere.
  bool sets_constant(std::size_t i) const {
    return tokens_[i].statement_start && (is_assignment(i + 1) || is_postfix(i + 1)) && constants_.contains(word(i));
  }

  // `[a] =` or `{a} =`, but not `list[a] =` nor a class's `[a] =`. What cannot be taken apart has no place of its own
  // either.
  void place_pattern(std::size_t sign) {
    if (sign == 0 || sign + 1 >= tokens_.size() || !is(sign - 1, L"]", L"}")) return;
    const std::size_t open = tokens_[sign - 1].partner;
    const bool is_value = open > 0 && !tokens_[open - 1].ends_operand && !is(open - 1, L"{", L"}", L";", L"static");
    if (tokens_[open].statement_start || is_value || is(open - 1, L"let"))
      edits_.insert(tokens_[sign + 1].begin, std::wstring(kPatternPlace));
  }

  void hand_over(std::size_t i) {
    const std::size_t taker = taker_of_this(*this, i);
    if (taker == Token::kNone) return;
    edits_.open_wrapping(tokens_[i].begin, tokens_[i].end, L"$zelto_given(");
    edits_.insert(tokens_[i].end, L"," + std::wstring(word(taker)) + L")");
  }

  bool line_ends_behind(std::size_t i) const { return i + 1 >= tokens_.size() || tokens_[i + 1].newline_before; }
  bool is_condition(std::size_t open) const {
    return tokens_[open].control && is(open - 1, L"if", L"while", L"switch");
  }

  // Wraps a chain that ends in a member's name and is all of its expression.
  void read_value(std::size_t first, const wchar_t* tail) {
    const std::size_t end = end_of(first);
    if (end < first + 3 || !is(end - 2, L".")) return;
    const bool in_list = is(end, L",") && !tokens_[first].statement_start;
    if (!expression_ends(end) && !in_list) return;
    edits_.open_wrapping(tokens_[first].begin, tokens_[end - 1].end, L"$zelto_value(");
    edits_.insert(tokens_[end - 1].end, tail);
    is_read_[end - 1] = true;
  }

  // `f(x) =`, `f(x)++`, `++f(x)`; `i` is the closing parenthesis.
  bool is_assigned_call(std::size_t i) const {
    if (!is(i, L")") || tokens_[i].kind != Token::close || !is_call(tokens_[i].partner)) return false;
    const std::size_t start = start_of(tokens_[i].partner - 1);
    if (!is_operand(start) || is(start, L"{") || is(start - 1, L"new")) return false;
    if (is_assignment(i + 1) || is_postfix(i + 1)) return true;
    const bool prefixed = is(start - 1, L"++", L"--") && !tokens_[start - 1].ends_operand;
    return prefixed && end_of(start) == i + 1;
  }

  void assign_call(std::size_t close) {
    const std::size_t open = tokens_[close].partner;
    edits_.open_wrapping(tokens_[start_of(open - 1)].begin, tokens_[close].end, L"$zelto.at(");
    edits_.replace(tokens_[open].begin, 1, L",");
    edits_.insert(tokens_[close].end, L".v");
  }

  // `o.Name()`, where the name may be that of a property; `i` is the closing parenthesis.
  bool is_bare_call(std::size_t i) const {
    if (i < 4 || !is(i, L")") || tokens_[i].partner != i - 1 || !is_call(i - 1)) return false;
    if (tokens_[i - 2].kind != Token::name || !is(i - 3, L".") || !may_be_property(word(i - 2))) return false;
    if (word(i - 2).ends_with(L'\\')) return false;  // would not end the string that it becomes
    const std::size_t start = start_of(i - 2);
    return starts_with_value(start) && !is(start - 1, L"new") && !is_optional(start);
  }

  // `o.Name(x)` in one line, of a name and nothing in front of it; `i` is the closing parenthesis.
  bool is_short_call(std::size_t i) const {
    if (!is(i, L")") || tokens_[i].kind != Token::close || tokens_[i].partner + 1 >= i) return false;
    const std::size_t open = tokens_[i].partner;
    if (open < 3 || !is_call(open) || !is(open - 2, L".") || is(open - 4, L".", L"?.", L"new")) return false;
    if (tokens_[open].newline_before || tokens_[open - 1].newline_before || tokens_[open - 2].newline_before) {
      return false;
    }
    return !is_assignment(i + 1) && !is(i + 1, L"++", L"--") && !is(open - 4, L"++", L"--");
  }

  // The same, where the name may be that of an automation object's member.
  bool is_member_call(std::size_t i) const {
    if (!is_short_call(i)) return false;
    const std::size_t open = tokens_[i].partner;
    const std::wstring_view member = word(open - 1);
    return tokens_[open - 3].kind == Token::name && tokens_[open - 1].kind == Token::name &&
           starts_with_value(open - 3) && member.front() >= L'A' && member.front() <= L'Z' &&
           member.find(L'\\') == std::wstring_view::npos;
  }

  void call_member(std::size_t close) {
    const std::size_t open = tokens_[close].partner;
    const Token& object = tokens_[open - 3];
    edits_.open_wrapping(object.begin, object.end, L"$zelto_of(");
    edits_.insert(object.end, L",\"" + std::wstring(word(open - 1)) + L"\",\"" + std::wstring(word(open - 3)) + L"\")");
  }

  // `Response.Write(x)` and the like, which a function of the language does for texts; `i` is the closing parenthesis.
  // Null for any other, and with blanks around the dot: their places would be lost with it.
  const wchar_t* function_of(std::size_t i) const {
    if (!is_short_call(i)) return nullptr;
    const std::size_t open = tokens_[i].partner;
    if (tokens_[open - 3].end + 1 != tokens_[open - 1].begin) return nullptr;
    for (const Function& function : kFunctions) {
      if (word(open - 3) == function.object && word(open - 1) == function.member) return function.name;
    }
    return nullptr;
  }

  void call_function(std::size_t close, const wchar_t* function) {
    const std::size_t open = tokens_[close].partner;
    edits_.open_wrapping(tokens_[open - 3].begin, tokens_[close].end, std::wstring(function) + L"(");
    for (const std::size_t i : {open - 2, open - 1})
      edits_.replace(tokens_[i].begin, tokens_[i].end - tokens_[i].begin, L"");
    edits_.replace(tokens_[open].begin, 1, L",");
  }

  // Whether the chain from `start` to the present token may end early: `a?.b.C()` goes no further where there is no
  // `a`.
  bool is_optional(std::size_t start) const {
    return is(start - 1, L"?.") || (last_optional_ != Token::kNone && last_optional_ >= start);
  }

  // `o.Item` that is neither called nor assigned to, as a value anywhere in an expression; `i` is the name.
  bool is_item(std::size_t i) const {
    if (i < 2 || tokens_[i].kind != Token::name || !is(i - 1, L".") || !is(i, L"Item", L"item")) return false;
    if (is(i + 1, L"(", L"=>", L"of", L"in") || word(i + 1).starts_with(L'`')) return false;
    if (is_assignment(i + 1) || is_postfix(i + 1)) return false;
    const std::size_t start = start_of(i);
    if (!starts_with_value(start) || is(start - 1, L"new", L"delete", L"++", L"--")) return false;
    return !is_optional(start) && patterns_ == 0;
  }

  // `[…] =` or `{…} =`: what stands inside may be assigned to.
  bool is_pattern(std::size_t open) const {
    const std::size_t close = tokens_[open].partner;
    return !is(open, L"(") && is(close + 1, L"=");
  }

  void read_item(std::size_t i) {
    if (is_read_[i]) return;
    edits_.open_wrapping(tokens_[start_of(i)].begin, tokens_[i].end, L"$zelto_value(");
    edits_.insert(tokens_[i].end, L")");
  }

  // What the author called in front of the dot at `dot`, where it can be said in a few words.
  std::wstring_view receiver(std::size_t start, std::size_t dot) const {
    constexpr std::size_t kMost = 60;
    for (std::size_t i = start; i < dot; ++i) {
      if (!is(i, L".") && !is(i, L"this") && tokens_[i].kind != Token::name) return {};
      if (i > start && tokens_[i].begin != tokens_[i - 1].end) return {};
    }
    const std::wstring_view text = text_.substr(tokens_[start].begin, tokens_[dot - 1].end - tokens_[start].begin);
    return text.size() <= kMost && text.find(L'\\') == std::wstring_view::npos ? text : std::wstring_view();
  }

  void call_bare(std::size_t close) {
    edits_.open_wrapping(tokens_[start_of(close - 2)].begin, tokens_[close].end, L"$zelto_call(");
    edits_.replace(tokens_[close - 3].begin, 1, L", ");
    edits_.insert(tokens_[close - 2].begin, L"\"");
    edits_.insert(tokens_[close - 2].end, L"\"");
    const std::wstring_view called = receiver(start_of(close - 2), close - 3);
    edits_.replace(tokens_[close - 1].begin, 1, called.empty() ? L"," : L", \"" + std::wstring(called) + L"\"");
  }

  // The parenthesis of `new Error(number, description)`.
  bool is_new_error(std::size_t open) const {
    if (open < 2 || !is(open, L"(") || !is(open - 1, L"Error") || !is(open - 2, L"new")) return false;
    for (std::size_t i = open + 1; i < tokens_[open].partner; ++i) {
      if (is(i, L",")) return true;
      if (tokens_[i].kind == Token::open) i = tokens_[i].partner;
    }
    return false;
  }

  void make_error(std::size_t open) {
    edits_.replace(tokens_[open - 2].begin, 3, L"$zelto_error(");
    edits_.replace(tokens_[open].begin, 1, L",");
  }

  // The brace of `} catch (name) {`. A class method called `catch` in that place gets the same, which does no harm.
  bool is_catch_body(std::size_t open) const {
    return open >= 5 && is(open, L"{") && is(open - 1, L")") && tokens_[open - 2].kind == Token::name &&
           is(open - 3, L"(") && is(open - 4, L"catch") && tokens_[open - 4].kind == Token::keyword &&
           is(open - 5, L"}");
  }

  // A string may hold the two line ends that the engine counts everywhere but there: they become escapes,
  // with a continuation that it does count.
  void escape_line_ends(std::size_t i) {
    for (std::size_t at = tokens_[i].begin; at < tokens_[i].end; ++at) {
      if (text_[at] == L'\\') {
        ++at;
      } else if (text_[at] == 0x2028 || text_[at] == 0x2029) {
        edits_.insert(at, text_[at] == 0x2028 ? L"\\u2028\\" : L"\\u2029\\");
      }
    }
  }

  const Loops loops_;
  const Spreads spreads_;
  std::set<std::wstring_view> constants_;     // names that stood behind `const`
  std::size_t around_ = Token::kNone;         // the bracket that is open
  std::vector<std::size_t> enclosing_;        // those around it, outermost first
  unsigned patterns_ = 0;                     // of these
  std::size_t last_optional_ = Token::kNone;  // the "?." that came last
  std::vector<bool> is_read_;                 // the last tokens of chains that read_value has wrapped
  SourceEdits edits_;
};

}  // namespace

Rewritten rewrite(std::wstring_view text) {
  const auto tokens = tokenize(text);
  if (!tokens) return {{std::wstring(text), {}, {}}, {}, {}};
  Rewritten rewritten = Rewriter(text, tokens->all).run();
  rewritten.scope = page_scope(text, tokens->all);
  rewritten.markup_comments = tokens->markup_comments;
  return rewritten;
}

void set_text(Program& program, Rewritten rewritten) {
  program.text = korlib::to_utf16(rewritten.text);
  program.shifts = std::move(rewritten.shifts);
  program.removed = std::move(rewritten.removed);
  program.scope = std::move(rewritten.scope);
}

}  // namespace zelto::language
