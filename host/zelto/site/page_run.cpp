#include "site/page_run.h"

#include <korlib_host/context.h>
#include <korlib_host/database.h>
#include <korlib_host/errors.h>

#include <algorithm>

#include "http/status.h"
#include "intrinsics/application_object.h"
#include "intrinsics/page_context.h"
#include "intrinsics/request_object.h"
#include "intrinsics/response_object.h"
#include "intrinsics/server_object.h"
#include "intrinsics/session_object.h"
#include "pages/programs.h"
#include "script/realm.h"
#include "site/error_page.h"
#include "site/static_files.h"
#include "text/characters.h"
#include "text/charset.h"

namespace zelto {

namespace {

constexpr const wchar_t* kSessionCookie = L"zelto_session";

std::string_view site_path(std::string_view file, const Site& site) {
  if (file.starts_with(site.root() + "/")) file.remove_prefix(site.root().size());
  return file;
}

// "/default.asp:12: console.warn: text", on one line.
std::string console_line(const script::LogLine& line, const Site& site) {
  std::string text(site_path(line.file, site));
  if (line.line > 0) text += ":" + std::to_string(line.line);
  return plain_line(text + ": console." + line.level + ": " + line.text);
}

PageError page_error(const script::ScriptError& error, const Site& site) {
  PageError made;
  made.number = error.number;
  made.source = error.source;
  made.description = error.message;
  made.category = L"Script";
  made.file = to_wide(site_path(error.file, site));
  made.line = error.line;
  made.column = error.column > 0 ? error.column : -1;
  return made;
}

class PageRun final : public PageHost {
 public:
  PageRun(Site& site, script::Engine& engine, HttpRequest request, PagePlace place, ResponseSink& sink)
      : site_(site),
        settings_(site.settings()),
        engine_(engine),
        page_(std::make_shared<PageState>(std::move(request), std::move(place), sink, this)),
        hold_(std::make_shared<ApplicationHold>(site.application())) {}
  PageRun(const PageRun&) = delete;
  PageRun& operator=(const PageRun&) = delete;
  // Objects that a component kept find the page gone.
  ~PageRun() override { page_->end(); }

  int run();

  HRESULT end_page() override { return script::stop_page(); }
  HRESULT execute(const std::string& virtual_path) override;
  LONG script_timeout() const override { return static_cast<LONG>(engine_.time_limit().count() / 1000); }
  HRESULT set_script_timeout(LONG seconds) override;
  const PageError* last_error() const override { return error_ ? &*error_ : nullptr; }

 private:
  bool open_session();
  void set_text_forms(const pages::Directive& directive);
  HRESULT keep_session();
  HRESULT renew_session();
  void set_session_cookie();
  void make_objects();
  void run_script(const LoadedPage& loaded);
  script::Outcome run_realm(const LoadedPage& loaded);
  void fail(PageError error);
  void fail_at_limit(HRESULT number, const wchar_t* description);
  int answer();
  int error_status() const;
  void answer_error(const PageError& error);

  Site& site_;
  const std::shared_ptr<const SiteSettings> settings_;
  script::Engine& engine_;
  PageStatePtr page_;
  std::shared_ptr<ApplicationHold> hold_;
  std::optional<SessionHold> session_;
  PageContext::Objects objects_;
  std::optional<PageError> error_;
  bool no_session_left_ = false;
};

int PageRun::run() {
  const PagePlace& place = page_->request.place();
  LoadedPage loaded = site_.programs().load(place.virtual_path, place.physical_path);
  if (loaded.error) {
    fail(page_error(*loaded.error, site_));
    return answer();
  }
  if (loaded.directive.uses_session && !open_session()) {
    page_->response.set_status(status_line(status::kUnavailable));
    page_->response.write(L"Another request of this session is taking too long.");
    return answer();
  }
  set_text_forms(loaded.directive);
  run_script(loaded);
  const int status = answer();
  hold_->unlock();
  if (session_) site_.sessions().close(std::move(*session_));
  return status;
}

// The page's directive goes before what its session remembers.
void PageRun::set_text_forms(const pages::Directive& directive) {
  page_->set_code_page(directive.code_page.value_or(session_ ? (*session_)->code_page : kUtf8CodePage));
  page_->response.lcid = directive.lcid.value_or(session_ ? (*session_)->lcid : kNeutralLocale);
}

bool PageRun::open_session() {
  const ReceivedCookie* cookie = find_named(page_->request.cookies(), kSessionCookie);
  session_.emplace(site_.sessions().open(cookie ? to_utf8(cookie->value) : std::string()));
  if (!*session_) return false;
  (*session_)->on_keep = [this] { return keep_session(); };
  (*session_)->on_renew = [this] { return renew_session(); };
  return true;
}

HRESULT PageRun::keep_session() {
  if (page_->response.head_sent()) {
    return korlib::raise(E_FAIL, L"Session",
                         L"Nothing can be kept in a new session when the response's head has been sent already.");
  }
  if (!site_.sessions().add(session_->state())) {
    no_session_left_ = true;
    return korlib::raise(E_FAIL, L"Session",
                         L"The site keeps as many sessions as its session_limit allows, all of them in use.");
  }
  set_session_cookie();
  return S_OK;
}

HRESULT PageRun::renew_session() {
  if (page_->response.head_sent()) {
    return korlib::raise(E_FAIL, L"Session",
                         L"RenewID: the client cannot be told when the response's head has been sent already.");
  }
  site_.sessions().rename(session_->state());
  set_session_cookie();
  return S_OK;
}

void PageRun::set_session_cookie() {
  page_->response.session_cookie = to_utf8(kSessionCookie) + "=" + (*session_)->id +
                                   "; Path=/; HttpOnly; SameSite=Lax" +
                                   (page_->request.http().secure ? "; Secure" : "");
}

void PageRun::make_objects() {
  const auto add = [this](const wchar_t* name, IDispatch* made) {
    CComPtr<IDispatch> object;
    object.attach(made);
    objects_.emplace_back(name, std::move(object));
  };
  add(L"Request", korlib::make<RequestObject>(page_).detach());
  add(L"Response", korlib::make<ResponseObject>(page_).detach());
  add(L"Server", korlib::make<ServerObject>(page_).detach());
  add(L"Application", korlib::make<ApplicationObject>(hold_).detach());
  if (session_) add(L"Session", korlib::make<SessionObject>(session_->state(), page_).detach());
}

void PageRun::run_script(const LoadedPage& loaded) {
  make_objects();
  engine_.set_time_limit(settings_->options.script_timeout);
  engine_.set_memory_limit(settings_->options.script_memory);
  CComPtr<PageContext> context;
  context.attach(new PageContext(objects_));
  const korlib_host::ContextScope scope(context.get());
  script::Outcome outcome = run_realm(loaded);
  // The last references of most components go here, with the session still locked.
  objects_.clear();
  korlib_host::roll_back_transactions();
  switch (outcome.kind) {
    case script::Outcome::completed:
    case script::Outcome::stopped:
      return;
    case script::Outcome::timed_out:
      fail_at_limit(E_ABORT, L"The page took longer than it may.");
      return;
    case script::Outcome::out_of_memory:
      fail_at_limit(E_OUTOFMEMORY, L"The page took more memory than it may.");
      return;
    case script::Outcome::failed:
      fail(outcome.error ? page_error(*outcome.error, site_) : PageError());
      return;
  }
}

script::Outcome PageRun::run_realm(const LoadedPage& loaded) {
  script::Realm realm(engine_);
  for (const auto& [name, object] : objects_) {
    realm.set_object(name, object.get());
    if (name == L"Response") realm.set_output(object.get());
  }
  realm.set_log([this](const script::LogLine& line) { site_.log(console_line(line, site_)); });
  return realm.run(loaded.program);
}

HRESULT PageRun::execute(const std::string& virtual_path) {
  const FoundFile found = settings_->files.find(virtual_path);
  if (found.kind != FoundFile::Kind::kPage) {
    return korlib::raise(E_FAIL, L"Server", L"There is no page \"" + to_wide(virtual_path) + L"\".");
  }
  const LoadedPage loaded = site_.programs().load(found.path, found.physical);
  script::Outcome outcome;
  if (loaded.error) {
    outcome.kind = script::Outcome::failed;
    outcome.error = loaded.error;
  } else {
    outcome = run_realm(loaded);
  }
  if (outcome.kind == script::Outcome::completed) return S_OK;
  if (outcome.kind != script::Outcome::failed) return script::kPageStopped;  // still unwinding
  const PageError error = outcome.error ? page_error(*outcome.error, site_) : PageError();
  const HRESULT hr = FAILED(error.number) ? error.number : E_FAIL;
  const std::wstring where =
      error.line > 0 ? L" (" + error.file + L", line " + std::to_wstring(error.line) + L")" : L"";
  return korlib::raise(hr, error.source, error.description + where);
}

HRESULT PageRun::set_script_timeout(LONG seconds) {
  engine_.set_time_limit(
      std::max<std::chrono::seconds>(std::chrono::seconds(seconds), settings_->options.script_timeout));
  return S_OK;
}

// Nobody knows which line was one too many.
void PageRun::fail_at_limit(HRESULT number, const wchar_t* description) {
  PageError error;
  error.number = number;
  error.source = L"Server";
  error.description = description;
  error.file = to_wide(page_->request.place().virtual_path);
  fail(std::move(error));
}

void PageRun::fail(PageError error) {
  site_.log(error_line(error));
  error_ = std::move(error);
}

int PageRun::answer() {
  ResponseState& response = page_->response;
  // A head that has gone out says that all is well: only the connection can tell that it is not.
  const bool breaks = error_ && response.head_sent();
  if (error_) answer_error(*error_);
  const int status = error_ ? status::kServerError : response.status;
  breaks ? response.break_off() : response.finish();
  return status;
}

// A page that gave up over a body or a session that it cannot have is not to blame.
int PageRun::error_status() const {
  if (page_->request.http().body_too_large) return status::kContentTooLarge;
  return no_session_left_ ? status::kUnavailable : status::kServerError;
}

void PageRun::answer_error(const PageError& error) {
  ResponseState& response = page_->response;
  const bool debug = settings_->options.debug;
  const bool begins = response.reset();
  const int status = error_status();
  if (begins) {
    response.set_status(status_line(status));
    response.cache_control = "no-store";
  }
  const std::string physical = error.file.empty() ? std::string() : site_.root() + to_utf8(error.file);
  if (debug)
    response.write_bytes(debug_error_page(error, physical));
  else if (begins)
    response.write_bytes(plain_error_page(status_line(status)));
}

}  // namespace

int PageWorker::run(HttpRequest request, const std::string& virtual_path, const std::string& physical,
                    ResponseSink& sink) {
  return PageRun(site_, engine_, std::move(request), {virtual_path, physical, site_.root()}, sink).run();
}

}  // namespace zelto
