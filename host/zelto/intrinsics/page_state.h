// What the intrinsic objects of one running page share.
#pragma once

#include <korlib/comvariant.h>
#include <mirt/template_notes.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "intrinsics/request_state.h"
#include "intrinsics/response_state.h"

namespace zelto {

// What went wrong in a page.
struct PageError {
  HRESULT number = S_OK;
  std::wstring source;       // who reported it, "Mirt"
  std::wstring description;  // in words
  std::wstring category;     // "Script", "Server"
  std::wstring code_line;    // the line of source text
  std::wstring file;         // virtual path of the page or included file
  LONG line = 0;             // from 1; 0 when it is not known
  LONG column = -1;

  // For those who look into it.
  struct Call {
    std::wstring function;  // empty for what stands outside of every function
    std::wstring file;
    LONG line = 0;
  };
  std::vector<Call> calls;      // from its place outwards
  std::size_t more_calls = 0;   // around those
  bool has_lost_calls = false;  // and others, of which not even the number is known
  struct Template {
    std::wstring file;  // virtual path; "(text)" for a template that comes from no file
    LONG line = 0;      // from 1, like the column
    LONG column = 0;
    std::wstring mark;      // as it is written
    std::size_t calls = 0;  // how many of the calls were running inside of the mark
    std::wstring charset;   // that the file was read in; empty when it is not known
  };
  std::vector<Template> templates;  // that were being drawn, the innermost first
  std::size_t more_templates = 0;   // around those
  struct Cause {
    enum Kind : unsigned char { cause, part, opener };  // language/program.h
    Kind kind = cause;
    std::wstring description;
    std::wstring source;
    std::wstring file;
    LONG line = 0;
    LONG column = 0;
    std::vector<Call> calls;
    unsigned depth = 0;  // likewise
  };
  std::vector<Cause> causes;  // what it says that it comes from
  std::size_t more_causes = 0;
  std::string reference;  // what a visitor is told in place of all this
};

// What the intrinsic objects ask of whoever runs the page. Of itself it answers for a page that has ended.
class PageHost {
 public:
  virtual ~PageHost() = default;
  // Ends the page: the answer is the code with which the asking member fails, and the script is left at
  // once, without running any handler of its own.
  virtual HRESULT end_page() { return S_OK; }
  // Runs another page of the site with the same intrinsic objects, and comes back.
  virtual HRESULT execute(const std::string& /*virtual_path*/) { return E_UNEXPECTED; }
  virtual LONG script_timeout() const { return 0; }  // seconds
  virtual HRESULT set_script_timeout(LONG /*seconds*/) { return S_OK; }
  virtual const PageError* last_error() const { return nullptr; }  // null when there was none
  // Whether it wants to know of templates, and what the component then has to say.
  virtual bool takes_notes() const { return false; }
  virtual void note_template(std::wstring_view /*file*/, std::wstring_view /*charset*/) {}
  virtual void note_slip(TemplateSlip /*slip*/, std::wstring_view /*name*/, std::wstring_view /*place*/,
                         IUnknown* /*values*/) {}
  virtual void note_arguments(std::wstring_view /*member*/, ULONG /*takes*/, ULONG /*given*/) {}
  virtual void note_bag(std::wstring_view /*page*/, IUnknown* /*bag*/) {}
};

// Belongs to the request's thread. Objects may outlive the page.
struct PageState {
  PageState(HttpRequest http, PagePlace place, ResponseSink& sink, PageHost* page_host)
      : request(std::move(http), std::move(place)), response(sink), host(page_host) {}

  // For what the page writes, and for what it has not yet read of the request.
  void set_code_page(LONG code_page) { response.code_page = request.code_page = code_page; }

  // Whoever runs the page calls this before the page's host and sink go.
  void end() {
    host = ended_host();
    response.detach();
  }
  bool has_ended() const { return host == ended_host(); }

  RequestState request;
  ResponseState response;
  PageHost* host;  // never null

 private:
  static PageHost* ended_host() {
    static PageHost ended;
    return &ended;
  }
};
using PageStatePtr = std::shared_ptr<PageState>;

}  // namespace zelto
