// The reserved words.
#pragma once

#include <string_view>

namespace zelto::vbscript {

enum class Word : unsigned char {
  none,
  // Those that no name may be, but behind a dot.
  and_,
  byref,
  byval,
  call,
  case_,
  class_,
  const_,
  dim,
  do_,
  each,
  else_,
  elseif,
  empty,
  end,
  eqv,
  exit,
  false_,
  for_,
  function,
  get,
  goto_,
  if_,
  imp,
  in,
  is,
  let,
  loop,
  me,
  mod,
  new_,
  next,
  not_,
  nothing,
  null,
  on,
  option,
  or_,
  private_,
  public_,
  redim,
  rem,
  resume,
  select,
  set,
  stop,
  sub,
  then,
  to,
  true_,
  until,
  wend,
  while_,
  with,
  xor_,
  // What these mean, their place tells.
  default_,
  error,
  erase,
  execute,
  explicit_,
  preserve,
  property,
  step,
};

// In any letter case.
Word word_of(std::wstring_view name);
constexpr bool is_reserved(Word word) { return word != Word::none && word < Word::default_; }

}  // namespace zelto::vbscript
