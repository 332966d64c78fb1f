#include "page/nested_texts.h"

#include "page/text.h"

namespace page {
namespace {

constexpr unsigned kDeepest = 256;
constexpr std::size_t kMostCharacters = std::size_t{32} << 20;

// By an amount while this lives.
template <class Count>
class Raised {
 public:
  Raised(Count& count, Count amount) : count_(count), amount_(amount) { count_ += amount_; }
  ~Raised() { count_ -= amount_; }
  Raised(const Raised&) = delete;
  Raised& operator=(const Raised&) = delete;

 private:
  Count& count_;
  const Count amount_;
};

}  // namespace

HRESULT NestedTexts::draw(BSTR text) {
  const Raised<unsigned> level(depth_, 1);
  const Raised<std::size_t> room(characters_, SysStringLen(text));
  const bool is_too_deep = depth_ > kDeepest || (depth_ > 1 && characters_ > kMostCharacters);
  if (is_too_deep) return raise({L"Template text is nested too deeply."});
  return engine_.Process(text);
}

HRESULT NestedTexts::draw(const std::wstringstream& text) {
  const CComBSTR copy = bstr_of(text);
  return copy ? draw(copy.get()) : E_OUTOFMEMORY;
}

}  // namespace page
