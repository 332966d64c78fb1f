#include "site/page_run.h"

#include <fmt/xchar.h>
#include <korlib_host/context.h>
#include <korlib_host/database.h>
#include <korlib_host/errors.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "base/letter_case.h"
#include "http/status.h"
#include "intrinsics/application.h"
#include "intrinsics/page_context.h"
#include "intrinsics/request_object.h"
#include "intrinsics/response_object.h"
#include "intrinsics/server_object.h"
#include "intrinsics/session_object.h"
#include "pages/programs.h"
#include "platform/canonical_path.h"
#include "script/realm.h"
#include "script/template_places.h"
#include "site/error_page.h"
#include "site/page_error.h"
#include "site/page_notes.h"
#include "site/page_session.h"
#include "text/characters.h"
#include "text/charset.h"
#include "text/html.h"

namespace zelto {

namespace {

// "/default.asp:12: console.warn: text".
std::string console_line(const script::LogLine& line, const Site& site) {
  std::string text(site.path_of(line.file));
  if (line.line > 0) text += ":" + std::to_string(line.line);
  return text + ": console." + line.level + ": " + line.text;
}

// What the page does to databases ends with it, by whatever way it goes.
struct DatabaseUse {
  DatabaseUse() = default;
  ~DatabaseUse() {
    korlib_host::set_statement_deadline(std::chrono::steady_clock::time_point::max());
    korlib_host::roll_back_transactions();
  }
  DatabaseUse(const DatabaseUse&) = delete;
  DatabaseUse& operator=(const DatabaseUse&) = delete;
};

class PageRun final : public PageHost {
 public:
  PageRun(Site& site, script::Engine& engine, HttpRequest request, PagePlace place, ResponseSink& sink)
      : site_(site),
        settings_(site.settings()),
        engine_(engine),
        page_(std::make_shared<PageState>(std::move(request), std::move(place), sink, this)),
        hold_(std::make_shared<ApplicationHold>(site.application())),
        session_(site.sessions(), *page_) {
    if (settings_->options.debug) notes_.emplace();
  }
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
  bool takes_notes() const override { return notes_.has_value(); }
  void note_template(std::wstring_view file, std::wstring_view charset) override;
  void note_slip(TemplateSlip slip, std::wstring_view name, std::wstring_view place, IUnknown* values) override;
  void note_arguments(std::wstring_view member, ULONG takes, ULONG given) override;
  void note_bag(std::wstring_view page, IUnknown* bag) override {
    if (notes_) notes_->add_bag(page, bag);
  }

 private:
  void set_time_limit(std::chrono::seconds limit);
  void set_text_forms(const pages::Directive& directive);
  void make_objects();
  void run_script(const LoadedPage& loaded);
  script::Outcome run_realm(const LoadedPage& loaded);
  void log_console(const script::LogLine& line);
  void warn_of_slips();
  void fail(PageError error);
  void fail_at_limit(HRESULT number, std::wstring description, const std::optional<script::ScriptError>& place);
  int answer();
  int error_status() const;
  bool shows_panel() const;
  // In the code page of what the page has written already.
  void write_html(std::string_view html) { page_->response.write_bytes(html_bytes(html, page_->response.code_page)); }
  void answer_error(const PageError& error);

  Site& site_;
  const std::shared_ptr<const SiteSettings> settings_;
  script::Engine& engine_;
  PageStatePtr page_;
  std::shared_ptr<ApplicationHold> hold_;
  PageSession session_;
  PageContext::Objects objects_;
  std::optional<PageError> error_;
  std::optional<PageNotes> notes_;               // where the site shows its errors
  std::chrono::steady_clock::time_point began_;  // the script
  std::size_t console_room_ = kConsoleLimit;
  bool is_console_full_ = false;
};

int PageRun::run() {
  const PagePlace& place = page_->request.place();
  LoadedPage loaded = site_.programs().load(place.virtual_path, place.physical_path, page_->request.http().file_stamp);
  if (loaded.error) {
    fail(page_error(*loaded.error, site_));
    return answer();
  }
  if (loaded.directive.uses_session && !session_.open()) {
    page_->response.set_status(status_line(status::kUnavailable));
    page_->response.write(L"Another request of this session is taking too long.");
    return answer();
  }
  set_text_forms(loaded.directive);
  if (notes_) notes_->end_phase("Compiling");
  run_script(loaded);
  warn_of_slips();
  const int status = answer();
  hold_->unlock();
  session_.close();
  return status;
}

// The page's directive goes before what its session remembers.
void PageRun::set_text_forms(const pages::Directive& directive) {
  const auto session = session_.state();
  page_->set_code_page(directive.code_page.value_or(session ? session->code_page : kUtf8CodePage));
  page_->response.lcid = directive.lcid.value_or(session ? session->lcid : kNeutralLocale);
}

void PageRun::make_objects() {
  constexpr std::size_t kMost = 5;
  objects_.reserve(kMost);
  const auto add = [this](const wchar_t* name, IDispatch* made) {
    objects_.emplace_back(name, nullptr).second.attach(made);
  };
  add(L"Request", korlib::make<RequestObject>(page_).detach());
  add(L"Response", korlib::make<ResponseObject>(page_).detach());
  add(L"Server", korlib::make<ServerObject>(page_).detach());
  add(L"Application", korlib::make<ApplicationObject>(hold_).detach());
  if (const auto session = session_.state()) add(L"Session", korlib::make<SessionObject>(session, page_).detach());
}

void PageRun::run_script(const LoadedPage& loaded) {
  make_objects();
  began_ = std::chrono::steady_clock::now();
  const DatabaseUse database;  // ends after the objects
  const PathMemory paths;
  set_time_limit(settings_->options.script_timeout);
  engine_.set_memory_limit(settings_->options.script_memory, settings_->options.kept_memory);
  CComPtr<PageContext> context;
  context.attach(new PageContext(objects_));
  const korlib_host::ContextScope scope(context.get());
  script::Outcome outcome = run_realm(loaded);
  // The last references of most components go here, with the session still locked.
  objects_.clear();
  switch (outcome.kind) {
    case script::Outcome::completed:
    case script::Outcome::stopped:
      return;
    case script::Outcome::timed_out:
      fail_at_limit(E_ABORT,
                    fmt::format(L"The page took longer than the site allows. Its limit is {} s: script_timeout, or "
                                L"Server.ScriptTimeout where that is more.",
                                script_timeout()),
                    outcome.error);
      return;
    case script::Outcome::out_of_memory:
      fail_at_limit(
          E_OUTOFMEMORY,
          fmt::format(L"The page took more memory than the site allows. Its limit is {} bytes: script_memory.",
                      settings_->options.script_memory),
          outcome.error);
      return;
    case script::Outcome::failed:
      fail(outcome.error ? page_error(*outcome.error, site_) : PageError());
      return;
  }
}

script::Outcome PageRun::run_realm(const LoadedPage& loaded) {
  script::Realm realm(engine_, loaded.program);
  for (const auto& [name, object] : objects_) {
    realm.set_object(name, object.get());
    if (name == L"Response") realm.set_output(object.get());
  }
  realm.set_root(site_.root());
  realm.set_log([this](const script::LogLine& line) { log_console(line); });
  return realm.run(loaded.program);
}

void PageRun::log_console(const script::LogLine& line) {
  if (is_console_full_) return;
  const std::string text = console_line(line, site_);
  const std::string_view kept = beginning_of(text, console_room_);
  console_room_ -= kept.size();
  is_console_full_ = kept.size() < text.size();
  if (!kept.empty()) site_.log(kept);
  if (notes_) notes_->add_console(kept);
  if (is_console_full_)
    site_.log(std::string(site_.path_of(line.file)) + ": the rest of this page's console is left out");
}

void PageRun::note_template(std::wstring_view file, std::wstring_view charset) {
  if (notes_) notes_->add_template(script::site_path(to_utf8(file), site_.root()), charset);
}

void PageRun::note_slip(TemplateSlip slip, std::wstring_view name, std::wstring_view place, IUnknown* values) {
  if (!notes_) return;
  const auto names_of = [&] {
    PageNotes::Names names = keys_of(values);
    if (const auto session = session_.state(); session && slip == TemplateSlip::no_session_value) session->names(names);
    if (slip == TemplateSlip::no_application_value) hold_->names(names);
    return names;
  };
  notes_->add_slip(slip, name, script::named_from_root(place, site_.root()), names_of);
}

void PageRun::note_arguments(std::wstring_view member, ULONG takes, ULONG given) {
  if (!notes_) return;
  const script::ScriptError here = engine_.reached();
  notes_->add_extra_arguments(fmt::format(L"{}:{}", to_wide(site_.path_of(here.file)), here.line), member, takes,
                              given);
}

void PageRun::warn_of_slips() {
  if (!notes_) return;
  notes_->end_phase("Script and templates");
  const std::string warning = notes_->warning(page_->request.place().virtual_path);
  if (!warning.empty()) site_.log(warning);
}

HRESULT PageRun::execute(const std::string& virtual_path) {
  const FoundFile found = settings_->files.find(virtual_path);
  if (found.kind != FoundFile::Kind::page) {
    return korlib::raise(E_FAIL, L"Server", L"There is no page \"" + to_wide(virtual_path) + L"\".");
  }
  const LoadedPage loaded = site_.programs().load(found.path, found.physical);
  script::Outcome outcome;
  if (loaded.error) {
    outcome.kind = script::Outcome::failed;
    outcome.error = loaded.error;
  } else if (script::is_unwinding()) {
    return script::kPageStopped;
  } else {
    outcome = run_realm(loaded);
  }
  if (outcome.kind == script::Outcome::completed) return S_OK;
  if (outcome.kind != script::Outcome::failed) return script::kPageStopped;  // still unwinding
  return engine_.raise_executed(std::move(outcome.error).value_or(script::ScriptError()));
}

HRESULT PageRun::set_script_timeout(LONG seconds) {
  set_time_limit(std::max<std::chrono::seconds>(std::chrono::seconds(seconds), settings_->options.script_timeout));
  return S_OK;
}

// For the script and for what it has a database do.
void PageRun::set_time_limit(std::chrono::seconds limit) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kLater{100};  // so that the page is late when the database lets it go
  engine_.set_time_limit(limit);
  korlib_host::set_statement_deadline(limit.count() > 0 ? began_ + limit + kLater : Clock::time_point::max());
}

// The line is the one that the script had come to: it may have little to do with why it took so much.
void PageRun::fail_at_limit(HRESULT number, std::wstring description, const std::optional<script::ScriptError>& place) {
  PageError error = place ? page_error(*place, site_) : PageError();
  error.number = number;
  error.source = L"Server";
  error.category = L"Server";
  error.description = std::move(description);
  fail(std::move(error));
}

void PageRun::fail(PageError error) {
  if (!settings_->options.debug) error.reference = new_reference();
  for (PageError::Template& place : error.templates)
    if (notes_) place.charset = notes_->charset_of(to_utf8(place.file));
  const std::string& page = page_->request.place().virtual_path;
  if (error.file.empty()) error.file = to_wide(page);
  site_.log(error_line(error, page));
  error_ = std::move(error);
}

int PageRun::answer() {
  ResponseState& response = page_->response;
  // A head that has gone out says that all is well: only the connection can tell that it is not.
  const bool breaks = error_ && response.head_sent();
  if (error_) answer_error(*error_);
  if (!error_ && shows_panel()) write_html(notes_->panel_of_page(session_.state().get()));
  const int status = error_ ? status::kServerError : response.status;
  breaks ? response.break_off() : response.finish();
  return status;
}

// A redirection, a text or a picture has no foot.
bool PageRun::shows_panel() const {
  const ResponseState& response = page_->response;
  return notes_ && settings_->options.debug_panel && response.status == status::kOk &&
         base::equal_ascii(response.content_type, "text/html");
}

// A page that gave up over a body, a query string or a session that it cannot have is not to blame.
int PageRun::error_status() const {
  if (page_->request.is_too_large()) return status::kContentTooLarge;
  if (page_->request.has_too_long_query()) return status::kTargetTooLong;
  return session_.was_refused() ? status::kUnavailable : status::kServerError;
}

void PageRun::answer_error(const PageError& error) {
  ResponseState& response = page_->response;
  const bool begins = response.reset();
  const int status = error_status();
  if (begins) {
    response.set_status(status_line(status));
    response.cache_control = "no-store";
  }
  if (notes_)
    write_html(debug_error_page(error, site_.root(), page_->request.place().virtual_path, page_->request.http().target,
                                notes_->refused(error) + notes_->panel(session_.state().get())));
  else if (begins)
    response.write_bytes(plain_error_page(status_line(status), error.reference));
  else if (base::equal_ascii(response.content_type, "text/html"))
    response.write_bytes(reference_comment(error.reference));
}

}  // namespace

int run_page(Site& site, script::Engine& engine, HttpRequest request, const std::string& path, ResponseSink& sink) {
  return PageRun(site, engine, std::move(request), {path, site.root() + path, site.root()}, sink).run();
}

}  // namespace zelto
