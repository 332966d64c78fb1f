#include "vbscript/compile_error.h"

#include <algorithm>
#include <utility>

namespace zelto::vbscript {
namespace {

constexpr std::pair<Fault, std::wstring_view> kWords[] = {
    {Fault::out_of_memory, L"Out of memory"},
    {Fault::syntax, L"Syntax error"},
    {Fault::expected_colon, L"Expected ':'"},
    {Fault::expected_open, L"Expected '('"},
    {Fault::expected_close, L"Expected ')'"},
    {Fault::expected_bracket, L"Expected ']'"},
    {Fault::expected_identifier, L"Expected identifier"},
    {Fault::expected_equals, L"Expected '='"},
    {Fault::expected_if, L"Expected 'If'"},
    {Fault::expected_to, L"Expected 'To'"},
    {Fault::expected_end, L"Expected 'End'"},
    {Fault::expected_function, L"Expected 'Function'"},
    {Fault::expected_sub, L"Expected 'Sub'"},
    {Fault::expected_then, L"Expected 'Then'"},
    {Fault::expected_wend, L"Expected 'Wend'"},
    {Fault::expected_loop, L"Expected 'Loop'"},
    {Fault::expected_next, L"Expected 'Next'"},
    {Fault::expected_case, L"Expected 'Case'"},
    {Fault::expected_select, L"Expected 'Select'"},
    {Fault::expected_expression, L"Expected expression"},
    {Fault::expected_statement, L"Expected statement"},
    {Fault::expected_end_of_statement, L"Expected end of statement"},
    {Fault::expected_integer, L"Expected integer constant"},
    {Fault::expected_while_or_until, L"Expected 'While' or 'Until'"},
    {Fault::expected_while_until_or_end, L"Expected 'While', 'Until' or end of statement"},
    {Fault::expected_with, L"Expected 'With'"},
    {Fault::identifier_too_long, L"Identifier too long"},
    {Fault::invalid_number, L"Invalid number"},
    {Fault::invalid_character, L"Invalid character"},
    {Fault::unterminated_string, L"Unterminated string constant"},
    {Fault::unterminated_comment, L"Unterminated comment"},
    {Fault::invalid_me, L"Invalid use of 'Me' keyword"},
    {Fault::loop_without_do, L"'loop' without 'do'"},
    {Fault::invalid_exit, L"Invalid 'exit' statement"},
    {Fault::invalid_loop_variable, L"Invalid 'for' loop control variable"},
    {Fault::name_redefined, L"Name redefined"},
    {Fault::must_be_first, L"Must be first statement on the line"},
    {Fault::assign_to_non_byval, L"Cannot assign to non-ByVal argument"},
    {Fault::parentheses_of_sub, L"Cannot use parentheses when calling a Sub"},
    {Fault::expected_literal, L"Expected literal constant"},
    {Fault::expected_in, L"Expected 'In'"},
    {Fault::expected_class, L"Expected 'Class'"},
    {Fault::must_be_in_class, L"Must be defined inside a Class"},
    {Fault::expected_let_set_get, L"Expected Let or Set or Get in property declaration"},
    {Fault::expected_property, L"Expected 'Property'"},
    {Fault::inconsistent_arguments, L"Number of arguments must be consistent across properties specification"},
    {Fault::multiple_defaults, L"Cannot have multiple default property/method in a Class"},
    {Fault::initialize_has_arguments, L"Class initialize or terminate do not have arguments"},
    {Fault::property_needs_argument, L"Property Set or Let must have at least one argument"},
    {Fault::unexpected_next, L"Unexpected 'Next'"},
    {Fault::default_of_what, L"'Default' can be specified only on 'Property' or 'Function' or 'Sub'"},
    {Fault::default_not_public, L"'Default' specification must also specify 'Public'"},
    {Fault::default_not_get, L"'Default' specification can only be on Property Get"},
};

}  // namespace

std::wstring_view words_of(Fault fault) {
  const auto* const found = std::ranges::find(kWords, fault, &std::pair<Fault, std::wstring_view>::first);
  return found == std::end(kWords) ? std::wstring_view() : found->second;
}

}  // namespace zelto::vbscript
