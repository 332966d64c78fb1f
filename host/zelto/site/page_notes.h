// What an author wants to know of a page besides its error: gathered where the site shows its errors, and only there.
#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <korlib_host/statement_listener.h>
#include <mirt/template_notes.h>

#include "intrinsics/page_state.h"
#include "intrinsics/variant_store.h"

namespace zelto {

// Belongs to the thread that the page runs on, whose statements it is told of.
class PageNotes final : public korlib_host::StatementListener {
 public:
  using Clock = std::chrono::steady_clock;

  PageNotes() { korlib_host::set_statement_listener(this); }
  ~PageNotes() { korlib_host::set_statement_listener(nullptr); }
  PageNotes(const PageNotes&) = delete;
  PageNotes& operator=(const PageNotes&) = delete;

  using Names = std::vector<std::wstring>;

  // A mark that shows nothing, told once. `place` is "/row.html:3:7: (#*nmae#)"; of the names that `names_of` gives,
  // the nearest to its own is the one that was meant. A value of session, application or bag need not be there: it is a
  // slip if one has nearly that name.
  void add_slip(TemplateSlip slip, std::wstring_view name, std::wstring_view place,
                const std::function<Names()>& names_of);
  // A call at that place with more arguments than the member takes.
  void add_extra_arguments(std::wstring_view place, std::wstring_view member, std::size_t takes, std::size_t given);
  // A template that it drew, in its character set; how often is counted.
  void add_template(const std::string& file, std::wstring_view charset);
  // Empty for a template that it did not draw.
  std::wstring charset_of(std::string_view file) const;
  void on_statement(std::wstring_view sql, Clock::duration took) noexcept override;
  void on_refused(std::wstring_view sql, const std::vector<std::wstring>& parameters,
                  std::wstring_view error) noexcept override;
  // The bag of a controller, as it is now; of the same one the last counts.
  void add_bag(std::wstring_view page, IUnknown* bag);
  // A line that the page wrote to its console.
  void add_console(std::string_view line);
  // What the page was at until now.
  void end_phase(std::string_view name);

  // One line for the log; empty when there are no slips.
  std::string warning(std::string_view page) const;
  // The statement that failed with these words, or one that the error comes of, with its parameters, if one did: for
  // the error's page.
  std::string refused(const PageError& error) const;
  // The foot of the error's page. The values are those of its session, where it has one.
  std::string panel(VariantStore* session) const;
  // The same for the foot of a page of the site's own.
  std::string panel_of_page(VariantStore* session) const;

 private:
  static constexpr std::size_t kMostSlips = 20;         // in words
  static constexpr std::size_t kMostKnownMarks = 1000;  // of a page that draws ever new ones
  static constexpr std::size_t kMostTemplates = 100;
  static constexpr std::size_t kMostStatements = 100;

  void add_words(std::wstring words);
  std::string more_slips() const;

  std::set<std::wstring> known_marks_;  // that show nothing, slips or not
  std::vector<std::wstring> slips_;     // in words
  std::size_t more_slips_ = 0;
  struct Drawn {
    std::string file;
    std::wstring charset;
    std::size_t times = 1;
  };
  std::vector<Drawn> templates_;
  std::vector<std::string> statements_;  // in HTML
  std::size_t more_statements_ = 0;
  std::wstring refused_;                                     // what the script was told of the last one
  std::string refused_statement_;                            // in HTML
  std::vector<std::pair<std::wstring, std::wstring>> bags_;  // as text
  std::string console_;
  std::vector<std::pair<std::string, Clock::duration>> phases_;
  Clock::time_point phase_began_ = Clock::now();
};

// The keys of a dictionary under which there is something: by being asked for a name it gets that with nothing. None of
// another object.
PageNotes::Names keys_of(IUnknown* values);

}  // namespace zelto
