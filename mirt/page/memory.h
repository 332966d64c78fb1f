// What a page remembers from one request to the next, and the request field that carries its command.
//
// The memory is a session state (page/mirt_session.h), stored in the host's Session under the page's name. Without a
// Session or a name, and before bind(), its operations fail with an error that asks for the name.
#pragma once

#include <korlib/combstr.h>
#include <korlib/ptr.h>

#include "frame/intrinsics.h"
#include "page/mirt_session.h"

namespace page {

class Memory {
 public:
  // `asp` outlives this; its Session is looked at anew by every operation.
  explicit Memory(const mirt::Intrinsics& asp) : asp_(asp) {}
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  // Properties of the page.
  CComBSTR name;
  CComBSTR command_name = L"c";
  bool backable = true;  // false: the field of the command changes its name with every command

  // Takes the state that the Session holds under the name, or stores a new one there and sets *is_new. Fails if the
  // state cannot be stored, or if an object of another kind has the name.
  HRESULT bind(bool* is_new);
  // Whether there should be a state under the current name but is none: it was abandoned, or never bound.
  bool is_lost() const;
  // Takes the state under the name out of the Session; E_FAIL without a Session.
  HRESULT abandon();

  // Never null with success: a state whose dictionary could not be made is E_FAIL.
  HRESULT get_bag(CComPtr<IKorLibDictionary>* bag) const;
  // The same, but null with success where no state is bound.
  HRESULT get_bag_if_bound(CComPtr<IKorLibDictionary>* bag) const;
  // The name of the request field that carries the command.
  HRESULT get_command_field(CComBSTR* field) const;
  // A command has run: a page that is not backable expects the next one in another field.
  HRESULT end_command();

 private:
  bool should_have_state() const;
  CComPtr<IMirtSession> state() const;

  const mirt::Intrinsics& asp_;
  CComPtr<IMirtSession> state_;
};

}  // namespace page
