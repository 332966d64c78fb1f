// The places in templates that an error has gathered on its way (mirt/template_places.h): between the error object of a
// failing component, the exception of the script, and what the page's author is told.
//
// A list of them is a text of lines, "/templates/row.html:3:7: (#;name#)", the innermost first. The last line of a long
// one says how many more there are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <korlib/errorinfo.h>

#include "language/program.h"
#include "script/jsc.h"

namespace zelto::script {

using language::TemplatePlace;

// The list of an error object, which may be null. Files below the root are named from there, with slashes.
std::wstring template_places_of(IErrorInfo* info, std::string_view root);
// A template's path as the script's own files are named: components write it with backslashes.
std::string site_path(std::string file, std::string_view root);
std::wstring named_from_root(std::wstring_view list, std::string_view root);
// Has the thread's error object hand the list on.
void hand_on(std::wstring list);

struct TemplatePlaces {
  std::vector<TemplatePlace> listed;
  std::size_t more = 0;
};
// Lines that name no place are left out.
TemplatePlaces read_places(std::wstring_view list);
std::wstring list_of(const TemplatePlaces& places);

// As properties of an exception: `template`, `line`, `column` and `mark` of the innermost place, and `templates`, the
// list.
void set_places(JSContextRef context, JSObjectRef error, std::wstring_view list);
// The list alone. The engine makes out an error's stack when its `line` is set, which takes its time where errors come
// out of thousands of functions.
void set_list(JSContextRef context, JSObjectRef error, std::wstring_view list);
// The list that an exception has itself.
std::wstring own_places_of(JSContextRef context, JSValueRef exception);
// Or else the nearest of its causes.
std::wstring places_of(JSContextRef context, JSValueRef exception);

}  // namespace zelto::script
