// The fields of a page's request: those that were submitted, and all that a mark may show.
#pragma once

#include <korlib/comvariant.h>
#include <korlib/ptr.h>

#include "frame/intrinsics.h"
#include "upload/shared_form.h"

namespace page {

class RequestFields {
 public:
  using Collection = ZeltoTypeLibrary::IRequestDictionary;

  // `asp` outlives this; its objects are looked at anew by every operation.
  explicit RequestFields(const mirt::Intrinsics& asp) : asp_(asp) {}

  // Reads the form of an upload, if the request has one, and shares it with the other controllers of the request.
  HRESULT read_upload();

  // The collection in which the fields were submitted: of a POST the upload's form, or the form if the host has
  // read one, else the query string. E_FAIL without a request.
  HRESULT get_submitted(IDispatch** fields) const;
  HRESULT get_submitted(CComPtr<Collection>* fields) const;

  // Looks for a field with a value in everything that came with the request, server variables first, unlike the
  // host's own search. There must be a request. A collection that fails is passed over.
  bool find(BSTR name, CComVariant* value) const;

 private:
  const mirt::Intrinsics& asp_;
  CComPtr<Collection> upload_;
  SharedForm shared_;
};

// The values of a field as an array of variants, in which a value that cannot be read stays empty. E_NOINTERFACE
// where `field` is not a list of values. A list without a count is a success that leaves *array alone.
HRESULT values_of(IDispatch* field, SAFEARRAY** array);

}  // namespace page
