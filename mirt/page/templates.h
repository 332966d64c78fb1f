// Template files: found by name below the page's folder, read, and drawn fresh or from the cache.
#pragma once

#include <functional>

#include <korlib/combstr.h>

#include "templator/templator_concept.h"

namespace page {

class Templates {
 public:
  // Called when a file cannot be read. May draw something instead, and then sets is_drawn; its failure is returned.
  using DrawInstead = std::function<HRESULT(bool& is_drawn)>;

  // The engine, which draws, outlives this.
  Templates(CTemplatorConcept& engine, DrawInstead draw_instead)
      : engine_(engine), draw_instead_(std::move(draw_instead)) {}
  Templates(const Templates&) = delete;
  Templates& operator=(const Templates&) = delete;

  // Properties of the page.
  CComBSTR default_template;
  CComBSTR permission_path;  // templates must lie below it; if empty, below the folder
  bool are_cached = true;
  CComBSTR folder;
  CComBSTR extension;
  CComBSTR charset = L"UTF-8";

  // Draws the file of that name, which lies beside the file that is being drawn, if there is one, else in the folder.
  // Raises an error if the path is not permitted or cannot be read.
  HRESULT draw(std::wstring_view name);

 private:
  HRESULT draw_unreadable(std::wstring_view path, HRESULT read);
  // `file` is the canonical form of the path, by which errors name the template.
  HRESULT draw_text(const CComBSTR& path, const CComBSTR& file, BSTR text);
  HRESULT draw_cached(const CComBSTR& path, const CComBSTR& file, BSTR text);

  CTemplatorConcept& engine_;
  DrawInstead draw_instead_;
  CComBSTR current_;  // path of the file that is being drawn, else empty
};

}  // namespace page
