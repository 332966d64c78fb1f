#include "page/input_drawers.h"

#include "frame/error.h"
#include "frame/values.h"

namespace page {
namespace {

// Reading an item that is not there would make it: these drawers only look.
HRESULT look_up(IKorLibDictionary* dictionary, std::wstring_view name, CComVariant* value, bool* exists) {
  const CComBSTR key(name);
  if (!key.get()) return E_OUTOFMEMORY;
  VARIANT_BOOL found = VARIANT_FALSE;
  RETURN_IF_FAILED(dictionary->Exists(korlib::borrowed(key.get()), &found));
  *exists = found != VARIANT_FALSE;
  return *exists ? dictionary->get_Item(korlib::borrowed(key.get()), value->put()) : S_OK;
}

// An item of a dictionary for the duration of a scope, after which it is what it was before: the old
// value again, or gone.
class ScopedItem {
 public:
  ScopedItem(IKorLibDictionary* dictionary, std::wstring_view key) : dictionary_(dictionary), key_(key) {}
  ~ScopedItem() {
    if (!is_set_) return;
    if (existed_) {
      dictionary_->put_Item(korlib::borrowed(key_.get()), before_);
      return;
    }
    VARIANT_BOOL exists = VARIANT_FALSE;
    if (SUCCEEDED(dictionary_->Exists(korlib::borrowed(key_.get()), &exists)) && exists)
      dictionary_->Remove(korlib::borrowed(key_.get()));
  }
  ScopedItem(const ScopedItem&) = delete;
  ScopedItem& operator=(const ScopedItem&) = delete;

  // Once. What cannot be put back later is not replaced.
  HRESULT set(const VARIANT& value) {
    if (!key_.get()) return E_OUTOFMEMORY;
    RETURN_IF_FAILED(look_up(dictionary_.get(), key_.view(), &before_, &existed_));
    is_set_ = true;
    return dictionary_->put_Item(korlib::borrowed(key_.get()), value);
  }

 private:
  CComPtr<IKorLibDictionary> dictionary_;
  CComBSTR key_;
  CComVariant before_;
  bool existed_ = false;
  bool is_set_ = false;
};

HRESULT text_of(const VARIANT& value, CComVariant* text) { return VariantChangeType(text->put(), &value, 0, VT_BSTR); }

// The array may be of any type and have any dimensions. An element without a text form equals nothing.
bool any_element_is(SAFEARRAY* array, std::wstring_view input) {
  if (!array) return false;
  const mirt::ArrayLock lock(array);
  const std::size_t count = mirt::element_count(*array);
  bool found = false;
  for (std::size_t i = 0; i < count && !found; ++i) {
    VARIANT element{};
    element.vt = static_cast<VARTYPE>(VT_BYREF | array->vtElement);
    element.byref = static_cast<BYTE*>(array->pvData) + i * array->cbElements;
    CComVariant text;
    found = mirt::succeeded_or_forgotten(text_of(element, &text)) && korlib::view_of(text.bstrVal) == input;
  }
  return found;
}

// The names of the two items that tell an input's parts what they belong to.
struct ItemNames {
  std::wstring_view name, value;
};
constexpr ItemNames kItemNames[] = {
    // one for each BoundTo
    {L"_Input_Name", L"_Input_Value"},
    {L"_InputV_Name", L"_InputV_Value"},
    {L"_InputP_Name", L"_InputP_Value"},
};

}  // namespace

HRESULT InputDrawers::read_bound(BoundTo source, std::wstring_view name, CComVariant* value, bool* exists) {
  *exists = false;
  if (source == BoundTo::script) {
    const CComBSTR member(name);
    if (!member.get()) return E_OUTOFMEMORY;
    CEvent variable;
    const HRESULT hr = scripts_.GetEvent(member, variable);
    if (hr == DISP_E_UNKNOWNNAME) {
      mirt::forget_error();
      return S_OK;
    }
    RETURN_IF_FAILED(hr);
    RETURN_IF_FAILED(variable.Get());
    *exists = true;
    *value = std::move(variable.result);
    return S_OK;
  }
  CComPtr<IKorLibDictionary> dictionary = dictionaries_.view;
  if (source == BoundTo::bag) RETURN_IF_FAILED(memory_.get_bag(&dictionary));
  if (!dictionary) return E_FAIL;
  return look_up(dictionary.get(), name, value, exists);
}

HRESULT InputDrawers::is_bound(BoundTo source, std::wstring_view name, std::wstring_view input, bool* matches) {
  CComVariant bound;
  bool exists = false;
  RETURN_IF_FAILED(read_bound(source, name, &bound, &exists));
  if (!exists && source == BoundTo::script) return DISP_E_UNKNOWNNAME;
  CComVariant direct;
  RETURN_IF_FAILED(mirt::copy_followed(&direct, bound));
  if (direct.vt & VT_ARRAY) {
    *matches = any_element_is(direct.parray, input);
    return S_OK;
  }
  CComVariant text;
  RETURN_IF_FAILED(text_of(direct, &text));
  *matches = korlib::view_of(text.bstrVal) == input;
  return S_OK;
}

HRESULT InputDrawers::draw_default(BoundTo source, const MarkParams& params) {
  bool matches = false;
  RETURN_IF_FAILED(is_bound(source, params[0]->view(), params[1]->view(), &matches));
  return texts_.draw(*params[matches ? 2 : 3]);
}

HRESULT InputDrawers::draw_inner_default(BoundTo source, const MarkParams& params) {
  const CComPtr<IKorLibDictionary> view = dictionaries_.view;
  if (!view) return E_FAIL;
  const ItemNames& items = kItemNames[static_cast<std::size_t>(source)];
  CComVariant name;
  CComVariant value;
  bool exists = false;
  RETURN_IF_FAILED(look_up(view.get(), items.name, &name, &exists));
  RETURN_IF_FAILED(look_up(view.get(), items.value, &value, &exists));
  RETURN_IF_FAILED(name.change_type(VT_BSTR));
  RETURN_IF_FAILED(value.change_type(VT_BSTR));
  bool matches = false;
  RETURN_IF_FAILED(is_bound(source, korlib::view_of(name.bstrVal), korlib::view_of(value.bstrVal), &matches));
  return texts_.draw(*params[matches ? 1 : 0]);
}

HRESULT InputDrawers::draw_input(BoundTo source, const MarkParams& params) {
  const CComPtr<IKorLibDictionary> view = dictionaries_.view;
  if (!view) return E_FAIL;
  const CComBSTR name = bstr_of(*params[0]);
  if (!name.get()) return E_OUTOFMEMORY;
  CComVariant value;
  bool exists = false;
  RETURN_IF_FAILED(read_bound(source, name.view(), &value, &exists));
  if (!exists && params.size() == 3) return texts_.draw(*params[2]);
  if (!exists && source == BoundTo::script) return DISP_E_UNKNOWNNAME;
  const ItemNames& items = kItemNames[static_cast<std::size_t>(source)];
  ScopedItem name_item(view.get(), items.name);
  ScopedItem value_item(view.get(), items.value);
  RETURN_IF_FAILED(name_item.set(korlib::borrowed(name.get())));
  RETURN_IF_FAILED(value_item.set(value));
  return texts_.draw(*params[1]);
}

}  // namespace page
