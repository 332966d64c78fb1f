#include "app/check/script_words.h"

#include <initializer_list>

#include "base/letter_case.h"
#include "language/lexemes.h"

namespace zelto::check {

namespace {

using language::Token;

class Reader : language::TokenText {
 public:
  Reader(const PageScript& script, const std::vector<Token>& tokens)
      : TokenText(script.written, tokens), places_(script), lacks_includes_(script.lacks_includes) {}

  ScriptWords read() {
    words_.draw_prefixes.insert(L"OnDraw_");
    if (lacks_includes_) make_all();
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      if (tokens_[i].kind == Token::name) read_name(i);
      if (tokens_[i].kind == Token::literal || word(i).starts_with(L'`') || word(i).starts_with(L'}')) split(word(i));
    }
    return std::move(words_);
  }

 private:
  bool is_like(std::size_t i, std::wstring_view name) const { return base::equal_ascii(word(i), name); }

  void read_name(std::size_t i) {
    const std::wstring_view name = word(i);
    words_.all.emplace(name);
    if (is(i, L"eval", L"Function") || (is(i - 1, L"this") && is(i, L"["))) make_all();
    if (is_like(i, L"PutIntoProp")) words_.makes_variables = true;
    if (is_like(i, L"NewTemplator")) read_prefix(i + 1);
    if (is_like(i, L"ActiveXObject") || is_like(i, L"CreateObject")) {
      words_.draws_by_itself |= base::equal_ascii(literal_text(word(i + 2)), L"Mirt.TextTemplator");
    }
    if (is(i - 1, L".")) read_template(i);
  }

  void make_all() { words_.makes_variables = words_.makes_draw_functions = true; }

  void read_prefix(std::size_t open) {
    const std::wstring_view prefix = literal_text(word(open + 1));
    if (is(open + 2, L")") && !prefix.empty()) {
      words_.draw_prefixes.emplace(prefix);
    } else {
      words_.makes_draw_functions = true;
    }
  }

  // `.TemplateFolder = Server.MapPath("…")`, `.Template = "…"` and the like.
  void read_template(std::size_t i) {
    const std::wstring_view text = literal_text(word(i + 2));
    const bool ends = is(i + 3, L";", L")") || i + 3 >= tokens_.size() || tokens_[i + 3].statement_start;
    if (is(i + 1, L"=") && is_like(i, L"TemplateFolder") && is_like(i + 4, L"MapPath") && is(i + 7, L")")) {
      words_.template_folders.emplace_back(literal_text(word(i + 6)));
    } else if (is(i + 1, L"=") && ends && is_like(i, L"TemplateExt")) {
      words_.template_extensions.emplace_back(text);
    } else if (text.empty() || !ends) {
      return;
    } else if ((is(i + 1, L"=") && (is_like(i, L"Template") || is_like(i, L"DefaultTemplate"))) ||
               (is(i + 1, L"(") && is_like(i, L"DrawTemplate"))) {
      words_.templates.push_back({std::wstring(text), places_.at(tokens_[i + 2].begin)});
    }
  }

  void split(std::wstring_view text) {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t begin = at;
      while (at < text.size() && language::is_word(text[at]) && text[at] != L'\\') ++at;
      if (at > begin)
        words_.all.emplace(text.substr(begin, at - begin));
      else
        ++at;
    }
  }

  WrittenPlaces places_;
  const bool lacks_includes_;
  ScriptWords words_;
};

}  // namespace

std::wstring_view literal_text(std::wstring_view token) {
  if (token.size() < 2 || (token.front() != L'"' && token.front() != L'\'')) return {};
  token = token.substr(1, token.size() - 2);
  return token.find(L'\\') == std::wstring_view::npos ? token : std::wstring_view();
}

ScriptWords any_words() {
  ScriptWords words;
  words.draw_prefixes.insert(L"OnDraw_");
  words.makes_variables = words.makes_draw_functions = true;
  return words;
}

ScriptWords words_of(const PageScript& script, const std::vector<Token>& tokens) {
  return Reader(script, tokens).read();
}

}  // namespace zelto::check
