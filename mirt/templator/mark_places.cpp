// Where the mark stands that failed, and what the thread's error object is told of it.
//
// Nothing of this is counted while a template is drawn: a drawing keeps the offset of the mark that it has come to, and
// the rest is found in the text when something has failed.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <mirt/template_places.h>

#include "frame/error_places.h"
#include "templator/delimiters.h"
#include "templator/scan.h"

namespace {

constexpr std::size_t kLongestMark = 160;  // characters of one that an error quotes

// On one line, and no longer than a message should be.
std::wstring quoted(std::wstring_view mark) {
  std::wstring text(mark.substr(0, kLongestMark));
  std::ranges::replace_if(
      text, [](wchar_t c) { return c < L' '; }, L' ');
  return text.size() < mark.size() ? text + L'…' : text;
}

std::wstring line_at(std::wstring_view text, std::size_t offset) {
  const std::wstring_view before = text.substr(0, offset);
  const std::size_t line_end = before.rfind(L'\n');
  const std::size_t column = line_end == before.npos ? offset : offset - line_end - 1;
  return std::to_wstring(std::ranges::count(before, L'\n') + 1) + L":" + std::to_wstring(column + 1);
}

std::wstring_view rest_of_line(std::wstring_view text, std::size_t offset) {
  const std::wstring_view rest = text.substr(offset);
  return rest.substr(0, rest.find_first_of(L"\r\n"));
}

}  // namespace

// Stops at one mark.
class CTemplatorConcept::Finder {
 public:
  explicit Finder(std::size_t wanted) : left_(wanted) {}

  HRESULT on_letters(std::wstring_view) { return S_OK; }
  HRESULT on_delimiter(BSTR) { return S_OK; }
  std::pair<CMarkData&, MarkScratch&> fresh_mark() {
    mark_.reset();
    return {mark_.data, mark_.scratch};
  }
  HRESULT on_mark(std::wstring_view) { return left_-- == 0 ? E_ABORT : S_OK; }

  bool has_found(const CMarkData& other) const {
    const auto is_same = [](const std::wstringstream* a, const std::wstringstream* b) {
      return a->view() == b->view();
    };
    return mark_.data.Type == other.Type && mark_.data.Name.view() == other.Name.view() &&
           std::ranges::equal(mark_.data.Params, other.Params, is_same);
  }

 private:
  ReusableMark mark_;
  std::size_t left_;
};

std::size_t CTemplatorConcept::find_mark(const CTemplate& tmpl, std::size_t mark, std::wstring_view text) {
  Progress progress{text, {}};
  Finder finder(mark);
  const bool is_there = scan(delimiters(), progress, finder) == E_ABORT && finder.has_found(*tmpl.Marks[mark]);
  return is_there ? progress.mark : Progress::kNowhere;
}

// Of the marks that are open at the end of the text, the innermost is the one to close. But one inside whose name goes
// over markup or lines has taken the end of another, and is it.
std::size_t CTemplatorConcept::find_unclosed(const Delimiters& d, std::wstring_view text, std::size_t outermost) const {
  struct Open {
    std::size_t begin;
    bool is_in_name = true;
    bool runs_on = false;
  };
  std::vector<Open> open;
  const auto pass = [&](std::wstring_view letters) {
    if (!open.empty() && open.back().is_in_name && letters.find_first_of(L"<\r\n") != letters.npos)
      open.back().runs_on = true;
  };
  std::size_t pos = outermost;
  while (pos < text.size()) {
    const std::size_t start = d.next_start(text, pos);
    pass(text.substr(pos, start - pos));
    pos = start;
    if (pos == text.size()) break;
    if (stands_at(text, pos, d.escape)) {
      take_escaped(text, pos, {&Escape, &MarkOpen, &MarkClose, &NameSeparator, &ParamSeparator});
    } else if (stands_at(text, pos, d.mark_open)) {
      open.push_back({pos});
      pos += d.mark_open.size();
      if (pos < text.size() && MarkTypes.view().find(text[pos]) != std::wstring_view::npos) ++pos;
    } else if (stands_at(text, pos, d.mark_close)) {
      if (open.size() > 1 && open.back().runs_on) return open.back().begin;
      if (!open.empty()) open.pop_back();
      pos += d.mark_close.size();
    } else if (stands_at(text, pos, d.name_separator) || stands_at(text, pos, d.param_separator)) {
      if (!open.empty()) open.back().is_in_name = false;
      pos += stands_at(text, pos, d.name_separator) ? d.name_separator.size() : d.param_separator.size();
    } else {
      pass(text.substr(pos++, 1));
    }
  }
  return open.empty() ? outermost : open.back().begin;
}

// The mark at `at` as it is written, or what is wrong with it; moves `at` to the one in it that is to be mended.
std::wstring CTemplatorConcept::described_mark(std::wstring_view text, std::size_t& at) const {
  const Delimiters d = delimiters();
  if (stands_at(text, at, d.mark_close)) return std::wstring(d.mark_close) + L": closes no mark";
  std::size_t pos = at + d.mark_open.size();
  ReusableMark mark;
  if (SUCCEEDED(read_mark(d, text, pos, mark.data, mark.scratch)))
    return quoted(text.substr(at, pos + d.mark_close.size() - at));
  at = find_unclosed(d, text, at);
  return quoted(rest_of_line(text, at)) + L": opened here, never closed";
}

std::wstring CTemplatorConcept::place_of(Progress progress) {
  if (progress.parsed) progress.mark = find_mark(*progress.parsed, progress.index, progress.text);
  if (progress.mark == Progress::kNowhere) return {};
  std::size_t at = progress.mark;
  const std::wstring mark = described_mark(progress.text, at);
  const std::wstring file(progress.file.empty() ? mirt::kTextTemplate : progress.file);
  return file + L":" + line_at(progress.text, at) + L": " + mark;
}

// Where there is no memory to tell the place, the failure is that which it was.
HRESULT CTemplatorConcept::fail_at(HRESULT hr, const Progress& progress) noexcept try {
  if (!progress.is_in_mark()) return hr;
  const wchar_t* const reason = std::exchange(m_reason, nullptr);
  mirt::ErrorInHand error;
  if (!error.is_readable()) return hr;
  if (error.is_full()) {
    error.add_unlisted();
  } else if (const std::wstring place = place_of(progress); !place.empty()) {
    error.add(reason ? place + L": " + reason : place);
  }
  return hr;
} catch (...) {
  return hr;
}

// The words name the steps as a script would: 'user.name'. Where there is no memory for them, there is no reason.
void CTemplatorConcept::set_failed_step(const VARIANT& value, const CMarkData& mark, std::size_t step,
                                        HRESULT hr) noexcept try {
  std::wstring owner(mark.Name.view());
  for (std::size_t i = 0; i < step; ++i) owner.append(L".").append(mark.Params[i]->view());
  owner = L"'" + quoted(owner) + L"'";
  const std::wstring_view wanted = mark.Params[step]->view();
  const std::wstring name = L"'" + quoted(wanted) + L"'";
  const bool is_array = value.vt == (VT_ARRAY | VT_VARIANT);
  if (is_array) {
    m_reasonOfStep = owner + (hr == DISP_E_BADINDEX ? L" has no element " : L" is an array, and has no ") + name;
  } else if (value.vt != VT_DISPATCH) {
    m_reasonOfStep = owner + L" is no object, and has no " + name;
  } else if (hr == DISP_E_UNKNOWNNAME || hr == DISP_E_MEMBERNOTFOUND) {
    m_reasonOfStep = owner + L" has no " + name;
  } else {
    m_reasonOfStep = name + L" of " + owner + L" cannot be read";
  }
  const std::wstring_view first = NameSeparator.view();
  if (!first.empty() && wanted.find(first) != wanted.npos)
    m_reasonOfStep.append(L" (parameters are parted by ").append(ParamSeparator.view()).append(L")");
  m_reason = m_reasonOfStep.c_str();
} catch (...) {
  m_reason = nullptr;
}

// Null where the host does not want to know.
ITemplateNotes* CTemplatorConcept::notes() noexcept {
  if (!m_hasAskedForNotes) m_spNotes.assign(m_pResponse);
  m_hasAskedForNotes = true;
  return m_spNotes.get();
}

// What cannot be told is left away: the page is drawn all the same.
void CTemplatorConcept::note_slip(TemplateSlip slip, BSTR name, IUnknown* values) noexcept try {
  if (!notes() || !m_pProgress || !m_pProgress->is_in_mark()) return;
  const mirt::ErrorInHand untouched;
  m_spNotes->NoteSlip(slip, name, CComBSTR(std::wstring_view(place_of(*m_pProgress))), values);
} catch (...) {
  return;
}

void CTemplatorConcept::note_template(BSTR file, BSTR charset) noexcept {
  if (!notes()) return;
  const mirt::ErrorInHand untouched;
  m_spNotes->NoteTemplate(file, charset);
}

void CTemplatorConcept::note_bag(BSTR page, IUnknown* bag) noexcept {
  if (!notes()) return;
  const mirt::ErrorInHand untouched;
  m_spNotes->NoteBag(page, bag);
}
