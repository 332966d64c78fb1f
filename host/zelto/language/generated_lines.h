// The lines of a page's script that stand for what is no script in its file: <p><%= name; %></p> is
//
//   $zelto_html(0);    page text, by its number
//   $zelto_out((
//    name
//   ));//;             an expression, and as a comment what stands behind it and belongs to nothing
//   $zelto_html(1);
#pragma once

#include <string_view>

namespace zelto::language {

inline constexpr std::wstring_view kPageText = L"$zelto_html(";
inline constexpr std::wstring_view kExpressionBegins = L"$zelto_out((";
inline constexpr std::wstring_view kExpressionEnds = L"));";
inline constexpr std::wstring_view kBehindExpression = L"//";
inline constexpr char16_t kReturnBehindExpression = u'r';  // as all is in one line
inline constexpr char16_t kLineBehindExpression = u'n';

}  // namespace zelto::language
