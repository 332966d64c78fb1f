#include "script/rewriter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "script/lexemes.h"
#include "script/tokens.h"

namespace zelto::script {
namespace {

constexpr auto kAssignments =
    std::to_array<std::wstring_view>({L"=", L"+=", L"-=", L"*=", L"/=", L"%=", L"**=", L"<<=", L">>=", L">>>=", L"&=",
                                      L"|=", L"^=", L"&&=", L"||=", L"?\?="});

class Rewriter {
 public:
  Rewriter(std::wstring_view text, const std::vector<Token>& tokens) : text_(text), tokens_(tokens) {}

  Rewritten run() {
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      rewrite_token(i);
      if (tokens_[i].statement_start) read_value(i, L", 1)");
      if (is_assigned_call(i)) assign_call(i);
    }
    apply();
    return std::move(result_);
  }

 private:
  void rewrite_token(std::size_t i) {
    const std::wstring_view text = word(i);
    switch (tokens_[i].kind) {
      case Token::keyword:
        if (text == L"throw" && tokens_[i].statement_start) insert(tokens_[i].end, L" $zelto.thrown =");
        if (text == L"return" && !line_ends_behind(i)) read_value(i + 1, L")");
        if ((text == L"const" || text == L"class") && top_level(i)) result_.declares_lexical_names = true;
        break;
      case Token::punctuator:
        if (is_assignment(i)) read_value(i + 1, L")");
        if (text == L"," && is_call(around_)) read_value(i + 1, L")");
        break;
      case Token::open:
        if (is_call(i) || is_condition(i)) read_value(i + 1, L")");
        enclosing_.push_back(std::exchange(around_, i));
        break;
      case Token::close:
        around_ = enclosing_.back();
        enclosing_.pop_back();
        break;
      case Token::literal:
        if (text.front() == L'"' || text.front() == L'\'') escape_line_ends(i);
        break;
      case Token::name:
        if (text == L"let" && top_level(i)) result_.declares_lexical_names = true;
        break;
    }
  }

  std::wstring_view word(std::size_t i) const {
    return i < tokens_.size() ? text_.substr(tokens_[i].begin, tokens_[i].end - tokens_[i].begin) : std::wstring_view();
  }
  bool is(std::size_t i, std::wstring_view what) const { return word(i) == what; }
  bool top_level(std::size_t i) const { return tokens_[i].depth == 0 && tokens_[i].statement_start; }
  bool line_ends_behind(std::size_t i) const { return i + 1 >= tokens_.size() || tokens_[i + 1].newline_before; }
  bool is_assignment(std::size_t i) const {
    return tokens_[i].kind == Token::punctuator &&
           std::find(kAssignments.begin(), kAssignments.end(), word(i)) != kAssignments.end();
  }

  void insert(std::size_t at, std::wstring text) { edits_.push_back({at, 0, std::move(text)}); }
  void replace(std::size_t at, std::size_t length, std::wstring text) {
    edits_.push_back({at, length, std::move(text)});
  }

  // The `(` of an argument list: what stands before it is a value, and no header or parameter list.
  bool is_call(std::size_t open) const {
    if (open == Token::kNone) return false;
    const Token& token = tokens_[open];
    return is(open, L"(") && open > 0 && !token.control && !token.function_part && tokens_[open - 1].ends_operand &&
           !is(open - 1, L"super");
  }

  bool is_condition(std::size_t open) const {
    return tokens_[open].control && (is(open - 1, L"if") || is(open - 1, L"while") || is(open - 1, L"switch"));
  }

  // One past a chain of names, calls and indices that begins at `first`; `first` when there is none.
  std::size_t chain_end(std::size_t first) const {
    if (first >= tokens_.size()) return first;
    const Token& token = tokens_[first];
    const bool starts =
        token.kind == Token::name || is(first, L"this") || (is(first, L"(") && !token.control && !token.function_part);
    if (!starts) return first;
    std::size_t i = (token.kind == Token::open ? token.partner : first) + 1;
    while (i < tokens_.size()) {
      if (is(i, L".") && i + 1 < tokens_.size() && tokens_[i + 1].kind == Token::name) {
        i += 2;
      } else if ((is(i, L"(") || is(i, L"[")) && tokens_[i].kind == Token::open && !tokens_[i].statement_start) {
        i = tokens_[i].partner + 1;
      } else {
        break;
      }
    }
    return i;
  }

  // Whether an expression that ends before token `i` is complete there.
  bool expression_ends(std::size_t i) const {
    if (i >= tokens_.size() || tokens_[i].statement_start) return true;
    const Token& next = tokens_[i];
    return is(i, L";") || (next.kind == Token::close && next.end > next.begin) ||
           (next.newline_before && next.kind == Token::open && is(i, L"{"));
  }

  // Wraps a chain that ends in a member's name and is all of its expression.
  void read_value(std::size_t first, const wchar_t* tail) {
    const std::size_t end = chain_end(first);
    if (end < first + 3 || !is(end - 2, L".")) return;
    const bool in_list = is(end, L",") && !tokens_[first].statement_start;
    if (!expression_ends(end) && !in_list) return;
    insert(tokens_[first].begin, L"$zelto_value(");
    insert(tokens_[end - 1].end, tail);
  }

  // The first token of the chain that `last` ends.
  std::size_t chain_start(std::size_t last) const {
    std::size_t i = last;
    for (;;) {
      if (tokens_[i].kind == Token::close) {
        i = tokens_[i].partner;
        const bool indexes = is(i, L"(") || is(i, L"[") || text_[tokens_[i].begin] == L'`';
        if (!indexes || i == 0 || !tokens_[i - 1].ends_operand || tokens_[i].statement_start) return i;
        --i;
      } else if (i >= 2 && (is(i - 1, L".") || is(i - 1, L"?."))) {
        i -= 2;
      } else if (tokens_[i].kind == Token::literal && text_[tokens_[i].begin] == L'`' && i > 0 &&
                 tokens_[i - 1].ends_operand) {
        --i;
      } else {
        return i;
      }
    }
  }

  // `f(x) =`, `f(x)++`, `++f(x)`; `i` is the closing parenthesis.
  bool is_assigned_call(std::size_t i) const {
    if (!is(i, L")") || tokens_[i].kind != Token::close || !is_call(tokens_[i].partner)) return false;
    const std::size_t start = chain_start(tokens_[i].partner - 1);
    if (tokens_[start].kind == Token::keyword || is(start, L"{") || (start > 0 && is(start - 1, L"new"))) return false;
    if (i + 1 < tokens_.size()) {
      if (is_assignment(i + 1)) return true;
      if ((is(i + 1, L"++") || is(i + 1, L"--")) && tokens_[i + 1].ends_operand) return true;
    }
    const bool prefixed =
        start > 0 && (is(start - 1, L"++") || is(start - 1, L"--")) && !tokens_[start - 1].ends_operand;
    return prefixed && chain_end(start) == i + 1;
  }

  void assign_call(std::size_t close) {
    const std::size_t open = tokens_[close].partner;
    insert(tokens_[chain_start(open - 1)].begin, L"$zelto.at(");
    replace(tokens_[open].begin, 1, L",");
    insert(tokens_[close].end, L".v");
  }

  // A string may hold the two line ends that the engine counts everywhere but there: they become escapes,
  // with a continuation that it does count.
  void escape_line_ends(std::size_t i) {
    for (std::size_t at = tokens_[i].begin; at < tokens_[i].end; ++at) {
      if (text_[at] == L'\\') {
        ++at;
      } else if (text_[at] == 0x2028 || text_[at] == 0x2029) {
        insert(at, text_[at] == 0x2028 ? L"\\u2028\\" : L"\\u2029\\");
      }
    }
  }

  void apply() {
    std::stable_sort(edits_.begin(), edits_.end(), [](const Edit& a, const Edit& b) { return a.at < b.at; });
    std::size_t at = 0;
    for (const Edit& edit : edits_) {
      copy(at, edit.at);
      const auto column = static_cast<int>(result_.text.size() - line_start_);
      result_.shifts.push_back({line_, column, static_cast<int>(edit.text.size()), static_cast<int>(edit.length)});
      result_.text += edit.text;
      at = edit.at + edit.length;
    }
    copy(at, text_.size());
  }

  // Text that stays as it is, and in it the lines as the engine counts them.
  void copy(std::size_t from, std::size_t to) {
    const std::size_t begin = result_.text.size();
    result_.text.append(text_.substr(from, to - from));
    for (std::size_t at = from; at < to; ++at) {
      if (!ends_line(text_, at)) continue;
      ++line_;
      line_start_ = begin + (at - from) + 1;
    }
  }

  struct Edit {
    std::size_t at;
    std::size_t length;
    std::wstring text;
  };

  std::wstring_view text_;
  const std::vector<Token>& tokens_;
  std::size_t around_ = Token::kNone;   // the bracket that is open
  std::vector<std::size_t> enclosing_;  // those around it, outermost first
  std::vector<Edit> edits_;
  Rewritten result_;
  int line_ = 1;
  std::size_t line_start_ = 0;  // in the result
};

}  // namespace

Rewritten rewrite(std::wstring_view text) {
  const auto tokens = tokenize(text);
  if (!tokens) return {std::wstring(text), true, {}, {}};
  Rewritten rewritten = Rewriter(text, tokens->all).run();
  rewritten.markup_comments = tokens->markup_comments;
  return rewritten;
}

}  // namespace zelto::script
