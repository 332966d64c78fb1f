// What the type character of a mark stands for, and the values that marks show.
//
// The page controller and the templators that it makes draw marks alike; the controller has four types more.
// A plain templator has no types: its marks all name a member of its scripts.
#pragma once

#include <array>
#include <cstddef>
#include <iterator>

#include <korlib/dictionary.h>

#include "frame/intrinsics.h"
#include "frame/script_event.h"
#include "templator/mark_data.h"

class CTemplatorConcept;

enum class MarkSource {
  draw_event,     // a script function, which writes what it wants
  script,         // a variable of the script, or what a function of it answers
  view,           // an item of the page's View
  session,        // a value of the host's Session
  application,    // a value of the host's Application
  request,        // a field of the request
  bag,            // an item of the session's bag
  command,        // a link that runs a command; without a name, the field that carries one
  template_file,  // the template file of that name
  include,        // the template file that the page's Include holds under the name
};

enum class MarkOwner { page, templator };

struct MarkKind {
  wchar_t type;
  MarkSource source;
  VARIANT_BOOL encode;  // what is written: HTML-encoded, or as it is
  bool in_templators;   // false: for the page controller alone
};

// Every source of values has a pair of types: one writes the encoded text, the other the text as it is.
inline constexpr MarkKind kMarkKinds[] = {
    {L'%', MarkSource::draw_event, VARIANT_FALSE, true},      // the function writes
    {L';', MarkSource::script, VARIANT_TRUE, true},           // encoded
    {L':', MarkSource::script, VARIANT_FALSE, true},          // raw
    {L'*', MarkSource::view, VARIANT_TRUE, true},             // encoded
    {L'/', MarkSource::view, VARIANT_FALSE, true},            // raw
    {L'=', MarkSource::session, VARIANT_TRUE, true},          // encoded
    {L'~', MarkSource::session, VARIANT_FALSE, true},         // raw
    {L'+', MarkSource::application, VARIANT_TRUE, true},      // encoded
    {L'-', MarkSource::application, VARIANT_FALSE, true},     // raw
    {L'$', MarkSource::request, VARIANT_TRUE, true},          // encoded
    {L'\\', MarkSource::request, VARIANT_FALSE, true},        // raw
    {L'&', MarkSource::bag, VARIANT_TRUE, true},              // encoded
    {L'|', MarkSource::bag, VARIANT_FALSE, true},             // raw
    {L'!', MarkSource::command, VARIANT_TRUE, false},         // encoded, page controller only
    {L'?', MarkSource::command, VARIANT_FALSE, false},        // raw, page controller only
    {L'`', MarkSource::template_file, VARIANT_FALSE, false},  // drawn, page controller only
    {L'@', MarkSource::include, VARIANT_FALSE, false},        // drawn, page controller only
};

constexpr bool draws(MarkOwner owner, const MarkKind& kind) { return owner == MarkOwner::page || kind.in_templators; }

// The type characters that an owner's engine is to know, as a C string.
template <MarkOwner owner>
inline constexpr auto kMarkTypes = [] {
  std::array<wchar_t, std::size(kMarkKinds) + 1> types{};
  std::size_t count = 0;
  for (const MarkKind& kind : kMarkKinds) {
    if (draws(owner, kind)) types[count++] = kind.type;
  }
  return types;
}();

// Null for a mark without a type, and for a type that the owner does not draw: such marks show nothing.
const MarkKind* find_mark_kind(wchar_t type, MarkOwner owner);

// Where the marks of one owner find their values. It refers to parts of the owner, which a script may change.
class MarkValues {
 public:
  // Reads what a mark shows whose source holds values: script, view … bag; others are E_UNEXPECTED. On success
  // *text is a VT_BSTR to be written, or VT_EMPTY if there is nothing to write.
  HRESULT read(MarkSource source, const CMarkData& mark, BSTR name, CComVariant* text) const;

 protected:
  struct Parts {
    IDispatch* owner;  // the first argument of script functions
    const CEventHandler& scripts;
    const CComPtr<IKorLibDictionary>& view;
    const mirt::Intrinsics& asp;
    const bool& null_is_empty;  // a value without a text form shows as nothing, instead of failing the mark
    CTemplatorConcept& engine;  // that draws the mark
    const wchar_t* no_script;   // why its scripts have no name, where there are none
  };
  explicit MarkValues(const Parts& parts) : parts_(parts) {}
  ~MarkValues() = default;

 private:
  // Null with success if there is none; the mark then fails.
  virtual HRESULT get_bag(CComPtr<IKorLibDictionary>* bag) const = 0;
  // Only called with a request. Where *found becomes false, the mark shows nothing.
  virtual HRESULT get_field(BSTR name, CComVariant* value, bool* found) const = 0;

  HRESULT read_value(MarkSource source, BSTR name, CComVariant* value, bool* found) const;
  void note_nothing(MarkSource source, BSTR name) const;

  Parts parts_;
};

// Tells the host of a mark that shows nothing because it has no type, unless it looks like a note.
void note_mark_without_type(CTemplatorConcept& engine, const CMarkData& mark);

// The text of a mark that names a script member: a variable's value, walked by the mark's parameters, or
// what a function answers when it is called with (owner, parameters). *text becomes a VT_BSTR. `engine` draws the mark.
// `empty_on_fail` is a reference because it is looked at when the function has run, which may change it.
HRESULT script_member_text(CTemplatorConcept& engine, CEvent& member, IDispatch* owner, const CMarkData& mark,
                           const bool& empty_on_fail, CComVariant* text);

// Why a mark of a templator fails that has been given no script.
inline constexpr const wchar_t* kNoScript = L"the templator has no Script";

// What a dictionary holds under a mark's name; E_FAIL where there is no dictionary.
HRESULT read_item(IKorLibDictionary* items, BSTR name, CComVariant* value);
