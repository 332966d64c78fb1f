#include "page/messages.h"

#include "frame/values.h"
#include "page/text.h"

namespace page {
namespace {

// When an inner drawer is done, the message of the enclosing one is the current one again.
class Shown {
 public:
  Shown(const VARIANT*& slot, const VARIANT* message) : slot_(slot), before_(slot) { slot_ = message; }
  ~Shown() { slot_ = before_; }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;

 private:
  const VARIANT*& slot_;
  const VARIANT* before_;
};

}  // namespace

HRESULT Messages::add(const VARIANT& message, std::wstring_view key) {
  CComVariant copy;
  RETURN_IF_FAILED(mirt::copy_followed(&copy, message));
  lists_[std::wstring(key)].push_back(std::move(copy));
  return S_OK;
}

const Messages::List* Messages::find(std::wstring_view key) const {
  const auto found = lists_.find(key);
  return found == lists_.end() ? nullptr : &found->second;
}

HRESULT Messages::exist(const VARIANT& key, bool* exist) const {
  if (key.vt != VT_ERROR && key.vt != VT_BSTR) return E_INVALIDARG;
  const List* list = key.vt == VT_BSTR ? find(korlib::view_of(key.bstrVal)) : nullptr;
  *exist = key.vt == VT_BSTR ? list && !list->empty() : !lists_.empty();
  return S_OK;
}

HRESULT Messages::draw(const MarkParams& params) {
  const std::wstring_view key = params.size() == 1 ? L"" : params[0]->view();
  const CComBSTR text = bstr_of(*params[params.size() == 1 ? 0 : 1]);
  if (!text.get()) return E_OUTOFMEMORY;
  const List* found = find(key);
  if (!found) return params.size() == 3 ? texts_.draw(*params[2]) : S_OK;
  const std::size_t count = found->size();
  for (std::size_t i = 0; i < count; ++i) {
    CComVariant message;  // a copy, because a list that grows moves
    RETURN_IF_FAILED(VariantCopy(&message, &(*found)[i]));
    const Shown shown(current_, &message);
    RETURN_IF_FAILED(texts_.draw(text.get()));
  }
  return S_OK;
}

HRESULT Messages::draw_current(const MarkParams& params) {
  if (!current_) return E_FAIL;
  if (current_->vt == VT_BSTR) return texts_.draw(current_->bstrVal);
  CComVariant number;
  RETURN_IF_FAILED(VariantChangeType(&number, current_, 0, VT_I4));
  if (number.lVal < 1 || static_cast<std::size_t>(number.lVal) > params.size())
    return raise({L"Invalid OnDraw__Message_Text param length."});
  return texts_.draw(*params[static_cast<std::size_t>(number.lVal) - 1]);
}

}  // namespace page
