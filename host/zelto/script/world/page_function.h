// The script of a page as a function, which the engine compiles once: its locals are what the page declares.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "language/program.h"
#include "script/jsc.h"
#include "script/text.h"
#include "script/world/surroundings.h"

namespace zelto::script {

class Engine;

// The names that a page declares at top level, where it can be a function as far as its text tells.
struct DeclaredNames {
  Names properties;  // of var and function
  Names lexical;     // of let, const and class

  // Nothing when the text is no script, however well it would do as a function: one with a return, say.
  static std::optional<DeclaredNames> of(Engine& engine, const language::Program& program);
  // Whether the global object has none of the first.
  bool are_free(JSContextRef context) const;
};

// A script has two things that a function has not: components look up the names that it declares, for which the page
// hands out a function first; and names of var and function are properties of the global object. For pages that can
// tell, its surroundings have those.
class PageFunction {
 public:
  // Of names that are free in the context. Null when the engine does not take it. The surroundings outlive it.
  static std::unique_ptr<PageFunction> make(Engine& engine, JSGlobalContextRef context, const Surroundings& around,
                                            const language::Program& program, const DeclaredNames& declared);
  ~PageFunction();
  PageFunction(const PageFunction&) = delete;
  PageFunction& operator=(const PageFunction&) = delete;

  // Runs the page to its end.
  void call(JSValueRef* exception);
  // Afterwards. The names that the page has not declared are told the first time that there are any. `may_hide`: others
  // than the page have run in its world.
  Surroundings::Left restore(bool may_hide);

  bool is(JSValueRef value) const noexcept { return value == function_; }
  // How many units of UTF-16 the function has in its first line in front of the page's text.
  int opening_length() const noexcept { return opening_length_; }

  // See Prelude::begin().
  JSObjectRef literals() const noexcept { return literals_; }

  // Those of its names that are properties of the global object where it is a script. Not those of let, const and
  // class.
  void show_names() const { around_.show(properties_); }
  // The others, which no property of the global object stands for in a script either; but code that is made of text
  // finds them there as well.
  bool has_lexical_names() const noexcept { return !lexical_.empty(); }
  void show_lexical_names() const { around_.show_hidden(lexical_, static_cast<unsigned>(properties_.size())); }

  // Of a name that the page declares; null for any other.
  const unsigned* find(std::u16string_view name) const;
  // What the name stands for while the page runs, or its functions do. Null, with an exception, where it has no value
  // yet.
  JSValueRef read(unsigned name, JSValueRef* exception) const { return around_.read(name, exception); }
  void write(unsigned name, JSValueRef value, JSValueRef* exception) const { around_.write(name, value, exception); }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view name) const { return std::hash<std::u16string_view>()(name); }
  };
  PageFunction(JSGlobalContextRef context, const Surroundings& around, JSObjectRef function, JSObjectRef literals,
               int opening_length);

  JSGlobalContextRef context_;
  const Surroundings& around_;
  JSObjectRef function_;  // protected, as are literals_
  JSObjectRef literals_;
  const int opening_length_;
  bool may_hide_ = false;
  bool has_told_ = false;
  std::unordered_map<std::u16string, unsigned, Hash, std::equal_to<>> names_;
  Names properties_;  // the first of them
  Names lexical_;     // the rest
};

}  // namespace zelto::script
