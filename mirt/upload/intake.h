// Reads the upload of a request into a form.
#pragma once

#include <korlib/ptr.h>
#include <zelto/asp.h>

// A request that is not a multipart post, or lacks a usable boundary or body, is a success without a form.
// A body over the host's limit, and one that cannot be read, raise an error text. A malformed body is E_FAIL
// without a text; *form then holds what was read before the fault. A host that has given the body away
// before has none any more: *form then stays as it was, or becomes what another controller shares.
HRESULT read_multipart_form(ZeltoTypeLibrary::IRequest* request, ZeltoTypeLibrary::IResponse* response,
                            CComPtr<ZeltoTypeLibrary::IRequestDictionary>* form);
