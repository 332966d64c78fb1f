// Arguments of a call that the member does not look at: the host may tell the page's author (mirt/template_notes.h).
#pragma once

#include <korlib/types.h>

namespace mirt {

// The call has been served. Tells the Response of the request that the calling thread runs, if there is one that wants
// to know.
void note_extra_arguments(const wchar_t* member, UINT takes, UINT given) noexcept;

}  // namespace mirt
