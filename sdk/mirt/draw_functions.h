// The functions that marks of a page's templates call by (#%_Name#) without the script having them.
//
// The page draws them itself unless the script has a function of that name behind its prefix, OnDraw__Message say.
// Letter case does not count in them.
#pragma once

#include <string_view>

namespace mirt {

inline constexpr std::wstring_view kDrawFunctions[] = {
    L"_InputDefault",   L"_InputDefaultV", L"_InputDefaultP",  L"_Input",   L"_Input_Default", L"_InputV",
    L"_InputV_Default", L"_InputP",        L"_InputP_Default", L"_Message", L"_Message_Text",
};

}  // namespace mirt
