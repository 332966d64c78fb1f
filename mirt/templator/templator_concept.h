// CTemplatorConcept: the template engine, a private base of every object that draws text.
//
// A template is plain text with marks in it:
//   (# [type character] name [| first parameter] [#|# further parameter]… #)
// A mark is replaced by whatever the owner's OnMarked writes for it. ^ protects the delimiter after it.
// Marks inside a mark are text of the name or parameter in which they stand.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include <mirt/template_notes.h>

#include "templator/mark_scratch.h"
#include "templator/output_sinks.h"
#include "templator/template.h"

struct Delimiters;
struct ScannedText;

class CTemplatorConcept {
 public:
  using ITextStreamWrapper = ::ITextStreamWrapper;

  // `markTypes` is the set of characters that a mark may begin with as its type.
  explicit CTemplatorConcept(const wchar_t* markTypes);
  CTemplatorConcept(const CTemplatorConcept&) = delete;
  CTemplatorConcept& operator=(const CTemplatorConcept&) = delete;

  // Draws one mark into the current output. The mark may belong to a template that other threads read.
  virtual HRESULT OnMarked(CMarkData& mark) = 0;

  // Where templates are drawn: an ASP response, an ADO-style stream, a text stream or an IStream, tried in
  // this order; another object is E_INVALIDARG and leaves no output. Null leaves none.
  HRESULT putref_Output(IUnknown* sink);
  HRESULT get_Output(IUnknown** sink);
  // Writes to the current output; E_FAIL without one.
  HRESULT write_output(BSTR text);
  bool has_output() const noexcept { return m_pOutput != nullptr; }
  // The current output where that is an ADO-style stream, else null. Not counted.
  IKorLibStream* stream_output() const noexcept;

  // The three below tell the thread's error object which mark failed, and where it stands (mirt/template_places.h).
  // `file` is what the text was read from; empty for a text of another origin.

  // Streaming: scans and draws in one pass, literal text one character a write. A text that is drawn again and again
  // is scanned once.
  HRESULT Process(wchar_t* text, std::wstring_view file = {});
  // Replay: draws a template that Parse has read, each run of literal text in one write. A parsed template does not
  // know where its marks stood: that is looked up in the text, where that is given and still has the mark.
  HRESULT Process(CTemplate& tmpl, std::wstring_view text = {}, std::wstring_view file = {});
  // Reads a whole template into a fresh `tmpl`. On failure that holds what came before the fault.
  HRESULT Parse(wchar_t* text, CTemplate& tmpl, std::wstring_view file = {});
  // Reads one mark: `pos` goes from the end of the opening delimiter to the closing one.
  HRESULT GetMarkData(wchar_t* text, unsigned int& pos, CMarkData& mark);

  // Makes *value the text that a mark shows: each entry of the path (null for none) indexes the value or
  // names a property of it, then the value becomes a BSTR. A value without a text form is the conversion's
  // failure, or an empty text when `emptyOnFail` is set.
  static HRESULT ChangeToBSTR(VARIANT* value, const MarkParams* path, bool emptyOnFail);

  // The same with the parameters of a mark (null for none) as the path. Of a step that fails, the reason is set; a host
  // that wants to know is told of an object that becomes text.
  HRESULT make_text(VARIANT* value, const CMarkData* mark, bool emptyOnFail);

  // Why the mark that is being drawn fails, for a failure that has no words of its own: told beside its place. The
  // text stays where it is.
  void set_reason(const wchar_t* reason) noexcept { m_reason = reason; }

  // The request's Response, which may want to be told (mirt/template_notes.h). Not counted: the owner holds it.
  void set_response(IUnknown* response) noexcept { m_pResponse = response; }
  // Whether it does.
  bool takes_notes() noexcept { return notes() != nullptr; }
  // That the mark which is being drawn shows nothing.
  void note_slip(TemplateSlip slip, BSTR name, IUnknown* values = nullptr) noexcept;
  void note_template(BSTR file, BSTR charset) noexcept;
  void note_bag(BSTR page, IUnknown* bag) noexcept;

 protected:
  ~CTemplatorConcept() = default;

 private:
  // False when there was no memory for a delimiter, which then would match everywhere.
  bool is_complete() const;
  class Drawer;
  class Keeper;
  class Finder;

  // A text that is drawn or parsed, and the offset of the mark that it has come to; nowhere between marks. Of a
  // template that was parsed before, the number of that mark.
  struct Progress {
    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
    std::wstring_view text;
    std::wstring_view file;
    std::size_t mark = kNowhere;
    const CTemplate* parsed = nullptr;
    std::size_t index = kNowhere;

    bool is_in_mark() const noexcept { return mark != kNowhere || index != kNowhere; }
  };
  // While it lives, the engine draws that.
  class Drawing;

  // That the value, which the mark's path has led to, has no such step.
  void set_failed_step(const VARIANT& value, const CMarkData& mark, std::size_t step, HRESULT hr) noexcept;
  ITemplateNotes* notes() noexcept;
  HRESULT write_letters(std::wstring_view text, BSTR letter);
  template <class Visitor>
  HRESULT scan(const Delimiters& d, Progress& progress, Visitor& visitor);
  HRESULT draw(const ScannedText& scanned, BSTR letter, Progress& progress);
  std::shared_ptr<const ScannedText> scanned_before(const Delimiters& d, std::wstring_view text);
  Delimiters delimiters() const;
  HRESULT read_mark(const Delimiters& d, std::wstring_view text, std::size_t& pos, CMarkData& mark,
                    MarkScratch& scratch) const;
  HRESULT parse(const Delimiters& d, CTemplate& tmpl, Progress& progress);
  // Adds the place of the mark that has failed to the thread's error; answers `hr`.
  HRESULT fail_at(HRESULT hr, const Progress& progress) noexcept;
  // As the lists of mirt/template_places.h have it; empty when it cannot be found.
  std::wstring place_of(Progress progress);
  std::wstring described_mark(std::wstring_view text, std::size_t& at) const;
  std::size_t find_unclosed(const Delimiters& d, std::wstring_view text, std::size_t outermost) const;
  // Where a mark of a parsed template stands in the text; nowhere if that is another text.
  std::size_t find_mark(const CTemplate& tmpl, std::size_t mark, std::wstring_view text);
  // Goes over an escape at `pos` and over what it protects; the delimiter that the two stand for.
  const CComBSTR& take_escaped(std::wstring_view text, std::size_t& pos,
                               std::initializer_list<const CComBSTR*> protectable) const;

  CComBSTR Escape;
  CComBSTR MarkOpen;
  CComBSTR MarkClose;
  CComBSTR MarkTypes;
  CComBSTR NameSeparator;
  CComBSTR ParamSeparator;
  ITextStreamWrapper* m_pOutput = nullptr;  // one of the four below, or none
  CTS_ASPResponse m_oASPResponse;
  CTS_ADODBStream m_oADODBStream;
  CTS_ScriptingTextStream m_oScriptingTextStream;
  CTS_Stream m_oStream;
  IdleMarks m_oIdleMarks;
  std::wstring m_lastText;  // that was streamed, and not scanned before
  std::shared_ptr<const ScannedText> m_spScanned;
  const wchar_t* m_reason = nullptr;
  std::wstring m_reasonOfStep;            // which that points to where it was made of a mark's words
  const Progress* m_pProgress = nullptr;  // of the innermost text that is being drawn
  IUnknown* m_pResponse = nullptr;
  bool m_hasAskedForNotes = false;
  CComQIPtr<ITemplateNotes> m_spNotes;
};
