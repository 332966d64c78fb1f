#include "app/check/member_check.h"

#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib_host/class_table.h>

#include <algorithm>
#include <set>
#include <span>
#include <string>

#include "app/check/object_classes.h"
#include "app/check/script_words.h"
#include "app/suggestion.h"
#include "base/letter_case.h"
#include "base/near_names.h"
#include "intrinsics/application.h"
#include "intrinsics/request_object.h"
#include "intrinsics/response_object.h"
#include "intrinsics/server_object.h"
#include "intrinsics/session_object.h"
#include "language/chains.h"
#include "script/object_type.h"
#include "text/charset.h"

namespace zelto::check {

namespace {

using language::Token;

struct Object {
  std::wstring_view name;
  std::span<const korlib::Member> members;
};

const std::vector<Object>& objects() {
  static const std::vector<Object> all = {{L"Request", RequestObject::members()},
                                          {L"Response", ResponseObject::members()},
                                          {L"Server", ServerObject::members()},
                                          {L"Session", SessionObject::members()},
                                          {L"Application", ApplicationObject::members()}};
  return all;
}

bool has_class(std::wstring_view name) {
  CLSID clsid{};
  const CComBSTR text(name);
  return SUCCEEDED(CLSIDFromProgID(text.get(), &clsid)) || SUCCEEDED(CLSIDFromString(text.get(), &clsid));
}

std::string ending(const std::string& meant) { return meant.empty() ? "." : "; " + meant; }

class MemberReader : language::Chains {
 public:
  MemberReader(const PageScript& script, const std::vector<Token>& tokens, Findings& findings)
      : Chains(script.written, tokens), places_(script), findings_(findings), classes_(script, tokens) {}

  void read() {
    find_own_names();
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      if (tokens_[i].kind != Token::name) continue;
      if (is_object(i)) read_member(i);
      if (is(i - 1, L".", L"?.")) read_member_of_class(i);
      if (base::equal_ascii(word(i), L"CreateObject") || base::equal_ascii(word(i), L"ActiveXObject")) read_class(i);
    }
  }

 private:
  // A name that the script declares, in that spelling, is its own: var, function, or a parameter.
  void find_own_names() {
    std::vector<bool> in_parameters = {false};
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      const Token& token = tokens_[i];
      if (token.kind == Token::open) in_parameters.push_back(token.function_part && is(i, L"("));
      if (token.kind == Token::close && in_parameters.size() > 1) in_parameters.pop_back();
      if (token.kind != Token::name) continue;
      const bool is_catch = i > 1 && is(i - 1, L"(") && is(i - 2, L"catch");
      if (in_parameters.back() || is_catch || is(i + 1, L"=>") || is_declared(i)) own_.emplace(word(i));
    }
  }
  bool is_declared(std::size_t i) const {
    if (is(i - 1, L"var", L"let", L"const", L"function", L"class")) return true;
    if (is(i + 1, L"=") && !is(i - 1, L".", L"?.")) return true;  // also without a declaration
    return is(i - 1, L",") && is(i + 1, L",", L";");              // one of several
  }

  bool is_object(std::size_t i) const {
    if ((i > 0 && is(i - 1, L".", L"?.")) || !is(i + 1, L".", L"?.")) return false;
    return tokens_.size() > i + 2 && tokens_[i + 2].kind == Token::name && !own_.contains(std::wstring(word(i)));
  }

  void read_member(std::size_t i) {
    const auto object =
        std::ranges::find_if(objects(), [&](const Object& one) { return base::equal_ascii(one.name, word(i)); });
    if (object == objects().end()) return;
    std::vector<std::string> names;
    for (const korlib::Member& one : object->members) {
      if (base::equal_ascii(one.name, word(i + 2))) return;
      names.push_back(to_utf8(one.name));
    }
    tell_missing(i + 2, to_utf8(object->name), suggestion(names, to_utf8(word(i + 2))));
  }

  // Of an object that the page has made.
  void read_member_of_class(std::size_t i) {
    const ObjectClasses::Class* const made = i > 1 ? classes_.at(i - 2) : nullptr;
    if (!made || script::has_member(made->object.get(), std::wstring(word(i)))) return;
    tell_missing(i, to_utf8(made->name),
                 to_utf8(base::did_you_mean(script::nearest_member(made->object.get(), word(i)))));
  }

  void tell_missing(std::size_t i, const std::string& owner, const std::string& meant) {
    if (is_of_every_object(word(i))) return;
    const std::string what = owner + " has no member '" + to_utf8(word(i)) + "'" + ending(meant);
    const bool is_used = is(i + 1, L"(") || (i + 1 < tokens_.size() && (is_assignment(i + 1) || is_postfix(i + 1)));
    if (is_used) {
      findings_.error(places_.at(tokens_[i].begin), what);
    } else {
      findings_.warning(places_.at(tokens_[i].begin), what);
    }
  }

  // Of the language, by its exact name.
  static bool is_of_every_object(std::wstring_view member) {
    static constexpr std::wstring_view kNames[] = {L"constructor",
                                                   L"hasOwnProperty",
                                                   L"isPrototypeOf",
                                                   L"toString",
                                                   L"propertyIsEnumerable",
                                                   L"toLocaleString",
                                                   L"valueOf",
                                                   L"__proto__",
                                                   L"call",
                                                   L"apply",
                                                   L"bind"};
    return std::ranges::find(kNames, member) != std::end(kNames);
  }

  void read_class(std::size_t i) {
    const std::wstring_view name = literal_text(word(i + 2));
    if (!is(i + 1, L"(") || !is(i + 3, L")") || name.empty() || has_class(name)) return;
    std::vector<std::string> known;
    for (const std::wstring& one : korlib_host::prog_ids()) known.push_back(to_utf8(one));
    findings_.error(places_.at(tokens_[i + 2].begin),
                    "No class is registered as '" + to_utf8(name) + "'" + ending(suggestion(known, to_utf8(name))));
  }

  WrittenPlaces places_;
  Findings& findings_;
  ObjectClasses classes_;
  std::set<std::wstring> own_;
};

}  // namespace

void check_members(const PageScript& script, const std::vector<Token>& tokens, Findings& findings) {
  MemberReader(script, tokens, findings).read();
}

}  // namespace zelto::check
