#include "templator/marks.h"

#include "frame/error.h"
#include "templator/templator_concept.h"

namespace {

// What the host's Session or Application holds under a mark's name; E_FAIL where there is none.
template <class Values>
HRESULT read_host_value(const CComPtr<Values>& values, BSTR name, CComVariant* value) {
  return values ? values->get_Value(name, value->put()) : E_FAIL;
}

constexpr const wchar_t* kNoView = L"there is no View outside of the page's Process";
constexpr const wchar_t* kNoBag = L"the page that has made the templator has no Name, and so no bag";
constexpr const wchar_t* kNoSession = L"the page has no session";

// The row of each type in kMarkKinds, looked up for every mark that is drawn; the number of rows for other characters.
constexpr auto kRowOfType = [] {
  std::array<unsigned char, 128> rows{};
  rows.fill(std::size(kMarkKinds));
  for (std::size_t row = 0; row < std::size(kMarkKinds); ++row) {
    rows.at(static_cast<char32_t>(kMarkKinds[row].type)) = static_cast<unsigned char>(row);
  }
  return rows;
}();

}  // namespace

const MarkKind* find_mark_kind(wchar_t type, MarkOwner owner) {
  const auto character = static_cast<char32_t>(type);
  if (character >= kRowOfType.size()) return nullptr;
  const std::size_t row = kRowOfType[character];
  return row < std::size(kMarkKinds) && draws(owner, kMarkKinds[row]) ? &kMarkKinds[row] : nullptr;
}

HRESULT MarkValues::read(MarkSource source, const CMarkData& mark, BSTR name, CComVariant* text) const {
  if (source == MarkSource::script) {
    CEvent member;
    const HRESULT found = parts_.scripts.GetEvent(name, member);
    if (FAILED(found) && !parts_.scripts.last()) parts_.engine.set_reason(parts_.no_script);
    RETURN_IF_FAILED(found);
    return script_member_text(parts_.engine, member, parts_.owner, mark, parts_.null_is_empty, text);
  }
  bool found = true;
  RETURN_IF_FAILED(read_value(source, name, text, &found));
  if (!found) {
    text->reset();  // of what was looked at on the way
    return S_OK;
  }
  const bool is_nothing = text->vt == VT_EMPTY;
  RETURN_IF_FAILED(parts_.engine.make_text(text, &mark, parts_.null_is_empty));
  if (is_nothing && parts_.engine.takes_notes()) note_nothing(source, name);
  return S_OK;
}

HRESULT MarkValues::read_value(MarkSource source, BSTR name, CComVariant* value, bool* found) const {
  CComPtr<IKorLibDictionary> items;
  switch (source) {
    case MarkSource::view:
      items = parts_.view;
      if (!items) parts_.engine.set_reason(kNoView);
      return read_item(items.get(), name, value);
    case MarkSource::bag:
      RETURN_IF_FAILED(get_bag(&items));
      if (!items) parts_.engine.set_reason(kNoBag);
      return read_item(items.get(), name, value);
    case MarkSource::session:
      if (!parts_.asp.session) parts_.engine.set_reason(kNoSession);
      return read_host_value(parts_.asp.session, name, value);
    case MarkSource::application:
      return read_host_value(parts_.asp.application, name, value);
    case MarkSource::request:
      return parts_.asp.request ? get_field(name, value, found) : E_FAIL;
    default:
      return E_UNEXPECTED;  // holds no values
  }
}

// A field of the request is not there as often as not.
void MarkValues::note_nothing(MarkSource source, BSTR name) const {
  CComPtr<IKorLibDictionary> bag;
  switch (source) {
    case MarkSource::view:
      return parts_.engine.note_slip(TemplateSlip::no_item, name, parts_.view.get());
    case MarkSource::bag:
      if (mirt::succeeded_or_forgotten(get_bag(&bag)))
        parts_.engine.note_slip(TemplateSlip::no_bag_item, name, bag.get());
      return;
    case MarkSource::session:
      return parts_.engine.note_slip(TemplateSlip::no_session_value, name);
    case MarkSource::application:
      return parts_.engine.note_slip(TemplateSlip::no_application_value, name);
    default:
      return;
  }
}

// A blank behind the opening is how notes are written.
void note_mark_without_type(CTemplatorConcept& engine, const CMarkData& mark) {
  if (!engine.takes_notes()) return;
  const std::wstring_view text = mark.Name.view();
  if (text.empty() || text.front() <= L' ') return;
  engine.note_slip(TemplateSlip::without_type, MarkName(mark));
}

HRESULT script_member_text(CTemplatorConcept& engine, CEvent& member, IDispatch* owner, const CMarkData& mark,
                           const bool& empty_on_fail, CComVariant* text) {
  HRESULT hr = member.Get();
  const bool is_function = hr == DISP_E_MEMBERNOTFOUND;  // it cannot be read
  if (is_function) {
    mirt::forget_error();
    hr = fire_with_texts(member, owner, mark.Params);
  }
  RETURN_IF_FAILED(hr);
  *text = std::move(member.result);
  return engine.make_text(text, is_function ? nullptr : &mark, empty_on_fail);
}

HRESULT read_item(IKorLibDictionary* items, BSTR name, CComVariant* value) {
  return items ? items->get_Item(korlib::borrowed(name), value->put()) : E_FAIL;
}
