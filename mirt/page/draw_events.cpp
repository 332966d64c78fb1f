// Draw events: script functions that a mark calls, and the built-in ones behind them.
#include <korlib/activation.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;

// Texts drawn by marks nest on the machine's stack, each level holding a copy of what lies inside it. No
// page comes near this; a text that was made to nest without end does.
constexpr unsigned kMostNested = 256;

constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

class Level {
 public:
  explicit Level(unsigned& count) : count_(++count) {}
  ~Level() { --count_; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  unsigned& count_;
};

}  // namespace

HRESULT Self::OnMarked_Process(const CMarkData& mark) {
  const CComBSTR name = page::join({draw_prefix_.view(), mark.Name.view()});
  if (!name) return E_OUTOFMEMORY;
  CEvent event;
  const HRESULT found = handler_.GetEvent(name, event);
  if (SUCCEEDED(found)) return fire_with_texts(event, owner_, mark.Params);
  if (found == korlib::kOutOfStack) return found;  // nobody could be asked
  mirt::forget_error();
  for (const BuiltIn& built_in : built_ins()) {
    if (!page::equal_ignoring_case(name.view(), built_in.name)) continue;
    const std::size_t count = mark.Params.size();
    if (count < built_in.least || count > built_in.most)
      return page::raise({L"Invalid ", built_in.name, L" param length."});
    return (this->*built_in.draw)(built_in.source, mark.Params);
  }
  return page::raise({L"Event '", name.view(), L"' not found."});
}

std::span<const Self::BuiltIn> Self::built_ins() {
  static constexpr BuiltIn kBuiltIns[] = {
      {L"OnDraw__InputDefault", 4, 4, &Self::draw_input_default, Source::kBag},
      {L"OnDraw__InputDefaultV", 4, 4, &Self::draw_input_default, Source::kView},
      {L"OnDraw__InputDefaultP", 4, 4, &Self::draw_input_default, Source::kScript},
      {L"OnDraw__Input", 2, 3, &Self::draw_input, Source::kBag},
      {L"OnDraw__Input_Default", 2, 2, &Self::draw_default, Source::kBag},
      {L"OnDraw__InputV", 2, 3, &Self::draw_input, Source::kView},
      {L"OnDraw__InputV_Default", 2, 2, &Self::draw_default, Source::kView},
      {L"OnDraw__InputP", 2, 3, &Self::draw_input, Source::kScript},
      {L"OnDraw__InputP_Default", 2, 2, &Self::draw_default, Source::kScript},
      {L"OnDraw__Message", 1, 3, &Self::draw_message, {}},
      {L"OnDraw__Message_Text", 0, kAnyNumber, &Self::draw_message_text, {}},
  };
  return kBuiltIns;
}

HRESULT Self::process_nested(const std::wstringstream& text) {
  const CComBSTR copy = bstr_of(text);
  return copy ? process_nested(copy.get()) : E_OUTOFMEMORY;
}

HRESULT Self::process_nested(BSTR text) {
  const Level level(nesting_);
  if (nesting_ > kMostNested) return page::raise({L"Template text is nested too deeply."});
  return CTemplatorConcept::Process(text);
}
