// What is wrong in a script, in words and with its place in the page's source.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "language/program.h"
#include "script/jsc.h"
#include "script/missing_member.h"
#include "script/outcome.h"
#include "script/parsed_scripts.h"
#include "script/thrown_value.h"

namespace zelto::script {

// Of the functions that were running, the innermost: the others are counted.
inline constexpr std::size_t kMostCalls = 32;

// Reads the exceptions of one realm.
class ErrorReports {
 public:
  ErrorReports(JSContextRef context, const MissingMember& missing) : context_(context), missing_(missing) {}

  // A program whose places in the engine's stacks are known from here on.
  void remember(const std::shared_ptr<const language::Program>& program) { programs_[program->url] = program; }
  const auto& programs() const noexcept { return programs_; }
  // The program runs as a function, which has so many units in its first line in front of it.
  void set_opening(const language::Program* program, int length) noexcept {
    in_function_ = program;
    opening_length_ = length;
  }
  // Before each run: what the last one threw and rejected is over.
  void begin_run();

  // Without a place. False when the error is one of the engine that has no number of its own.
  bool read(JSValueRef exception, ScriptError* out) const;
  // `beginning`: of the words for what has none.
  ScriptError describe(JSValueRef exception, std::wstring_view beginning = kThrown) const;
  // Only where it was thrown, with the functions that were running.
  ScriptError place_of(JSValueRef exception) const;
  ScriptError describe_syntax(const language::Program& program, const ParsedScript& parsed) const;
  // Of an error of the engine, with its message: that as the page's author would have it, and the number that older
  // pages know, or 0.
  void put_into_words(std::wstring_view name, ScriptError* error) const;
  // The place that the script has reached.
  language::SourcePlace here() const;
  // And the functions that it is in, of whatever page.
  void add_calls(ScriptError* reached) const;
  std::size_t count_calls() const;

  // Where something that is no Error was thrown.
  void note_throw(JSValueRef value);
  // A promise was rejected and nothing handles that: the first is the page's error.
  void note_rejection(JSValueRef reason);
  const std::optional<ScriptError>& rejection() const noexcept { return rejection_; }

 private:
  struct Frames {
    std::vector<language::Frame> listed;
    std::size_t more = 0;
    bool has_lost = false;
  };
  Frames frames_of(JSValueRef error, std::size_t most = kMostCalls) const;
  std::string stack_of(JSValueRef error) const;
  std::string stack_here() const;
  Frames read_frames(std::string_view stack, std::size_t most) const;
  std::optional<language::Frame> take_frame(std::string_view& stack) const;
  std::optional<language::Frame> read_frame(std::string_view text) const;
  void read_in_words(JSValueRef exception, ScriptError* error, std::wstring_view beginning) const;
  // What an error comes from and stands for, which are told one after the other.
  static constexpr std::size_t kItself = static_cast<std::size_t>(-1);
  struct Telling {
    ScriptError* error;
    std::size_t told = kItself;          // that or one of its causes: what is followed
    unsigned depth = 0;                  // of what comes next
    std::vector<JSValueRef> path = {};   // from the error to what is followed
    std::size_t placed_by = 0;           // the number of the link that has given the error its functions
    const ScriptError* inner = nullptr;  // what an executed page has told of it
  };
  void add_causes(JSValueRef exception, Telling& telling) const;
  void add_parts(JSValueRef link, Telling& telling) const;
  static bool tell(ScriptError words, language::Cause::Kind kind, Telling* telling);
  bool hands_on(JSValueRef error, std::wstring_view words, std::wstring_view of_cause) const;
  void set_place_of(JSValueRef link, std::size_t told, std::size_t number, Telling* telling) const;
  static void set_place(const ScriptError& at, language::Cause* cause);
  std::optional<language::Frame> own_frame(std::string_view text) const;
  static void set_calls(Frames frames, ScriptError* error);
  void add_places(JSValueRef exception, std::size_t placed_by, ScriptError* error) const;

  JSContextRef context_;
  const MissingMember& missing_;
  std::unordered_map<std::string, std::shared_ptr<const language::Program>> programs_;  // by what stacks call them
  const language::Program* in_function_ = nullptr;
  int opening_length_ = 0;
  JSValueRef thrown_ = nullptr;                     // the last, to compare with: it may be garbage by now
  std::optional<language::SourcePlace> thrown_at_;  // the place of the last throw that was of no Error
  std::optional<ScriptError> rejection_;
};

}  // namespace zelto::script
