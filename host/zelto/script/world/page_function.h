// The script of a page as a function, which the engine compiles once: its locals are what the page declares.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "language/program.h"
#include "script/jsc.h"
#include "script/text.h"

namespace zelto::script {

class Engine;

// In a world that nothing else runs in. Two things of a script are missing in a function, and are added: the names that
// it declares are looked up through a function that it hands out first, and those of var and function are properties
// of the global object, which read and write them the same way.
class PageFunction {
 public:
  using Names = std::vector<std::u16string>;

  struct Surroundings {
    const Names& hosts;        // names of the global object that the host sets for each page
    JSObjectRef values_check;  // tells whether the language's values are as they were: see BuiltIns::rest_check
  };
  // Null when the program cannot be one.
  static std::unique_ptr<PageFunction> make(Engine& engine, JSGlobalContextRef context,
                                            const language::Program& program, const Surroundings& around);
  ~PageFunction();
  PageFunction(const PageFunction&) = delete;
  PageFunction& operator=(const PageFunction&) = delete;

  // Runs the page to its end.
  void call(JSValueRef* exception);
  struct Left {
    bool nothing;         // that the next page could see
    JsString undeclared;  // the first time that there are any, the names that were removed: "a, b"; else null
  };
  // Forgets what the page declared, and removes what it made without declaring it.
  Left restore();

  // How many units of UTF-16 the function has in its first line in front of the page's text.
  int opening_length() const noexcept { return opening_length_; }

  // Of a name that the page declares; null for any other.
  const unsigned* find(std::u16string_view name) const;
  // What the name stands for while the page runs, or its functions do. Null, with an exception, where it has no value
  // yet.
  JSValueRef read(unsigned name, JSValueRef* exception) const;
  void write(unsigned name, JSValueRef value, JSValueRef* exception) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view name) const { return std::hash<std::u16string_view>()(name); }
  };
  PageFunction(JSGlobalContextRef context, const Names& names, JSObjectRef page, JSObjectRef support,
               int opening_length);

  JSGlobalContextRef context_;
  const int opening_length_;
  std::unordered_map<std::u16string, unsigned, Hash, std::equal_to<>> names_;
  JSObjectRef page_;  // these are protected
  JSObjectRef hand_out_;
  JSObjectRef read_;
  JSObjectRef write_;
  JSObjectRef restore_;
};

}  // namespace zelto::script
