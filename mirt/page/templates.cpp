#include "page/templates.h"

#include <memory>
#include <utility>

#include <korlib/activation.h>

#include "frame/error.h"
#include "frame/host.h"
#include "page/template_path.h"
#include "page/text.h"
#include "templator/template_cache.h"

namespace page {
namespace {

// The path of the template being drawn: taken out for as long as names are resolved, put back at the end.
class TakenPath {
 public:
  explicit TakenPath(CComBSTR& slot) : slot_(slot), saved_(std::exchange(slot, {})) {}
  ~TakenPath() { slot_ = std::move(saved_); }
  TakenPath(const TakenPath&) = delete;
  TakenPath& operator=(const TakenPath&) = delete;

  std::wstring_view view() const { return saved_.view(); }

 private:
  CComBSTR& slot_;
  CComBSTR saved_;
};

struct ReleaseTemplate {
  void operator()(CTemplate* parsed) const { parsed->Release(); }
};
using TemplateRef = std::unique_ptr<CTemplate, ReleaseTemplate>;

}  // namespace

HRESULT Templates::draw(std::wstring_view name) {
  const TakenPath enclosing(current_);
  const CComBSTR composed = compose_path(enclosing.view(), folder.view(), name, extension.view());
  CComBSTR canonical;
  if (!composed || FAILED(ConvertToCanonicalizedPath(composed.view(), canonical)))
    return raise({L"Template file path is invalid.[", composed.view(), L"]"});
  if (!CanPathObtain(canonical.view(), permission_path.view(), folder.view()))
    return raise({L"Template file can't obtain.[", canonical.view(), L"]"});
  CComBSTR text;
  const CComBSTR read_as = charset;
  const HRESULT read = read_text_file(canonical, read_as, text.put());
  if (FAILED(read)) return draw_unreadable(canonical.view(), read);
  engine_.note_template(canonical, read_as);
  return are_cached ? draw_cached(composed, canonical, text) : draw_text(composed, canonical, text);
}

// When the stack is used up, as by a template that draws itself, nothing is wrong with the file, and no script can run.
HRESULT Templates::draw_unreadable(std::wstring_view path, HRESULT read) {
  if (read == korlib::kOutOfStack) return read;
  mirt::forget_error();
  bool is_drawn = false;
  RETURN_IF_FAILED(draw_instead_(is_drawn));
  return is_drawn ? S_OK : raise({L"Template file can't read.[", path, L"]"});
}

HRESULT Templates::draw_text(const CComBSTR& path, const CComBSTR& file, BSTR text) {
  current_ = path;
  return engine_.Process(text, file.view());
}

// The cache goes by the composed path, and notices a changed file by its time. The text has been read in any case: the
// cache saves the parsing.
HRESULT Templates::draw_cached(const CComBSTR& path, const CComBSTR& file, BSTR text) {
  CTemplate* kept = nullptr;
  g_oTemplateCache.Take(path, &kept);
  TemplateRef parsed(kept);
  if (!parsed) {
    parsed.reset(new CTemplate);
    RETURN_IF_FAILED(engine_.Parse(text, *parsed, file.view()));
    g_oTemplateCache.Store(path, parsed.get());
  }
  current_ = path;
  return engine_.Process(*parsed, korlib::view_of(text), file.view());
}

}  // namespace page
