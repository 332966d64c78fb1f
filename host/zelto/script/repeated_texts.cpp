#include "script/repeated_texts.h"

#include <utility>

namespace zelto::script {

void RepeatedTexts::note(JSValueRef string, BSTR text) {
  Entry& entry = entries_[place_of(string)];
  if (std::exchange(entry.candidate, string) != string || SysStringLen(text) > kLongest || entry.loans > 0) return;
  CComBSTR copy(korlib::view_of(text));
  if (!copy.get()) return;
  JSValueProtect(idle_, string);
  if (entry.value) JSValueUnprotect(idle_, entry.value);
  entry.value = string;
  entry.text = std::move(copy);
}

void RepeatedTexts::clear() noexcept {
  for (Entry& entry : entries_) {
    if (entry.loans > 0) continue;
    if (entry.value) JSValueUnprotect(idle_, entry.value);
    entry = {};
  }
}

}  // namespace zelto::script
