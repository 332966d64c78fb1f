// The scanner: one mark, and a whole template into its parsed form.
#include <initializer_list>
#include <memory>
#include <string>

#include "frame/error.h"
#include "templator/delimiters.h"
#include "templator/templator_concept.h"

namespace {

// Fills a mark's streams one after the other. The text of the one at hand is gathered in a string: a
// stream that is written to directly keeps two kilobytes, however short its text.
class MarkWriter {
 public:
  MarkWriter(CMarkData& mark, MarkScratch& scratch) : mark_(mark), scratch_(scratch), target_(&mark.Name) {
    scratch_.gathered.clear();
  }

  void append(std::wstring_view text) { scratch_.gathered.append(text); }
  void begin_param() {
    finish();
    auto param = scratch_.take_param();
    mark_.Params.push_back(param.get());
    target_ = param.release();
  }
  void finish() {
    target_->str(scratch_.gathered);
    if (target_ == &mark_.Name) mark_.Key = CComBSTR(std::wstring_view(scratch_.gathered));
    scratch_.gathered.clear();
  }

 private:
  CMarkData& mark_;
  MarkScratch& scratch_;
  std::wstringstream* target_;
};

HRESULT push_text(CTemplate& tmpl, const std::wstring& run) {
  CComBSTR text(run.c_str());
  if (!text.get()) return E_OUTOFMEMORY;
  tmpl.Texts.push_back(text.get());
  (void)text.detach();
  return S_OK;
}

}  // namespace

Delimiters CTemplatorConcept::delimiters() const {
  return {Escape.view(), MarkOpen.view(), MarkClose.view(), NameSeparator.view(), ParamSeparator.view()};
}

bool CTemplatorConcept::is_complete() const {
  return Escape.get() && MarkOpen.get() && MarkClose.get() && MarkTypes.get() && NameSeparator.get() &&
         ParamSeparator.get();
}

const CComBSTR& CTemplatorConcept::take_escaped(std::wstring_view text, std::size_t& pos,
                                                std::initializer_list<const CComBSTR*> protectable) const {
  pos += Escape.length();
  for (const CComBSTR* delimiter : protectable) {
    if (!stands_at(text, pos, delimiter->view())) continue;
    pos += delimiter->length();
    return *delimiter;
  }
  return Escape;
}

HRESULT CTemplatorConcept::GetMarkData(wchar_t* text, unsigned int& pos, CMarkData& mark) {
  return mirt::guarded([&] {
    if (!is_complete()) return E_OUTOFMEMORY;
    std::size_t at = pos;
    MarkScratch scratch;
    const HRESULT hr = read_mark(delimiters(), korlib::view_of(text), at, mark, scratch);
    pos = static_cast<unsigned int>(at);
    return hr;
  });
}

HRESULT CTemplatorConcept::read_mark(const Delimiters& d, std::wstring_view text, std::size_t& pos, CMarkData& mark,
                                     MarkScratch& scratch) const {
  MarkWriter writer(mark, scratch);
  std::size_t depth = 0;
  if (pos < text.size() && MarkTypes.view().find(text[pos]) != std::wstring_view::npos) mark.Type = text[pos++];

  while (pos < text.size()) {
    const std::size_t start = d.next_start(text, pos);
    writer.append(text.substr(pos, start - pos));
    pos = start;
    if (pos == text.size()) break;
    if (stands_at(text, pos, d.escape)) {
      writer.append(take_escaped(text, pos, {&Escape, &MarkOpen, &MarkClose, &NameSeparator, &ParamSeparator}).view());
    } else if (stands_at(text, pos, d.mark_open)) {
      writer.append(d.mark_open);
      pos += d.mark_open.size();
      ++depth;
    } else if (stands_at(text, pos, d.mark_close)) {
      if (depth == 0) {
        writer.finish();
        return S_OK;
      }
      writer.append(d.mark_close);
      pos += d.mark_close.size();
      --depth;
    } else if (stands_at(text, pos, d.name_separator)) {
      pos += d.name_separator.size();
      if (depth == 0 && mark.Params.empty()) {
        writer.begin_param();
      } else {
        writer.append(d.name_separator);
      }
    } else if (stands_at(text, pos, d.param_separator)) {
      pos += d.param_separator.size();
      if (depth == 0) {
        writer.begin_param();
      } else {
        writer.append(d.param_separator);
      }
    } else {
      writer.append(text.substr(pos++, 1));
    }
  }
  writer.finish();
  return invalid_mark_order();
}

HRESULT CTemplatorConcept::parse(const Delimiters& d, CTemplate& tmpl, Progress& progress) {
  const std::wstring_view text = progress.text;
  std::wstring run;
  MarkScratch scratch;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const std::size_t start = d.next_start(text, pos);
    run.append(text, pos, start - pos);
    pos = start;
    if (pos == text.size()) break;
    if (stands_at(text, pos, d.escape)) {
      run.append(take_escaped(text, pos, {&Escape, &MarkOpen, &MarkClose}).view());
    } else if (stands_at(text, pos, d.mark_open)) {
      RETURN_IF_FAILED(push_text(tmpl, run));
      run.clear();
      progress.mark = pos;
      pos += d.mark_open.size();
      auto mark = std::make_unique<CMarkData>();
      RETURN_IF_FAILED(read_mark(d, text, pos, *mark, scratch));
      tmpl.Marks.push_back(mark.get());
      (void)mark.release();
      pos += d.mark_close.size();
      progress.mark = Progress::kNowhere;
    } else if (stands_at(text, pos, d.mark_close)) {
      progress.mark = pos;
      return invalid_mark_order();
    } else {
      run.push_back(text[pos++]);
    }
  }
  return push_text(tmpl, run);
}

HRESULT CTemplatorConcept::Parse(wchar_t* source, CTemplate& tmpl, std::wstring_view file) {
  return mirt::guarded([&] {
    if (!is_complete()) return E_OUTOFMEMORY;
    Progress progress{korlib::view_of(source), file};
    const HRESULT hr = parse(delimiters(), tmpl, progress);
    return SUCCEEDED(hr) ? hr : fail_at(hr, progress);
  });
}
