#include "app/check/object_classes.h"

#include <algorithm>

#include <korlib/activation.h>
#include <korlib/errorinfo.h>
#include <korlib_host/class_table.h>
#include <korlib_host/registry_store.h>

#include "app/check/script_words.h"
#include "app/runtime.h"
#include "base/letter_case.h"
#include "script/object_type.h"

namespace zelto::check {

namespace {

using language::Token;

// What a member answers that always answers an object of one class.
struct Answer {
  std::wstring_view prog_id;  // of the class that has the member; in small letters, as all of them here
  std::wstring_view member;
  std::wstring_view answered;
};
constexpr Answer kAnswers[] = {{L"adodb.connection", L"execute", L"adodb.recordset"},
                               {L"adodb.command", L"execute", L"adodb.recordset"}};

// Variables that are made by each other, one behind the other.
constexpr unsigned kDeepest = 20;

// A class of another library runs that library's code when an object of it is made.
bool is_of_another_library(const std::wstring& prog_id) {
  const auto& own = component_classes();
  if (std::ranges::any_of(own, [&](const auto& one) { return base::equal_ascii(one.prog_id, prog_id); })) return false;
  const auto store = korlib_host::registry();
  return !store || store->has_key(prog_id + L"\\CLSID");
}

// As it is written where the class is registered.
std::wstring written(const std::wstring& prog_id) {
  for (const std::wstring& one : korlib_host::prog_ids()) {
    if (base::equal_ascii(one, prog_id)) return one;
  }
  return prog_id;
}

ObjectClasses::Class make(const std::wstring& prog_id) {
  ObjectClasses::Class made;
  CLSID clsid{};
  if (is_of_another_library(prog_id) || FAILED(CLSIDFromProgID(prog_id.c_str(), &clsid))) return made;
  // The component's objects say that there is no request, and can be asked for their names all the same.
  CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, made.object.put_void());
  SetErrorInfo(0, nullptr);
  if (made.object) made.name = script::kind_of(made.object.get());
  if (made.name.empty()) made.name = written(prog_id);
  return made;
}

}  // namespace

ObjectClasses::ObjectClasses(const PageScript& script, const std::vector<Token>& tokens)
    : tokens_(tokens), variables_(script.written, tokens) {}

const ObjectClasses::Class* ObjectClasses::at(std::size_t last) {
  if (variables_.are_uncertain()) return nullptr;
  const std::wstring prog_id = class_at(last);
  if (prog_id.empty()) return nullptr;
  const auto [entry, is_new] = made_.try_emplace(prog_id);
  if (is_new) entry->second = make(prog_id);
  return entry->second.object ? &entry->second : nullptr;
}

std::wstring ObjectClasses::class_at(std::size_t last) {
  if (last >= tokens_.size()) return {};
  if (tokens_[last].kind == Token::name) return class_of_name(last);
  return variables_.is(last, L")") ? class_of_call(tokens_[last].partner) : std::wstring();
}

std::wstring ObjectClasses::class_of_name(std::size_t name) {
  if (variables_.is(name - 1, L".", L"?.")) return {};
  const Variables::Variable* const variable = variables_.find(name);
  if (!variable || variable->has_others) return {};
  const auto [entry, is_new] = classes_.try_emplace(variable);  // first, for `a = a.Execute()`
  if (is_new && depth_ < kDeepest) {
    ++depth_;
    entry->second = class_of_values(*variable);
    --depth_;
  }
  return entry->second;
}

// `rs = null`
bool ObjectClasses::is_nothing(std::size_t value) const {
  return variables_.is(value, L"null", L"undefined") && ends_value(value + 1);
}

std::wstring ObjectClasses::class_of_values(const Variables::Variable& variable) {
  std::wstring found;
  for (const std::size_t value : variable.values) {
    if (is_nothing(value)) continue;
    const std::size_t end = variables_.end_of(variables_.is(value, L"new") ? value + 1 : value);
    if (end <= value || !ends_value(end)) return {};
    const std::wstring one = class_at(end - 1);
    if (one.empty() || (!found.empty() && one != found)) return {};
    found = one;
  }
  return found;
}

std::wstring ObjectClasses::class_of_call(std::size_t open) {
  const std::size_t name = open - 1;  // of what is called
  if (open == 0 || tokens_[name].kind != Token::name) return {};
  const std::wstring_view called = variables_.word(name);
  const bool has_one = variables_.is(open + 2, L")");
  const std::wstring text = has_one ? base::ascii_lowered(literal_text(variables_.word(open + 1))) : std::wstring();
  if (variables_.is(name - 1, L"new")) {
    return variables_.find(name) || !base::equal_ascii(called, L"ActiveXObject") ? std::wstring() : text;
  }
  if (name < 2 || !variables_.is(name - 1, L".")) return {};
  const std::size_t owner = name - 2;
  if (base::equal_ascii(called, L"CreateObject")) {
    const bool is_host = base::equal_ascii(variables_.word(owner), L"Server") && !variables_.is(owner - 1, L".", L"?.");
    return is_host && !variables_.find(owner) ? text : std::wstring();
  }
  for (const Answer& answer : kAnswers) {
    if (tokens_[owner].kind != Token::name || !base::equal_ascii(called, answer.member)) continue;
    if (class_of_name(owner) == answer.prog_id) return std::wstring(answer.answered);
  }
  return {};
}

}  // namespace zelto::check
