#include "frame/argument_notes.h"

#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <mirt/template_notes.h>
#include <zelto/context.h>

#include "frame/error_places.h"

namespace mirt {

// The type information that serves the call knows no request, so the thread is asked for it: such calls are few.
void note_extra_arguments(const wchar_t* member, UINT takes, UINT given) noexcept try {
  const ErrorInHand untouched;
  CComPtr<IGetContextProperties> context;
  CComVariant response;
  if (FAILED(CoGetObjectContext(IID_IGetContextProperties, context.put_void())) || !context) return;
  if (FAILED(context->GetProperty(CComBSTR(L"Response"), response.put())) || response.vt != VT_DISPATCH) return;
  const CComQIPtr<ITemplateNotes> notes(response.pdispVal);
  if (notes) notes->NoteArguments(CComBSTR(member), takes, given);
} catch (...) {
  return;
}

}  // namespace mirt
