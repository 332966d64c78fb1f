// The text that a page writes for a value.
#pragma once

#include <korlib/variant.h>

#include <string>

namespace zelto {

// What Response.Write writes, and Server's encoders encode. Appends
//   nothing                         for VT_EMPTY, VT_NULL, an omitted argument and a null object;
//   "True" or "False"               for VT_BOOL, in every locale;
//   2001-02-03 04:05:06             for VT_DATE, without the time at midnight and without the day on day zero;
//                                   or the locale's form of it (locale.h);
//   1.5, 1E+21, NaN, -Infinity      for numbers and VT_CY, without grouping; with the locale's decimal mark;
//   the elements' texts, with ","   for an array, nested ones likewise, the first index outermost;
//   the default value's text        for an object; "[object Object]" for one that has none, and for a
//                                   script's object or function what the script itself makes of it.
// Fails with a message for a date outside the years 100 to 9999, for an array nested more than 200 deep and for
// an object whose default value is an object, and so on, more than 16 deep; as the object does when its
// default value cannot be read.
HRESULT append_value_text(const VARIANT& value, LONG lcid, std::wstring& text);

// An object's default value; the value itself for anything else. VT_EMPTY for null, and for an object that
// has no default value *has_none is true.
HRESULT read_default_value(const VARIANT& value, VARIANT* plain, bool* has_none);

}  // namespace zelto
