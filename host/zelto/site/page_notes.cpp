#include "site/page_notes.h"

#include <fmt/xchar.h>
#include <korlib/combstr.h>
#include <korlib/comvariant.h>
#include <korlib/dictionary.h>
#include <korlib/ptr.h>

#include <algorithm>

#include "base/near_names.h"
#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

constexpr std::size_t kLongestText = 200;          // characters of a value or statement
constexpr std::size_t kLongestStatement = 16'384;  // of the one that failed

struct Words {
  std::wstring holder;  // of the value
  bool must_be_there;
};

Words words_of(TemplateSlip slip) {
  switch (slip) {
    case TemplateSlip::no_item:
      return {L"View", true};
    case TemplateSlip::no_include:
      return {L"Include", true};
    case TemplateSlip::no_bag_item:
      return {L"the bag", false};
    case TemplateSlip::no_session_value:
      return {L"the session", false};
    case TemplateSlip::no_application_value:
      return {L"the application", false};
    default:
      return {L"", true};
  }
}

// What an object becomes that has no text of its own. A function is called instead.
bool is_text_of_any_object(std::wstring_view text) { return text.starts_with(L"[object "); }

std::wstring shortened(std::wstring_view text) {
  return std::wstring(text.substr(0, kLongestText)) + (text.size() > kLongestText ? L"…" : L"");
}

std::string milliseconds(PageNotes::Clock::duration time) {
  return fmt::format("{:.1f} ms", std::chrono::duration<double, std::milli>(time).count());
}

std::wstring text_of(const VARIANT& value);

// What a dictionary has something under, in its order; none of another object.
std::vector<std::pair<std::wstring, CComVariant>> items_of(IUnknown* values) {
  std::vector<std::pair<std::wstring, CComVariant>> items;
  const CComQIPtr<IKorLibDictionary> dictionary(values);
  CComVariant all;
  if (!dictionary || FAILED(dictionary->Keys(&all)) || all.vt != (VT_ARRAY | VT_VARIANT)) return items;
  const SAFEARRAY& array = *all.parray;
  const auto* key = static_cast<const VARIANT*>(array.pvData);
  for (ULONG i = 0; i < array.rgsabound[0].cElements; ++i, ++key) {
    CComVariant value;
    if (key->vt == VT_BSTR && SUCCEEDED(dictionary->get_Item(*key, &value)) && value.vt != VT_EMPTY)
      items.emplace_back(korlib::view_of(key->bstrVal), std::move(value));
  }
  return items;
}

// Of a page's bag, say: "{name: Ann, visits: 3}".
std::wstring text_of(IKorLibDictionary& dictionary) {
  constexpr std::size_t kMostItems = 20;
  const auto items = items_of(&dictionary);
  std::wstring text;
  for (std::size_t i = 0; i < std::min(items.size(), kMostItems); ++i) {
    const auto& [key, value] = items[i];
    const bool is_object = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    text += (text.empty() ? L"" : L", ") + key + L": " + (is_object ? std::wstring(L"an object") : text_of(value));
  }
  return L"{" + text + (items.size() > kMostItems ? L", …}" : L"}");
}

std::wstring text_of(const VARIANT& value) {
  CComVariant text;
  if (value.vt == VT_EMPTY) return L"nothing";
  if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) {
    const CComQIPtr<IKorLibDictionary> dictionary(value.punkVal);
    return dictionary ? text_of(*dictionary.get()) : L"an object";
  }
  if (value.vt & VT_ARRAY) return L"an array";
  if (FAILED(VariantChangeType(&text, &value, 0, VT_BSTR))) return L"a value without text";
  return shortened(korlib::view_of(text.bstrVal));
}

std::string section(std::string_view title, std::string_view rows) {
  return rows.empty() ? std::string() : fmt::format("<h2>{}</h2>\n<ul>\n{}</ul>\n", title, rows);
}

std::string row(std::string_view text) { return fmt::format("<li>{}</li>\n", text); }

}  // namespace

void PageNotes::add_slip(TemplateSlip slip, std::wstring_view name, std::wstring_view place,
                         const std::function<Names()>& names_of) {
  if (slip == TemplateSlip::object_as_text && !is_text_of_any_object(name)) return;
  const std::wstring mark = place.empty() ? L"(#" + std::wstring(name) + L"#)" : std::wstring(place);
  if (known_marks_.size() == kMostKnownMarks || !known_marks_.insert(mark).second) return;
  std::wstring words = mark + L" has no type character";
  if (slip == TemplateSlip::object_as_text) {
    words = mark + L" shows an object as text: '" + shortened(name) + L"'";
  } else if (slip != TemplateSlip::without_type) {
    Names others = names_of();
    std::erase(others, name);
    const std::wstring near = base::did_you_mean(others, name);
    const auto [holder, must_be_there] = words_of(slip);
    if (near.empty() && !must_be_there) return;
    words = mark + L" shows nothing: " + holder + L" has no '" + std::wstring(name) + L"'";
    if (!near.empty()) words += L", " + near;
  }
  add_words(std::move(words));
}

void PageNotes::add_extra_arguments(std::wstring_view place, std::wstring_view member, std::size_t takes,
                                    std::size_t given) {
  std::wstring words =
      fmt::format(L"{}: '{}' takes {} {}, not {}", place, member, takes == 0 ? L"no" : std::to_wstring(takes),
                  takes == 1 ? L"argument" : L"arguments", given);
  if (known_marks_.size() < kMostKnownMarks && known_marks_.insert(words).second) add_words(std::move(words));
}

void PageNotes::add_words(std::wstring words) {
  if (slips_.size() < kMostSlips)
    slips_.push_back(std::move(words));
  else
    ++more_slips_;
}

std::string PageNotes::more_slips() const {
  const bool is_at_least = known_marks_.size() == kMostKnownMarks;
  return more_slips_ == 0 ? std::string() : fmt::format("and {}{} more", is_at_least ? "at least " : "", more_slips_);
}

void PageNotes::add_template(const std::string& file, std::wstring_view charset) {
  const auto known = std::ranges::find(templates_, file, &Drawn::file);
  if (known != templates_.end()) {
    ++known->times;
    known->charset = charset;
  } else if (templates_.size() < kMostTemplates) {
    templates_.push_back({file, std::wstring(charset)});
  }
}

std::wstring PageNotes::charset_of(std::string_view file) const {
  const auto known = std::ranges::find(templates_, file, &Drawn::file);
  return known == templates_.end() ? std::wstring() : known->charset;
}

void PageNotes::on_statement(std::wstring_view sql, Clock::duration took) noexcept try {
  if (statements_.size() < kMostStatements)
    statements_.push_back(row(fmt::format("<code>{}</code>, {}", shown_as_html(shortened(sql)), milliseconds(took))));
  else
    ++more_statements_;
} catch (...) {
  ++more_statements_;  // there was no memory for its words
}

void PageNotes::on_refused(std::wstring_view sql, const std::vector<std::wstring>& parameters,
                           std::wstring_view error) noexcept try {
  refused_statement_.clear();
  refused_ = error;
  std::string statement =
      fmt::format("<h2>The statement</h2>\n<pre>{}</pre>\n", shown_as_html(sql.substr(0, kLongestStatement)));
  std::string values;
  for (const std::wstring& value : parameters) values += row(shown_as_html(value));
  if (!values.empty()) statement += fmt::format("<h2>Its parameters</h2>\n<ol>\n{}</ol>\n", values);
  refused_statement_ = std::move(statement);
} catch (...) {
  return;  // there was no memory for it
}

std::string PageNotes::refused(const PageError& error) const {
  const auto is_told = [this](const std::wstring& words) { return words.find(refused_) != words.npos; };
  const bool is_this =
      !refused_.empty() &&
      (is_told(error.description) || std::ranges::any_of(error.causes, is_told, &PageError::Cause::description));
  return is_this ? refused_statement_ : std::string();
}

void PageNotes::add_bag(std::wstring_view page, IUnknown* bag) {
  const CComQIPtr<IKorLibDictionary> dictionary(bag);
  if (!dictionary) return;
  std::erase_if(bags_, [page](const auto& each) { return each.first == page; });
  bags_.emplace_back(page, text_of(*dictionary.get()));
}

void PageNotes::add_console(std::string_view line) { console_ += row(shown_as_html(to_wide(line))); }

void PageNotes::end_phase(std::string_view name) {
  const Clock::time_point now = Clock::now();
  phases_.emplace_back(name, now - std::exchange(phase_began_, now));
}

std::string PageNotes::warning(std::string_view page) const {
  if (slips_.empty()) return {};
  std::string line = std::string(page) + ": warning: ";
  for (std::size_t i = 0; i < slips_.size(); ++i) line += (i == 0 ? "" : "; ") + to_utf8(slips_[i]);
  return more_slips_ == 0 ? line : line + " " + more_slips();
}

std::string PageNotes::panel(VariantStore* session) const {
  std::string slips;
  for (const std::wstring& slip : slips_) slips += row(shown_as_html(slip));
  if (more_slips_ > 0) slips += row(more_slips());
  std::string templates;
  for (const auto& [file, charset, times] : templates_)
    templates += row(shown_as_html(to_wide(file)) + (times > 1 ? fmt::format(", {} times", times) : std::string()));
  std::string phases;
  for (const auto& [name, took] : phases_) phases += row(fmt::format("{}: {}", name, milliseconds(took)));
  std::string statements;
  for (const std::string& each : statements_) statements += each;
  if (more_statements_ > 0) statements += row(fmt::format("and {} more", more_statements_));
  std::string bags;
  for (const auto& [name, items] : bags_) bags += row(shown_as_html(fmt::format(L"{}: {}", name, items)));
  std::string values;
  std::vector<std::wstring> names;
  if (session && SUCCEEDED(session->names(names))) {
    for (const std::wstring& name : names) {
      CComVariant value;
      if (SUCCEEDED(session->get(name, &value))) values += row(shown_as_html(name + L": " + text_of(value)));
    }
  }
  return section("Warnings", slips) + section("Console", console_) + section("Templates", templates) +
         section("Statements", statements) + section("Time", phases) + section("Session", values) +
         section("Bags", bags);
}

std::string PageNotes::panel_of_page(VariantStore* session) const {
  return "\n<section id=\"zelto-debug\" style=\"all: revert; clear: both; margin: 2em 0 0; padding: 1em; border-top: "
         "2px "
         "solid #999; background: #f4f4f4; color: #222; font: 14px/1.4 sans-serif; text-align: left\">\n" +
         panel(session) + "</section>\n";
}

PageNotes::Names keys_of(IUnknown* values) {
  PageNotes::Names keys;
  for (auto& [key, value] : items_of(values)) keys.push_back(key);
  return keys;
}

}  // namespace zelto
