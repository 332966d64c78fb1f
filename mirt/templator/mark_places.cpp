// Where the mark stands that failed, and what the thread's error object is told of it.
//
// Nothing of this is counted while a template is drawn: a drawing keeps the offset of the mark that it has come to, and
// the rest is found in the text when something has failed.
#include <algorithm>
#include <string>

#include <mirt/template_places.h>

#include "frame/error_places.h"
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

// The mark as it is written, or what is wrong with it.
std::wstring CTemplatorConcept::described_mark(const Progress& progress) const {
  const std::wstring_view text = progress.text;
  const Delimiters d = delimiters();
  if (stands_at(text, progress.mark, d.mark_close)) return std::wstring(d.mark_close) + L": closes no mark";
  std::size_t pos = progress.mark + d.mark_open.size();
  ReusableMark mark;
  if (FAILED(read_mark(d, text, pos, mark.data, mark.scratch)))
    return quoted(rest_of_line(text, progress.mark)) + L": opened here, never closed";
  return quoted(text.substr(progress.mark, pos + d.mark_close.size() - progress.mark));
}

std::wstring CTemplatorConcept::place_of(Progress progress) {
  if (progress.parsed) progress.mark = find_mark(*progress.parsed, progress.index, progress.text);
  if (progress.mark == Progress::kNowhere) return {};
  const std::wstring file(progress.file.empty() ? mirt::kTextTemplate : progress.file);
  return file + L":" + line_at(progress.text, progress.mark) + L": " + described_mark(progress);
}

// Where there is no memory to tell the place, the failure is that which it was.
HRESULT CTemplatorConcept::fail_at(HRESULT hr, const Progress& progress) noexcept try {
  if (!progress.is_in_mark()) return hr;
  mirt::ErrorInHand error;
  if (!error.is_readable()) return hr;
  if (error.is_full()) {
    error.add_unlisted();
  } else if (const std::wstring place = place_of(progress); !place.empty()) {
    error.add(place);
  }
  return hr;
} catch (...) {
  return hr;
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

void CTemplatorConcept::note_template(BSTR file) noexcept {
  if (!notes()) return;
  const mirt::ErrorInHand untouched;
  m_spNotes->NoteTemplate(file);
}

void CTemplatorConcept::note_bag(BSTR page, IUnknown* bag) noexcept {
  if (!notes()) return;
  const mirt::ErrorInHand untouched;
  m_spNotes->NoteBag(page, bag);
}
