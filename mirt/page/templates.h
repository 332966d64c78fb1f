// Template files: found by name below the page's folder, read, and drawn fresh or from the cache.
#pragma once

#include <functional>

#include <korlib/combstr.h>

#include "templator/templator_concept.h"

namespace page {

class Templates {
 public:
  // Called where a file cannot be read: may draw something instead, which it tells. Its failure is the answer.
  using DrawInstead = std::function<HRESULT(bool& is_drawn)>;

  // The engine, which draws, outlives this.
  Templates(CTemplatorConcept& engine, DrawInstead draw_instead)
      : engine_(engine), draw_instead_(std::move(draw_instead)) {}
  Templates(const Templates&) = delete;
  Templates& operator=(const Templates&) = delete;

  // Properties of the page.
  CComBSTR default_template;
  CComBSTR permission_path;  // where templates may lie, or else below the folder
  bool are_cached = true;
  CComBSTR folder;
  CComBSTR extension;
  CComBSTR charset = L"UTF-8";

  // Draws the file of that name: beside the file that is being drawn, where there is one, else in the folder. A path
  // that is not permitted or that nothing can be read from raises an error.
  HRESULT draw(std::wstring_view name);

 private:
  HRESULT draw_unreadable(std::wstring_view path, HRESULT read);
  HRESULT draw_text(const CComBSTR& path, BSTR text);
  HRESULT draw_cached(const CComBSTR& path, BSTR text);

  CTemplatorConcept& engine_;
  DrawInstead draw_instead_;
  CComBSTR current_;  // path of the file that is being drawn, else empty
};

}  // namespace page
