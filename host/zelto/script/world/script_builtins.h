// $zelto: what rewritten and generated code calls, and what the prelude is made of.
#pragma once

#include "script/jsc.h"

namespace zelto::script {

// The class of that object:
//
//   html(n)                     writes the program's n-th piece of page text
//   out(value)                  <%= value %>, which is Response.Write(value) for every kind of value
//   at(callee, ...arguments)    a reference to the call
//   read(function, statement)   calls a member that was named without parentheses
//   items(collection)           an automation object's items as an array; null for anything else
//   create(name)                a new automation object, as Server.CreateObject makes it
//   has(object, name)           whether an automation object has the member that has just been read
//   log(level, text)            a line in the host's log
//   known(name, message)        number and message of an engine's error, as pages know them
//   show_names()                code is about to be made of text
//   is_page(value)              whether that is the function that the page became
//   toString()                  of a function, as its prototype has it: function_text.h
//   thrown                      set to what is thrown: its place is remembered
JSClassRef make_builtins_class();

}  // namespace zelto::script
