// The numbers that older pages know an error of the engine by: `e.number & 0xFFFF` is 5009 for a name that
// nobody declared. They are those of that dialect's documentation.
#pragma once

#include <string_view>

#include <korlib/hresult.h>

namespace zelto::script {

// The number of an error that the engine itself raised, from the error's name and message; S_OK for one that
// has none, such as an error that the page made.
HRESULT number_of_engine_error(std::wstring_view name, std::wstring_view message);

}  // namespace zelto::script
