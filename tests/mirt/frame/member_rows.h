// The members of every interface as a script may call them, a row for each kind of call that is served.
#pragma once

#include "mirt/frame/type_info_test.h"

namespace test {

// `inputs` has a letter a parameter: s string, b boolean, l long, v variant, w variant
// that may be left out, o object; `result` likewise,
// with u for IUnknown, a for an array and a dash for none.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the columns
struct Row {
  DISPID id;
  const wchar_t* name;
  WORD kind;
  const char* inputs;
  char result;
};

inline constexpr Row kUtilityRows[] = {
    {41, L"MakeKey", M, "ls", 's'},   {42, L"MakeGUID", M, "b", 's'},      {43, L"Sleep", M, "l", '-'},
    {44, L"MD5", M, "vl", 's'},       {45, L"SHA1", M, "vl", 's'},         {46, L"FindString", M, "vv", 'b'},
    {47, L"HanToZen", M, "s", 's'},   {48, L"ZenToHan", M, "s", 's'},      {49, L"SubmitDecode", M, "s", 's'},
    {50, L"Trim", M, "s", 's'},       {51, L"HTMLEncode", M, "s", 's'},    {52, L"Base64Encode", M, "vl", 's'},
    {53, L"URLEncode", M, "vl", 's'}, {54, L"Base64Decode", M, "sl", 'v'}, {55, L"URLDecode", M, "sl", 'v'},
};

inline constexpr Row kMirtRows[] = {
    {0, L"Bag", G, "", 'o'},
    {1, L"Script", G, "", 'o'},
    {1, L"Script", R, "o", '-'},
    {2, L"Command", G, "", 's'},
    {2, L"Command", P, "s", '-'},
    {3, L"Template", G, "", 's'},
    {3, L"Template", P, "s", '-'},
    {4, L"TemplateFolder", G, "", 's'},
    {4, L"TemplateFolder", P, "s", '-'},
    {5, L"TemplateExt", G, "", 's'},
    {5, L"TemplateExt", P, "s", '-'},
    {6, L"TemplateCharset", G, "", 's'},
    {6, L"TemplateCharset", P, "s", '-'},
    {7, L"DefaultTemplate", G, "", 's'},
    {7, L"DefaultTemplate", P, "s", '-'},
    {8, L"TemplatePermissionPath", G, "", 's'},
    {8, L"TemplatePermissionPath", P, "s", '-'},
    {9, L"CommandName", G, "", 's'},
    {9, L"CommandName", P, "s", '-'},
    {10, L"Output", G, "", 'u'},
    {10, L"Output", R, "o", '-'},
    {13, L"Include", G, "", 'o'},
    {14, L"Request", G, "", 'o'},
    {15, L"Name", G, "", 's'},
    {15, L"Name", P, "s", '-'},
    {16, L"Backable", G, "", 'b'},
    {16, L"Backable", P, "b", '-'},
    {17, L"NullIsEmpty", G, "", 'b'},
    {17, L"NullIsEmpty", P, "b", '-'},
    {18, L"SubmitDecodeOnPutInto", G, "", 'b'},
    {18, L"SubmitDecodeOnPutInto", P, "b", '-'},
    {19, L"CacheTemplate", G, "", 'b'},
    {19, L"CacheTemplate", P, "b", '-'},
    {20, L"SelfEncode", G, "", 'b'},
    {20, L"SelfEncode", P, "b", '-'},
    {21, L"AddScript", M, "o", '-'},
    {22, L"PutIntoBag", M, "sb", '-'},
    {23, L"PutIntoView", M, "sb", '-'},
    {24, L"PutIntoProp", M, "sb", '-'},
    {25, L"Write", M, "sb", '-'},
    {26, L"Abandon", M, "", '-'},
    {27, L"AddLog", M, "ss", '-'},
    {28, L"FireEvent", M, "svv", 'b'},
    {29, L"AddMessage", M, "vs", '-'},
    {30, L"MessageExists", M, "w", 'b'},
    {31, L"ProcessTemplate", M, "s", '-'},
    {32, L"Process", M, "", '-'},
    {33, L"ToArray", M, "o", 'a'},
    {34, L"ToCommand", M, "s", 's'},
    {35, L"ToParameter", M, "ss", 's'},
    {36, L"Redirect", M, "s", '-'},
    {37, L"DrawTemplate", M, "s", '-'},
    {38, L"NewADOCommand", M, "vsl", 'o'},
    {39, L"NewTemplator", M, "s", 'o'},
    {40, L"NewMail", M, "sl", 'o'},
};

inline constexpr Row kTextTemplatorRows[] = {
    {1, L"Script", G, "", 'o'},
    {1, L"Script", R, "o", '-'},
    {2, L"Stream", G, "", 'u'},
    {2, L"Stream", R, "o", '-'},
    {3, L"ProcessTemplateFile", M, "ss", '-'},
    {4, L"ProcessTemplate", M, "s", '-'},
    {5, L"Write", M, "s", '-'},
    {6, L"Flush", M, "", 's'},
};

inline constexpr Row kMirtedTemplatorRows[] = {
    {1, L"Script", G, "", 'o'},           {1, L"Script", R, "o", '-'}, {2, L"Main", G, "", 'o'},
    {3, L"Stream", G, "", 'u'},           {3, L"Stream", R, "o", '-'}, {4, L"ProcessTemplateFile", M, "ss", '-'},
    {5, L"ProcessTemplate", M, "s", '-'}, {6, L"Write", M, "sb", '-'}, {7, L"Flush", M, "", 's'},
};

inline constexpr Row kFormFileRows[] = {
    {1, L"FileName", G, "", 's'},
    {2, L"FileName2", G, "", 's'},
    {3, L"ContentType", G, "", 's'},
    {4, L"Stream", G, "", 'o'},
};

}  // namespace test
