#include "script/template_places.h"

#include <fmt/xchar.h>
#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <mirt/template_places.h>

#include <algorithm>
#include <optional>

#include "script/cause_chain.h"
#include "script/text.h"

namespace zelto::script {
namespace {

constexpr std::wstring_view kBeforeMore = L"and ";
constexpr std::wstring_view kMore = L" more";

// The number at the front, which is taken from the text; 0 when there is none.
int take_number(std::wstring_view& text) {
  constexpr int kMost = 100'000'000;
  int number = 0;
  while (!text.empty() && text.front() >= L'0' && text.front() <= L'9' && number < kMost) {
    number = number * 10 + (text.front() - L'0');
    text.remove_prefix(1);
  }
  return number;
}

bool take(std::wstring_view& text, std::wstring_view wanted) {
  if (!text.starts_with(wanted)) return false;
  text.remove_prefix(wanted.size());
  return true;
}

// Nothing when the line is none.
std::optional<TemplatePlace> read_place(std::wstring_view line) {
  for (std::size_t colon = line.find(L':'); colon != line.npos; colon = line.find(L':', colon + 1)) {
    std::wstring_view rest = line.substr(colon + 1);
    TemplatePlace place;
    place.line = take_number(rest);
    if (place.line == 0 || !take(rest, L":")) continue;
    place.column = take_number(rest);
    if (place.column == 0 || !take(rest, L": ")) continue;
    place.file = to_utf8(line.substr(0, colon));
    place.mark = rest;
    return place;
  }
  return {};
}

// How many places there are more; 0 when the line does not say that.
std::size_t read_more(std::wstring_view line) {
  if (!take(line, kBeforeMore)) return 0;
  const int more = take_number(line);
  return line == kMore ? static_cast<std::size_t>(more) : 0;
}

}  // namespace

std::string site_path(std::string file, std::string_view root) {
  std::ranges::replace(file, '\\', '/');
  if (!root.empty() && file.starts_with(root) && file.substr(root.size()).starts_with('/')) file.erase(0, root.size());
  return file;
}

TemplatePlaces read_places(std::wstring_view list) {
  TemplatePlaces places;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(L'\n'), list.size());
    const std::wstring_view line = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    if (auto place = read_place(line); place && places.listed.size() < mirt::kMostTemplatePlaces) {
      places.listed.push_back(std::move(*place));
    } else {
      places.more += place ? 1 : read_more(line);
    }
  }
  return places;
}

std::wstring list_of(const TemplatePlaces& places) {
  std::wstring list;
  for (const TemplatePlace& place : places.listed) {
    if (!list.empty()) list += L'\n';
    list += korlib::to_wide(place.file) + fmt::format(L":{}:{}: ", place.line, place.column) + place.mark;
  }
  return places.more == 0 ? list : list + fmt::format(L"\n{}{}{}", kBeforeMore, places.more, kMore);
}

// The list of an error that comes out of one function after the other is as it should be but for its last line.
std::wstring named_from_root(std::wstring_view list, std::string_view root) {
  const bool is_named = list.find(L'\\') == list.npos && list.find(korlib::to_wide(root)) == list.npos;
  if (is_named) return std::wstring(list);
  TemplatePlaces places = read_places(list);
  for (TemplatePlace& place : places.listed) place.file = site_path(std::move(place.file), root);
  return list_of(places);
}

std::wstring template_places_of(IErrorInfo* info, std::string_view root) {
  DWORD context = 0;
  CComBSTR list;
  if (!info || FAILED(info->GetHelpContext(&context)) || context != mirt::kTemplatePlaces) return {};
  return SUCCEEDED(info->GetHelpFile(list.put())) ? named_from_root(list.view(), root) : std::wstring();
}

void hand_on(std::wstring list) {
  CComPtr<IErrorInfo> info;
  if (list.empty() || GetErrorInfo(0, info.put()) != S_OK) return;
  CComPtr<ICreateErrorInfo> made;
  if (SUCCEEDED(info.query(made.put())) && SUCCEEDED(made->SetHelpFile(list.data())))
    made->SetHelpContext(mirt::kTemplatePlaces);
  SetErrorInfo(0, info.get());
}

void set_list(JSContextRef context, JSObjectRef error, std::wstring_view list) {
  if (!list.empty()) set_hidden(context, error, "templates", string_value(context, list));
}

void set_places(JSContextRef context, JSObjectRef error, std::wstring_view list) {
  const auto innermost = read_place(list.substr(0, list.find(L'\n')));
  if (!innermost) return;
  set_list(context, error, list);
  set_hidden(context, error, "template", string_value(context, korlib::to_wide(innermost->file)));
  set_hidden(context, error, "line", JSValueMakeNumber(context, innermost->line));
  set_hidden(context, error, "column", JSValueMakeNumber(context, innermost->column));
  set_hidden(context, error, "mark", string_value(context, innermost->mark));
}

// A script may have given its exception such a property too: what is no list of places is not read.
std::wstring own_places_of(JSContextRef context, JSValueRef exception) {
  if (!exception || !JSValueIsObject(context, exception)) return {};
  JSValueRef list = property(context, object_of(exception), "templates");
  if (!JSValueIsString(context, list)) return {};
  std::wstring text = message_of(context, list);
  return read_place(std::wstring_view(text).substr(0, text.find(L'\n'))) ? text : std::wstring();
}

std::wstring places_of(JSContextRef context, JSValueRef exception) {
  for (CauseChain chain(context, exception); chain.link(); chain.advance()) {
    if (std::wstring list = own_places_of(context, chain.link()); !list.empty()) return list;
  }
  return {};
}

}  // namespace zelto::script
