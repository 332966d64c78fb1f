#include "page/nested_texts.h"

#include "page/text.h"

namespace page {
namespace {

constexpr unsigned kDeepest = 256;

class Level {
 public:
  explicit Level(unsigned& depth) : depth_(++depth) {}
  ~Level() { --depth_; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  unsigned& depth_;
};

}  // namespace

HRESULT NestedTexts::draw(BSTR text) {
  const Level level(depth_);
  if (depth_ > kDeepest) return raise({L"Template text is nested too deeply."});
  return engine_.Process(text);
}

HRESULT NestedTexts::draw(const std::wstringstream& text) {
  const CComBSTR copy = bstr_of(text);
  return copy ? draw(copy.get()) : E_OUTOFMEMORY;
}

}  // namespace page
