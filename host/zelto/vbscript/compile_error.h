// What is wrong with a script before any of it runs.
#pragma once

#include <string_view>

namespace zelto::vbscript {

// The documented numbers. As an HRESULT each is 0x800A0000 and the number.
enum class Fault : int {
  out_of_memory = 1001,  // also what is nested too deep
  syntax = 1002,
  expected_colon = 1003,
  expected_open = 1005,
  expected_close = 1006,
  expected_bracket = 1007,
  expected_identifier = 1010,
  expected_equals = 1011,
  expected_if = 1012,
  expected_to = 1013,
  expected_end = 1014,
  expected_function = 1015,
  expected_sub = 1016,
  expected_then = 1017,
  expected_wend = 1018,
  expected_loop = 1019,
  expected_next = 1020,
  expected_case = 1021,
  expected_select = 1022,
  expected_expression = 1023,
  expected_statement = 1024,
  expected_end_of_statement = 1025,
  expected_integer = 1026,
  expected_while_or_until = 1027,
  expected_while_until_or_end = 1028,
  expected_with = 1029,
  identifier_too_long = 1030,
  invalid_number = 1031,
  invalid_character = 1032,
  unterminated_string = 1033,
  unterminated_comment = 1034,
  invalid_me = 1037,
  loop_without_do = 1038,
  invalid_exit = 1039,
  invalid_loop_variable = 1040,
  name_redefined = 1041,
  must_be_first = 1042,
  assign_to_non_byval = 1043,
  parentheses_of_sub = 1044,
  expected_literal = 1045,
  expected_in = 1046,
  expected_class = 1047,
  must_be_in_class = 1048,
  expected_let_set_get = 1049,
  expected_property = 1050,
  inconsistent_arguments = 1051,
  multiple_defaults = 1052,
  initialize_has_arguments = 1053,
  property_needs_argument = 1054,
  unexpected_next = 1055,
  default_of_what = 1056,
  default_not_public = 1057,
  default_not_get = 1058,
};

// Nothing for a number that is none of these.
std::wstring_view words_of(Fault fault);

struct CompileError {
  Fault fault = Fault::syntax;
  int line = 0;    // of the text, from 1
  int column = 0;  // in it, in characters from 0
};

}  // namespace zelto::vbscript
