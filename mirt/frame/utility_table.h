// The utility members' rows and the one routine that serves them, for the utility object and for the
// page controller.
#pragma once

#include <mirt/mirt.h>

#include "frame/member_table.h"

namespace mirt::dispatch {

inline constexpr DISPID kFirstUtilityMember = 41;

template <class I>
inline constexpr Member<I> kUtilityMembers[] = {
    method<I, &I::MakeKey>(L"MakeKey"),
    method<I, &I::MakeGUID>(L"MakeGUID"),
    method<I, &I::Sleep>(L"Sleep"),
    method<I, &I::MD5>(L"MD5"),
    method<I, &I::SHA1>(L"SHA1"),
    method<I, &I::FindString>(L"FindString"),
    method<I, &I::HanToZen>(L"HanToZen"),
    method<I, &I::ZenToHan>(L"ZenToHan"),
    method<I, &I::SubmitDecode>(L"SubmitDecode"),
    method<I, &I::Trim>(L"Trim"),
    method<I, &I::HTMLEncode>(L"HTMLEncode"),
    method<I, &I::Base64Encode>(L"Base64Encode"),
    method<I, &I::URLEncode>(L"URLEncode"),
    method<I, &I::Base64Decode>(L"Base64Decode"),
    method<I, &I::URLDecode>(L"URLDecode"),
};

template <class I>
HRESULT invoke_utility_like(I* instance, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  return invoke_in(kUtilityMembers<I>, kFirstUtilityMember, instance, id, flags, params, result, argerr);
}

}  // namespace mirt::dispatch
