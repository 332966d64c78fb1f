// A global object of the script engine with what every page finds there, to be used by one realm at a time.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "script/jsc.h"
#include "script/world/built_ins.h"
#include "script/world/page_function.h"
#include "script/world/prelude.h"

namespace zelto::script {

class AutomationObject;
class Engine;

// Most last for one page. One that is kept belongs to a program, which runs in it as a function: what the page declares
// goes with each call, and what else it does to the world is looked for afterwards.
class World {
 public:
  explicit World(Engine& engine);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  JSGlobalContextRef context() const noexcept { return context_.get(); }
  const Prelude& prelude() const noexcept { return *prelude_; }

  // Before anything runs: the program that does is the only one.
  void set_kept() noexcept { is_kept_ = true; }
  bool is_kept() const noexcept { return is_kept_; }

  // A name of the host's in the global object, whose wrapper stays there from page to page. It belongs to the script.
  struct Host {
    std::u16string name;
    JSObjectRef wrapper = nullptr;  // null until the world is kept, and for what is no object; else protected
    AutomationObject* object = nullptr;
    Structure structure{};
    bool is_set = false;  // for the page that is about to run, or runs
  };
  // The name is set for the page that is about to run; where the wrapper of an earlier page can stand for its object,
  // that one.
  AutomationObject* set_host(std::u16string_view name);
  // Of a world that is kept: the program as a function, made when it first runs, with the host's names in place. Null
  // when it cannot be one: it may still run here, once.
  PageFunction* page_of(const language::Program& program);
  PageFunction* page() const noexcept { return page_.get(); }

  // Before a program runs, with the objects that it knows as Response and Server.
  void begin(const language::Program& program, JSValueRef response, JSValueRef server);

  // Of a world whose page has ended, until it is looked at: for Worlds.
  struct Ended {
    std::shared_ptr<const language::Program> program;
    bool whole = false;
    std::unique_ptr<World> next;
  };
  Ended ended;

  // The names that the host has set are no longer those for which the page was prepared: this is its last one.
  bool has_other_hosts() const noexcept { return has_other_hosts_; }
  // Once the page has ended: false when it left anything behind that the next one could see.
  bool restore();
  // What that has removed: see PageFunction::Left.
  const JsString& undeclared() const noexcept { return undeclared_; }

 private:
  void keep_hosts();
  void drop_missing_hosts();

  struct Release {
    Engine& engine;
    void operator()(JSGlobalContextRef context) const;
  };

  Engine& engine_;
  std::unique_ptr<OpaqueJSContext, Release> context_;
  std::unique_ptr<Prelude> prelude_;
  std::vector<Host> hosts_;
  std::unique_ptr<BuiltIns> built_ins_;
  std::unique_ptr<PageFunction> page_;
  JsString undeclared_;
  bool is_kept_ = false;
  bool has_other_hosts_ = false;
  const language::Program* last_program_ = nullptr;
};

}  // namespace zelto::script
