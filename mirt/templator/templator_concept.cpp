// Output, and the two ways to draw a template.
#include "templator/templator_concept.h"

#include <optional>
#include <utility>

#include "frame/error.h"
#include "templator/scan.h"
#include "templator/scanned_text.h"

CTemplatorConcept::CTemplatorConcept(const wchar_t* markTypes)
    : Escape(L"^"),
      MarkOpen(L"(#"),
      MarkClose(L"#)"),
      MarkTypes(markTypes),
      NameSeparator(L"|"),
      ParamSeparator(L"#|#") {}

HRESULT CTemplatorConcept::putref_Output(IUnknown* sink) {
  // The new one is held first: letting go of the old one may let go of it as well.
  const CComPtr<IUnknown> spSink(sink);
  if (ITextStreamWrapper* old = std::exchange(m_pOutput, nullptr)) old->putref_Substance(nullptr);
  if (!sink) return S_OK;
  ITextStreamWrapper* const wrappers[] = {&m_oASPResponse, &m_oADODBStream, &m_oScriptingTextStream, &m_oStream};
  for (ITextStreamWrapper* wrapper : wrappers) {
    if (FAILED(wrapper->putref_Substance(sink))) continue;
    m_pOutput = wrapper;
    return S_OK;
  }
  return E_INVALIDARG;
}

HRESULT CTemplatorConcept::get_Output(IUnknown** sink) {
  if (!sink) return E_POINTER;
  *sink = nullptr;
  return m_pOutput ? m_pOutput->get_Substance(sink) : S_OK;
}

HRESULT CTemplatorConcept::write_output(BSTR text) { return m_pOutput ? m_pOutput->Write(text) : E_FAIL; }

IKorLibStream* CTemplatorConcept::stream_output() const noexcept {
  return m_pOutput == &m_oADODBStream ? m_oADODBStream.get() : nullptr;
}

HRESULT CTemplatorConcept::write_letters(std::wstring_view text, BSTR letter) {
  for (const wchar_t c : text) {
    *letter = c;
    // The output that pages have mostly, without a look into its table.
    RETURN_IF_FAILED(m_pOutput == &m_oASPResponse ? m_oASPResponse.Write(letter) : write_output(letter));
  }
  return S_OK;
}

class CTemplatorConcept::Drawing {
 public:
  Drawing(CTemplatorConcept& engine, const Progress& progress)
      : engine_(engine), outer_(std::exchange(engine.m_pProgress, &progress)) {}
  ~Drawing() { engine_.m_pProgress = outer_; }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

 private:
  CTemplatorConcept& engine_;
  const Progress* outer_;
};

// Draws while it scans.
class CTemplatorConcept::Drawer {
 public:
  Drawer(CTemplatorConcept& engine, BSTR letter) : engine_(engine), letter_(letter) {}

  HRESULT on_letters(std::wstring_view text) { return engine_.write_letters(text, letter_); }
  HRESULT on_delimiter(BSTR delimiter) { return engine_.write_output(delimiter); }
  std::pair<CMarkData&, MarkScratch&> fresh_mark() {
    if (!lease_) lease_.emplace(engine_.m_oIdleMarks);
    mark_ = &lease_->fresh();
    return {mark_->data, mark_->scratch};
  }
  HRESULT on_mark(std::wstring_view) { return engine_.OnMarked(mark_->data); }

 private:
  CTemplatorConcept& engine_;
  const BSTR letter_;
  std::optional<IdleMarks::Lease> lease_;  // of one mark, which is filled again and again
  ReusableMark* mark_ = nullptr;
};

// Keeps what it is handed.
class CTemplatorConcept::Keeper {
 public:
  explicit Keeper(ScannedText& kept) : kept_(kept) {}

  HRESULT on_letters(std::wstring_view text) {
    kept_.pieces.push_back({text, nullptr, nullptr});
    return S_OK;
  }
  HRESULT on_delimiter(BSTR delimiter) {
    kept_.pieces.push_back({{}, delimiter, nullptr});
    return S_OK;
  }
  std::pair<CMarkData&, MarkScratch&> fresh_mark() {
    kept_.pieces.push_back({{}, nullptr, std::make_unique<CMarkData>()});
    return {*kept_.pieces.back().mark, scratch_};
  }
  HRESULT on_mark(std::wstring_view text) {
    kept_.pieces.back().letters = text;
    return S_OK;
  }

 private:
  ScannedText& kept_;
  MarkScratch scratch_;
};

// Null for a text that is not the one that was drawn last, or has an error in it.
std::shared_ptr<const ScannedText> CTemplatorConcept::scanned_before(const Delimiters& d, std::wstring_view text) {
  constexpr std::size_t kLongest = 4000;
  if (m_spScanned && m_spScanned->text == text) return m_spScanned;
  if (text.size() > kLongest) return nullptr;
  if (m_lastText != text) {
    m_lastText = text;
    return nullptr;
  }
  const auto scanned = std::make_shared<ScannedText>();
  scanned->text = text;
  Keeper keeper(*scanned);
  Progress progress{scanned->text, {}};
  if (!mirt::succeeded_or_forgotten(scan(d, progress, keeper))) return nullptr;
  m_spScanned = scanned;
  return scanned;
}

HRESULT CTemplatorConcept::draw(const ScannedText& scanned, BSTR letter, Progress& progress) {
  for (const ScannedText::Piece& piece : scanned.pieces) {
    if (piece.mark) {
      progress.mark = static_cast<std::size_t>(piece.letters.data() - scanned.text.data());
      RETURN_IF_FAILED(OnMarked(*piece.mark));
      progress.mark = Progress::kNowhere;
    } else if (piece.delimiter) {
      RETURN_IF_FAILED(write_output(piece.delimiter));
    } else {
      RETURN_IF_FAILED(write_letters(piece.letters, letter));
    }
  }
  return S_OK;
}

HRESULT CTemplatorConcept::Process(wchar_t* source, std::wstring_view file) {
  return mirt::guarded([&] {
    if (!m_pOutput) return E_FAIL;
    // One string for every literal character: a sink takes a copy of what it is given.
    const CComBSTR one(std::wstring_view(L" ", 1));
    if (!one.get() || !is_complete()) return E_OUTOFMEMORY;
    const Delimiters d = delimiters();
    Progress progress{korlib::view_of(source), file};
    const Drawing drawing(*this, progress);
    HRESULT hr = S_OK;
    // Held meanwhile: a mark may draw another text.
    if (const auto scanned = scanned_before(d, progress.text)) {
      hr = draw(*scanned, one.get(), progress);
    } else {
      Drawer drawer(*this, one.get());
      hr = scan(d, progress, drawer);
    }
    return SUCCEEDED(hr) ? hr : fail_at(hr, progress);
  });
}

HRESULT CTemplatorConcept::Process(CTemplate& tmpl, std::wstring_view text, std::wstring_view file) {
  return mirt::guarded([&] {
    if (tmpl.Texts.size() != tmpl.Marks.size() + 1) return E_UNEXPECTED;  // what a failed parse left behind
    Progress progress{text, file};
    progress.parsed = &tmpl;
    const Drawing drawing(*this, progress);
    HRESULT hr = write_output(tmpl.Texts[0]);
    for (std::size_t i = 0; SUCCEEDED(hr) && i < tmpl.Marks.size(); ++i) {
      progress.index = i;
      hr = OnMarked(*tmpl.Marks[i]);
      if (FAILED(hr)) return fail_at(hr, progress);
      hr = write_output(tmpl.Texts[i + 1]);
    }
    return hr;
  });
}
