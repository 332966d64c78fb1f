#include "app/check/variables.h"

#include "app/check/script_words.h"
#include "base/letter_case.h"

namespace zelto::check {

using language::Token;

Variables::Variables(std::wstring_view text, const std::vector<Token>& tokens) : Chains(text, tokens) {
  find_functions();
  find_declarations();
  find_values();
}

const Variables::Variable* Variables::find(std::size_t name) const {
  const auto found = variables_.find(key_of(name));
  return found == variables_.end() ? nullptr : &found->second;
}

// A name that is neither a member's nor that of a part of an object.
bool Variables::is_variable(std::size_t i) const {
  if (tokens_[i].kind != Token::name || is(i - 1, L".", L"?.")) return false;
  return !(is(i + 1, L":") && is(i - 1, L"{", L","));
}

// What stands in parentheses in front of a block, and belongs to no statement. Calls in front of a block on its own are
// taken for it as well: what they name is left alone there.
bool Variables::is_parameters(std::size_t open) const {
  return is(open, L"(") && tokens_[open].kind == Token::open && !tokens_[open].control && body_of(open) != Token::kNone;
}

// The brace that opens the body of a function with these parameters.
std::size_t Variables::body_of(std::size_t parameters) const {
  std::size_t next = tokens_[parameters].partner + 1;
  if (is(next, L"=>")) ++next;
  return is(next, L"{") ? next : Token::kNone;
}

// Whether what stands in the brackets is given values.
bool Variables::is_pattern(std::size_t open) const {
  const std::size_t behind = tokens_[open].partner + 1;
  if (is(open, L"(")) return is(open - 1, L"catch") || is(behind, L"=>");
  return is(behind, L"=", L"of", L"in") || is(open - 1, L"var", L"let", L"const");
}

void Variables::find_functions() {
  functions_.push_back({0, {}});
  struct Open {
    std::size_t function;
    std::size_t end;  // the last token of the body
  };
  std::vector<Open> open = {{0, tokens_.size()}};
  function_of_.resize(tokens_.size());
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    while (open.size() > 1 && i > open.back().end) open.pop_back();
    if (is_parameters(i)) {
      functions_.push_back({open.back().function, {}});
      open.push_back({functions_.size() - 1, tokens_[body_of(i)].partner});
    }
    function_of_[i] = open.back().function;
  }
}

void Variables::declare_names(std::size_t begin, std::size_t end, std::size_t function) {
  for (std::size_t i = begin; i < end; ++i) {
    if (is_variable(i)) functions_[function].declared.insert(word(i));
  }
}

// `var a = 1, {b} = c, d`
void Variables::declare_list(std::size_t keyword) {
  bool is_name = true;
  for (std::size_t i = keyword + 1; i < tokens_.size() && tokens_[i].kind != Token::close; ++i) {
    if (is(i, L";") || (i > keyword + 1 && tokens_[i].statement_start)) return;
    const std::size_t end = tokens_[i].kind == Token::open ? tokens_[i].partner : i;
    if (is_name) declare_names(i, end + 1, function_of_[keyword]);
    is_name = is(i, L",");
    i = end;
  }
}

// `let` is a name as well, where none follows.
bool Variables::declares(std::size_t i) const {
  if (is(i - 1, L".", L"?.") || !is(i, L"var", L"let", L"const") || i + 1 >= tokens_.size()) return false;
  return tokens_[i + 1].kind == Token::name || is(i + 1, L"{", L"[");
}

void Variables::find_declarations() {
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    if (is_parameters(i)) {
      const std::size_t end = tokens_[i].partner;
      declare_names(i, end, function_of_[i]);
      for (std::size_t name = i; name < end; ++name) {
        if (is_variable(name)) variables_[{function_of_[i], word(name)}].has_others = true;
      }
      i = end;
    } else if (declares(i)) {
      declare_list(i);
    } else if (tokens_[i].kind == Token::name && is(i - 1, L"function", L"class")) {
      functions_[function_of_[i]].declared.insert(word(i));
    }
  }
}

Variables::Key Variables::key_of(std::size_t name) const {
  std::size_t function = function_of_[name];
  while (function != 0 && !functions_[function].declared.contains(word(name))) function = functions_[function].outer;
  return {function, word(name)};
}

void Variables::find_values() {
  std::vector<bool> in_pattern = {false};
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    if (tokens_[i].kind == Token::open) in_pattern.push_back(in_pattern.back() || is_pattern(i));
    if (tokens_[i].kind == Token::close && in_pattern.size() > 1) in_pattern.pop_back();
    read_whole_script(i);
    if (is_variable(i)) read_name(i, in_pattern.back());
  }
}

void Variables::read_name(std::size_t i, bool is_in_pattern) {
  const bool changes = is(i - 1, L"++", L"--") || is_postfix(i + 1 < tokens_.size() ? i + 1 : i) ||
                       (is_assignment(i + 1) && !is(i + 1, L"="));
  const bool is_function = is(i - 1, L"function", L"class") || (is(i - 1, L"*") && is(i - 2, L"function"));
  const bool walks = is(i - 1, L"in") || is(i + 1, L"in", L"of", L"=>");
  if (is_in_pattern || changes || is_function || walks) {
    variables_[key_of(i)].has_others = true;
  } else if (is(i + 1, L"=")) {
    variables_[key_of(i)].values.push_back(i + 2);
  }
}

// Code made of text, `with`, and the global object, by which a name's value may change unseen.
void Variables::read_whole_script(std::size_t i) {
  const bool is_word = is_variable(i);
  are_uncertain_ |= (is_word && is(i, L"eval", L"Function")) || (tokens_[i].kind == Token::keyword && is(i, L"with"));
  if ((is(i, L"this") && tokens_[i].kind == Token::literal) || (is_word && is(i, L"globalThis"))) {
    are_uncertain_ |= is(i + 1, L"[");
    if (is(i + 1, L".") && is_assignment(i + 3)) variables_[{0, word(i + 2)}].has_others = true;
  }
  if (tokens_[i].kind == Token::name && base::equal_ascii(word(i), L"PutIntoProp")) {
    const std::wstring_view name = literal_text(word(i + 2));
    if (!name.empty()) variables_[{0, name}].has_others = true;
  }
}

}  // namespace zelto::check
