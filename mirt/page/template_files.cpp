// Template files: found by name below the page's folder, read, and drawn fresh or from the cache.
#include <korlib/activation.h>

#include "frame/error.h"
#include "frame/host_stream.h"
#include "page/mirt_impl.h"
#include "page/template_path.h"
#include "page/text.h"
#include "templator/template_cache.h"

namespace {

using Self = GIMirtImpl<IMirt>;

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

// One counted reference.
class TemplateRef {
 public:
  TemplateRef() = default;
  ~TemplateRef() {
    if (template_) template_->Release();
  }
  TemplateRef(const TemplateRef&) = delete;
  TemplateRef& operator=(const TemplateRef&) = delete;

  CTemplate** put() { return &template_; }
  CTemplate* get() const { return template_; }

 private:
  CTemplate* template_ = nullptr;
};

}  // namespace

STDMETHODIMP Self::DrawTemplate(BSTR name) try {
  const CComPtr<IDispatch> alive(owner_);
  return Draw(name);
} catch (...) {
  return mirt::hresult_from_exception();
}

HRESULT Self::Draw(BSTR name) {
  const TakenPath current(current_template_path_);
  const CComBSTR composed =
      page::compose_path(current.view(), template_folder_.view(), korlib::view_of(name), template_ext_.view());
  CComBSTR canonical;
  if (!composed || FAILED(page::ConvertToCanonicalizedPath(composed.view(), canonical)))
    return page::raise({L"Template file path is invalid.[", composed.view(), L"]"});
  if (!page::CanPathObtain(canonical.view(), template_permission_path_.view(), template_folder_.view()))
    return page::raise({L"Template file can't obtain.[", canonical.view(), L"]"});
  CComBSTR text;
  const CComBSTR charset = template_charset_;
  const HRESULT read = read_text_file(canonical, charset, text.put());
  if (FAILED(read)) return draw_instead_of(canonical.view(), read);
  return cache_template_ ? draw_cached(composed, text) : draw_text(composed, text);
}

// The script may name another template when one cannot be read, and asks for it by returning False. Where
// the stack is used up, as by a template that draws itself, there is nothing wrong with the file, and no
// script can be asked.
HRESULT Self::draw_instead_of(std::wstring_view path, HRESULT read) {
  if (read == korlib::kOutOfStack) return read;
  mirt::forget_error();
  bool is_error = true;
  RETURN_IF_FAILED(fire(L"On_TemplateNotFound", true, is_error));
  if (is_error) return page::raise({L"Template file can't read.[", path, L"]"});
  bool handled = false;
  return Draw(handled);
}

HRESULT Self::draw_text(const CComBSTR& path, BSTR text) {
  current_template_path_ = path;
  return CTemplatorConcept::Process(text);
}

// By the composed path: the cache tells a changed file by its time. The text has been read in any case;
// what is saved is the parsing.
HRESULT Self::draw_cached(const CComBSTR& path, BSTR text) {
  TemplateRef parsed;
  g_oTemplateCache.Take(path, parsed.put());
  if (!parsed.get()) {
    *parsed.put() = new CTemplate;
    RETURN_IF_FAILED(Parse(text, *parsed.get()));
    g_oTemplateCache.Store(path, parsed.get());
  }
  current_template_path_ = path;
  return CTemplatorConcept::Process(*parsed.get());
}
