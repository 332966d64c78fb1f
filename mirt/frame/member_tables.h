// The type information of the component's interfaces: which members scripts find, under which identifiers.
#pragma once

#include "frame/static_type_info.h"

namespace mirt {

extern MemberTypeInfo mirt_type_info;
extern MemberTypeInfo mirted_templator_type_info;
extern MemberTypeInfo form_file_type_info;
extern MemberTypeInfo text_templator_type_info;
extern MemberTypeInfo utility_type_info;

}  // namespace mirt
