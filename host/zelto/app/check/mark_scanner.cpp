#include "app/check/mark_scanner.h"

#include <algorithm>
#include <iterator>

namespace zelto::check {

namespace {

constexpr std::wstring_view kOpen = L"(#";
constexpr std::wstring_view kClose = L"#)";
constexpr std::wstring_view kNext = L"#|#";
constexpr std::wstring_view kFirst = L"|";
constexpr std::wstring_view kEscape = L"^";

struct MarkType {
  wchar_t type;
  MarkNames names;
};

constexpr MarkType kTypes[] = {
    {L'%', MarkNames::draw_function}, {L';', MarkNames::variable}, {L':', MarkNames::variable},
    {L'`', MarkNames::template_file}, {L'*', MarkNames::value},    {L'/', MarkNames::value},
    {L'=', MarkNames::value},         {L'~', MarkNames::value},    {L'+', MarkNames::value},
    {L'-', MarkNames::value},         {L'$', MarkNames::value},    {L'\\', MarkNames::value},
    {L'&', MarkNames::value},         {L'|', MarkNames::value},    {L'!', MarkNames::value},
    {L'?', MarkNames::value},         {L'@', MarkNames::value},
};

class MarkScan {
 public:
  explicit MarkScan(std::wstring_view text) : text_(text) {}

  ScannedMarks run() {
    while (at_ < text_.size()) {
      if (!delimiter()) {
        if (is_in_name()) open_.back().mark.name += text_[at_];
        ++at_;
      }
    }
    if (!open_.empty()) tell_unclosed();
    return std::move(found_);
  }

 private:
  struct Open {
    Mark mark;
    bool has_name = false;  // all of it
  };

  bool stands(std::wstring_view what, std::size_t at) const { return text_.substr(at).starts_with(what); }
  bool is_in_name() const { return !open_.empty() && !open_.back().has_name; }

  // False for a character that is none.
  bool delimiter() {
    if (stands(kEscape, at_)) return escaped();
    if (stands(kOpen, at_)) return begin_mark();
    if (stands(kClose, at_)) return end_mark();
    if (open_.empty()) return false;
    const std::wstring_view separator = stands(kFirst, at_) ? kFirst : stands(kNext, at_) ? kNext : L"";
    if (separator.empty()) return false;
    open_.back().has_name = true;
    at_ += separator.size();
    return true;
  }

  bool escaped() {
    for (const std::wstring_view one : {kEscape, kOpen, kClose, kFirst, kNext}) {
      const bool is_outside = one == kEscape || one == kOpen || one == kClose;
      if (!stands(one, at_ + 1) || (open_.empty() && !is_outside)) continue;
      if (is_in_name()) open_.back().mark.is_literal = false;
      if (!open_.empty()) open_.front().mark.is_certain = false;
      at_ += 1 + one.size();
      return true;
    }
    return false;
  }

  bool begin_mark() {
    if (is_in_name()) open_.back().mark.is_literal = false;
    Open open;
    open.mark.begin = at_;
    open.mark.depth = open_.size();
    at_ += kOpen.size();
    if (at_ < text_.size() && names_of(text_[at_]) != MarkNames::nothing) open.mark.type = text_[at_++];
    open_.push_back(std::move(open));
    return true;
  }

  bool end_mark() {
    const std::size_t at = at_;
    at_ += kClose.size();
    if (open_.empty()) {
      found_.faults.push_back({at, "This \"#)\" closes no mark."});
      return true;
    }
    Open closed = std::move(open_.back());
    open_.pop_back();
    if (open_.empty() && !closed.mark.is_certain) doubt(closed.mark.begin);
    found_.marks.push_back(std::move(closed.mark));
    return true;
  }

  // Of the marks within one that protects something, which are read again when they are drawn.
  void doubt(std::size_t from) {
    for (auto mark = found_.marks.rbegin(); mark != found_.marks.rend() && mark->begin > from; ++mark)
      mark->is_certain = false;
  }

  // The one that was opened last; but where a name within goes over markup or lines, that one took the other's end.
  void tell_unclosed() {
    const auto runs_on = [&](const Mark& mark) {
      return mark.begin > open_.front().mark.begin && mark.name.find_first_of(L"<\r\n") != std::wstring::npos;
    };
    const auto first = std::ranges::find_if(found_.marks, runs_on);
    const std::size_t at = first == found_.marks.end() ? open_.back().mark.begin : first->begin;
    found_.faults.push_back({at, "This mark is opened here and never closed."});
  }

  std::wstring_view text_;
  std::size_t at_ = 0;
  std::vector<Open> open_;
  ScannedMarks found_;
};

}  // namespace

MarkNames names_of(wchar_t type) {
  const auto* found = std::ranges::find(kTypes, type, &MarkType::type);
  return found == std::end(kTypes) ? MarkNames::nothing : found->names;
}

ScannedMarks scan_marks(std::wstring_view text) { return MarkScan(text).run(); }

}  // namespace zelto::check
