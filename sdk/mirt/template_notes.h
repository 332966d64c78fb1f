// What a host may tell the author of a page while it draws: its templates, and what is probably a mistake, and fails
// nowhere: marks that show nothing, or an object as text, arguments that nobody looks at.
#pragma once

#include <korlib/unknown.h>

enum class TemplateSlip : LONG {
  without_type = 1,          // "(#title#)", which no type character begins: it is taken for a note
  no_item = 2,               // View has nothing under the name
  no_bag_item = 3,           // the bag has not
  no_include = 4,            // Include names no template
  no_session_value = 5,      // the session has nothing under the name
  no_application_value = 6,  // the application has not
  object_as_text = 7,        // an object is shown as text: `name` is that text
};

// The component asks the request's Response for this interface. A host that does not want to know answers
// E_NOINTERFACE, and is not asked again by the same object.
struct ITemplateNotes : IUnknown {
  // A template file is about to be drawn that was read in that character set.
  virtual HRESULT NoteTemplate(BSTR file, BSTR charset) = 0;
  // `name` is the mark's; `place` its line as in mirt/template_places.h, empty where that is not known. `values` is the
  // dictionary that was asked, which may have the name by now, or null.
  virtual HRESULT NoteSlip(TemplateSlip slip, BSTR name, BSTR place, IUnknown* values) = 0;
  // A method was called with more arguments than it takes: it has not looked at the others.
  virtual HRESULT NoteArguments(BSTR member, ULONG takes, ULONG given) = 0;
  // The bag of the controller of that name, whose Process has ended, well or not.
  virtual HRESULT NoteBag(BSTR page, IUnknown* bag) = 0;

 protected:
  ~ITemplateNotes() = default;
};
KORLIB_IID(ITemplateNotes, "7E0B3C52-91D4-4B0A-A6C8-3F5D2E8B7A10");
