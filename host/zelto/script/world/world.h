// A global object of the script engine with what every page finds there, to be used by one realm at a time.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "script/jsc.h"
#include "script/vbscript/library.h"
#include "script/world/built_ins.h"
#include "script/world/kept_wrappers.h"
#include "script/world/page_function.h"
#include "script/world/prelude.h"

namespace zelto::script {

class AutomationObject;
class Engine;

// Most last for one page. Programs run in one that is kept as functions: what a page declares goes with each call, and
// what else it does to the world is looked for afterwards. One that is kept belongs to a program, or is shared by many
// that cannot tell (PageScope::may_share_world).
class World {
 public:
  using ProgramPtr = std::shared_ptr<const language::Program>;

  explicit World(Engine& engine);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  JSGlobalContextRef context() const noexcept { return context_.get(); }
  const Prelude& prelude() const noexcept { return *prelude_; }
  // What compiled VBScript calls, made when the first of it runs here; null before that.
  const vbscript::Library* library() const noexcept { return library_.get(); }
  // The same for objects, whatever language the page is in. Null when there is no memory or stack for it.
  const vbscript::Library* need_library();
  // For the prelude: `prelude` is what it hands over to it, and the prototype that of automation objects.
  const vbscript::Library& make_library(JSValueRef prelude, JSValueRef host_prototype);

  // What becomes of it when a page has ended.
  enum class Use { once, own, shared };
  // Before anything runs.
  void set_use(Use use) noexcept { use_ = use; }
  Use use() const noexcept { return use_; }

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
  // Where wrappers of other objects stay from page to page; null where they do not.
  KeptWrappers* kept_wrappers() noexcept { return use_ == Use::once ? nullptr : &kept_wrappers_; }
  // The names that the host has set, one after the other.
  const std::u16string& host_names() const noexcept { return host_names_; }
  std::u16string take_host_names() noexcept { return std::move(host_names_); }

  // Of a world that is kept: the program as a function, made when it first runs, with the host's names in place. Null
  // when it cannot be one: it may still run here, once.
  PageFunction* page_of(const ProgramPtr& program);
  PageFunction* page() const noexcept { return page_; }

  // Of one that is shared, and that a page has run in. Makes the program a function beside the others; false when it
  // cannot be one.
  bool add(const ProgramPtr& program) { return function_of(program) != nullptr; }
  bool has(const ProgramPtr& program) const noexcept;
  std::vector<const language::Program*> programs() const;
  // Of one program, or of those that nobody will run again.
  void drop(const language::Program* program) noexcept;
  void drop_ended() noexcept;

  // Before a program runs, as a function or as a script, with the objects that it knows as Response and Server.
  void begin(const language::Program& program, const PageFunction* page, JSValueRef response, JSValueRef server);

  // Of a world whose page has ended, until it is looked at: for Worlds.
  struct Ended {
    ProgramPtr program;
    bool whole = false;
    std::unique_ptr<World> next;
  };
  Ended ended;

  // The names that the host has set are no longer those for which the world was prepared: this page is its last one.
  bool has_other_hosts() const noexcept { return has_other_hosts_; }
  // Where the page shares the world, and its script gets hold of the global object after all: it finds its names there,
  // as it would in a world of its own, and this page is the last one.
  void show_global();
  // Likewise before code is made of text, which is no part of the page's function, in a world of the page's own too: it
  // finds the names of let, const and class there as well.
  void show_all_names();
  bool is_shown() const noexcept { return is_shown_; }
  // Once the page has ended: false when it left anything behind that the next one could see.
  bool restore(bool may_hide);
  // What that has removed: see PageFunction::restore().
  const JsString& undeclared() const noexcept { return undeclared_; }

 private:
  struct Page {
    std::weak_ptr<const language::Program> program;
    const language::Program* key;
    std::unique_ptr<PageFunction> function;
  };
  PageFunction* function_of(const ProgramPtr& program);
  bool prepare(const DeclaredNames& declared);
  template <class Test>
  void drop_if(Test test) noexcept;
  void keep_hosts();
  void drop_missing_hosts();

  struct Release {
    Engine& engine;
    void operator()(JSGlobalContextRef context) const;
  };

  Engine& engine_;
  std::unique_ptr<OpaqueJSContext, Release> context_;
  std::unique_ptr<Prelude> prelude_;
  std::unique_ptr<vbscript::Library> library_;
  std::vector<Host> hosts_;
  KeptWrappers kept_wrappers_;
  std::unique_ptr<BuiltIns> built_ins_;
  std::u16string host_names_;
  std::unique_ptr<Surroundings> surroundings_;
  std::vector<Page> pages_;
  PageFunction* page_ = nullptr;  // the one that runs, or ran last
  JsString undeclared_;
  Use use_ = Use::once;
  bool has_other_hosts_ = false;
  bool is_shown_ = false;
  bool are_all_shown_ = false;
  const language::Program* last_program_ = nullptr;  // that ran as a script
};

}  // namespace zelto::script
