#include "page/draw_events.h"

#include <algorithm>

#include <korlib/activation.h>
#include <mirt/draw_functions.h>

#include "frame/error.h"
#include "frame/values.h"
#include "page/text.h"

namespace page {
namespace {

constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);
constexpr std::wstring_view kPrefix = L"OnDraw_";

}  // namespace

struct DrawEvents::BuiltIn {
  using DrawInput = HRESULT (InputDrawers::*)(BoundTo source, const MarkParams& params);
  using DrawMessage = HRESULT (Messages::*)(const MarkParams& params);

  std::wstring_view name;
  std::size_t least, most;  // parameters
  DrawInput draw_input;     // or else
  BoundTo source;
  DrawMessage draw_message;

  HRESULT draw(DrawEvents& events, const MarkParams& params) const {
    if (params.size() < least || params.size() > most) return raise({L"Invalid ", name, L" param length."});
    return draw_input ? (events.inputs_.*draw_input)(source, params) : (events.messages_.*draw_message)(params);
  }

  static const BuiltIn* find(std::wstring_view name) {
    static constexpr BuiltIn kBuiltIns[] = {
        {L"OnDraw__InputDefault", 4, 4, &InputDrawers::draw_default, BoundTo::bag, {}},
        {L"OnDraw__InputDefaultV", 4, 4, &InputDrawers::draw_default, BoundTo::view, {}},
        {L"OnDraw__InputDefaultP", 4, 4, &InputDrawers::draw_default, BoundTo::script, {}},
        {L"OnDraw__Input", 2, 3, &InputDrawers::draw_input, BoundTo::bag, {}},
        {L"OnDraw__Input_Default", 2, 2, &InputDrawers::draw_inner_default, BoundTo::bag, {}},
        {L"OnDraw__InputV", 2, 3, &InputDrawers::draw_input, BoundTo::view, {}},
        {L"OnDraw__InputV_Default", 2, 2, &InputDrawers::draw_inner_default, BoundTo::view, {}},
        {L"OnDraw__InputP", 2, 3, &InputDrawers::draw_input, BoundTo::script, {}},
        {L"OnDraw__InputP_Default", 2, 2, &InputDrawers::draw_inner_default, BoundTo::script, {}},
        {L"OnDraw__Message", 1, 3, {}, {}, &Messages::draw},
        {L"OnDraw__Message_Text", 0, kAnyNumber, {}, {}, &Messages::draw_current},
    };
    static_assert(std::ranges::equal(kBuiltIns, mirt::kDrawFunctions, {},
                                     [](const BuiltIn& one) { return one.name.substr(kPrefix.size()); }));
    const auto* found = std::find_if(std::begin(kBuiltIns), std::end(kBuiltIns), [name](const BuiltIn& built_in) {
      return mirt::equal_ignoring_case(name, built_in.name);
    });
    return found == std::end(kBuiltIns) ? nullptr : found;
  }
};

HRESULT DrawEvents::draw(const CMarkData& mark) {
  const CComBSTR name = join({kPrefix, mark.Name.view()});
  if (!name) return E_OUTOFMEMORY;
  CEvent event;
  const HRESULT found = scripts_.GetEvent(name, event);
  if (SUCCEEDED(found)) return fire_with_texts(event, owner_, mark.Params);
  if (found == korlib::kOutOfStack) return found;  // the scripts could not be asked
  mirt::forget_error();
  const BuiltIn* built_in = BuiltIn::find(name.view());
  return built_in ? built_in->draw(*this, mark.Params) : raise({L"Event '", name.view(), L"' not found."});
}

}  // namespace page
