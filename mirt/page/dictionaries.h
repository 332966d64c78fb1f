// The dictionaries of the host that a page uses.
#pragma once

#include <korlib/dictionary.h>
#include <korlib/ptr.h>

namespace page {

// A new one of the host's dictionary class. `*dictionary` is to be read on success only.
HRESULT new_dictionary(IKorLibDictionary** dictionary);

// The two that a script fills and marks show, there while Process runs and null otherwise. A script may end a
// Process inside another one: hold the one in use by a reference of your own.
struct Dictionaries {
  CComPtr<IKorLibDictionary> view;
  CComPtr<IKorLibDictionary> include;

  // Both anew, or on failure those that there were.
  HRESULT make();
  void drop();
};

}  // namespace page
