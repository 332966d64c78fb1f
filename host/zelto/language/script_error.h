// What is wrong with a script, in words, and where in its source.
#pragma once

#include <string>

#include <korlib/types.h>

namespace zelto::language {

struct ScriptError {
  std::wstring message;  // without the kind of error in front, unless the script threw no Error
  std::wstring source;   // whose error it is: that of a component such as "Mirt", or the error's name
  HRESULT number = 0;    // the failing result, or the error's own `number`
  std::string file;      // the .asp or included file; empty when unknown
  int line = 0;          // from 1; 0 when unknown
  int column = 0;        // from 1; 0 when unknown
};

}  // namespace zelto::language
