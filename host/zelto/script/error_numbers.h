// The numbers that older pages know an error of the engine by.
#pragma once

#include <string_view>

#include <korlib/types.h>

namespace zelto::script {

// From the error's name and message; S_OK for one that has none, such as an error that the page made.
HRESULT number_of(std::wstring_view name, std::wstring_view message);

}  // namespace zelto::script
