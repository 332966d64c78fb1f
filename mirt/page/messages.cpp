// Messages: collected by the script, drawn by two built-in draw events.
#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;

// What an enclosing drawer shows comes back when an inner one is done.
class CurrentMessage {
 public:
  CurrentMessage(const VARIANT*& slot, const VARIANT* message) : slot_(slot), before_(slot) { slot_ = message; }
  ~CurrentMessage() { slot_ = before_; }
  CurrentMessage(const CurrentMessage&) = delete;
  CurrentMessage& operator=(const CurrentMessage&) = delete;

 private:
  const VARIANT*& slot_;
  const VARIANT* before_;
};

}  // namespace

STDMETHODIMP Self::AddMessage(VARIANT* message, BSTR key) try {
  if (!message) return E_POINTER;
  return messages_.add(*message, korlib::view_of(key));
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::MessageExists(VARIANT* key, VARIANT_BOOL* exists) try {
  if (!key || !exists) return E_POINTER;
  *exists = VARIANT_FALSE;
  if (key->vt == VT_ERROR) {
    *exists = messages_.empty() ? VARIANT_FALSE : VARIANT_TRUE;
    return S_OK;
  }
  if (key->vt != VT_BSTR) return E_INVALIDARG;
  const page::MessageStore::List* list = messages_.find(korlib::view_of(key->bstrVal));
  *exists = list && !list->empty() ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
} catch (...) {
  return mirt::hresult_from_exception();
}

// [key,] text for each message [, text when there is none]
HRESULT Self::draw_message(Source, const MarkParams& params) {
  const std::wstring_view key = params.size() == 1 ? L"" : params[0]->view();
  const CComBSTR text = bstr_of(*params[params.size() == 1 ? 0 : 1]);
  if (!text.get()) return E_OUTOFMEMORY;
  const page::MessageStore::List* found = messages_.find(key);
  if (!found) return params.size() == 3 ? process_nested(*params[2]) : S_OK;
  // Counted beforehand: what is drawn may add messages, which wait for the next drawing.
  const std::size_t count = found->size();
  for (std::size_t i = 0; i < count; ++i) {
    CComVariant message;  // a copy, because a list that grows moves
    RETURN_IF_FAILED(VariantCopy(&message, &(*found)[i]));
    const CurrentMessage current(current_message_, &message);
    RETURN_IF_FAILED(process_nested(text.get()));
  }
  return S_OK;
}

// A text message is drawn itself; a number chooses one of the texts.
HRESULT Self::draw_message_text(Source, const MarkParams& params) {
  if (!current_message_) return E_FAIL;
  if (current_message_->vt == VT_BSTR) return process_nested(current_message_->bstrVal);
  CComVariant number;
  RETURN_IF_FAILED(VariantChangeType(&number, current_message_, 0, VT_I4));
  if (number.lVal < 1 || static_cast<std::size_t>(number.lVal) > params.size())
    return page::raise({L"Invalid OnDraw__Message_Text param length."});
  return process_nested(*params[static_cast<std::size_t>(number.lVal) - 1]);
}
