// Turns a page and what it includes into one script.
//
// Literal text becomes a call that writes it by number, so that a block opened in one <% %> may be closed
// after it; code stands in the script as it is, and so does a file that a <script runat="server" src="…">
// names, by the rules of an include. The script's lines remember the file and line that they
// come from. Script in VBScript is compiled (vbscript/compiler.h). Where a page has both languages, they are one
// script: that of the <script> elements in the other one comes first.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <korlib/hresult.h>

#include "language/program.h"
#include "pages/directive.h"
#include "pages/source_file.h"

namespace zelto::pages {

// What is wrong with a page before any of it runs.
struct PageSourceError : std::runtime_error {
  PageSourceError(const std::string& what, std::string in_file, int at_line, int at_column = 0)
      : std::runtime_error(what), file(std::move(in_file)), line(at_line), column(at_column) {}
  std::string file;  // its physical path
  int line;          // from 1
  int column;        // from 1; 0 when unknown
  std::wstring source = L"Page";
  HRESULT number = E_FAIL;
};

struct CompiledPage {
  std::shared_ptr<const language::Program> program;
  Directive directive;
  bool has_vbscript = false;
  std::vector<std::pair<std::string, FileStamp>> files;  // what it was made of
  bool is_settled = true;                                // the stamps of `files` will tell of any change
};

// `root` is the site's folder and `physical` the page's file, both canonical; `language` is that of a page without a
// directive that says. Throws PageSourceError. `written` receives the script as it stands in the files, in the lines of
// the program and without its shifts.
CompiledPage compile_page(const std::string& root, const std::string& physical,
                          Language language = Language::javascript, std::wstring* written = nullptr);

// The same for whoever tells of missing includes already: they are passed over, and `lacks_includes` says whether any
// was.
CompiledPage compile_present_files(const std::string& root, const std::string& physical, Language language,
                                   std::wstring& written, bool& lacks_includes);

}  // namespace zelto::pages
