// What stands around the page functions of one world: the names of the page that runs, and what it has left behind.
#pragma once

#include <string>
#include <vector>

#include "script/jsc.h"
#include "script/text.h"

namespace zelto::script {

using Names = std::vector<std::u16string>;

// In a world whose host's names are in place, before any page has run there. Pages run one after the other.
class Surroundings {
 public:
  // `shown`, names that the page declares, become properties of the global object, which read and write them. `hosts`
  // are those that the host sets for each page. `values_check` tells whether the language's values are as they were:
  // see BuiltIns::rest_check. Throws std::bad_alloc.
  Surroundings(JSGlobalContextRef context, const Names& shown, const Names& hosts, JSObjectRef values_check);
  ~Surroundings();
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

  // What a page gives the function to that reads and sets its names.
  JSObjectRef hand_out() const noexcept { return hand_out_; }
  // What the running page's name stands for, by its number: the first ones are those shown.
  JSValueRef read(unsigned name, JSValueRef* exception) const;
  void write(unsigned name, JSValueRef value, JSValueRef* exception) const;

  // Has the running page's first names be properties of the global object as well, from here on.
  void show(const Names& names) const;
  // Likewise of names that are numbered from `first` on. Nothing but their names shows that they are there.
  void show_hidden(const Names& names, unsigned first) const;

  struct Left {
    bool nothing;         // that the next page could see
    JsString undeclared;  // the names that were removed, "a, b", where these are wanted; null for none
  };
  // Forgets what the page declared, and removes what it made without declaring it. `may_hide`: see PageScope.
  Left restore(bool may_hide, bool wants_undeclared) const;

 private:
  JSGlobalContextRef context_;
  JSObjectRef hand_out_;  // these are protected
  JSObjectRef read_;
  JSObjectRef write_;
  JSObjectRef restore_;
  JSObjectRef show_;
};

}  // namespace zelto::script
