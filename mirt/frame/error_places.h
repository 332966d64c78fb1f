// The places in templates that the thread's error object gathers beside its words (mirt/template_places.h).
#pragma once

#include <string_view>

#include <korlib/combstr.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

namespace mirt {

// The thread's error object, taken from it for as long as this lives: what is done meanwhile may fail and leave
// words of its own, which are lost.
class ErrorInHand {
 public:
  ErrorInHand();
  ~ErrorInHand();
  ErrorInHand(const ErrorInHand&) = delete;
  ErrorInHand& operator=(const ErrorInHand&) = delete;

  // The list so far; null when there is none.
  CComBSTR places() const;
  // False on a host that does not give error objects out: nothing can be added.
  bool is_readable() const noexcept { return is_readable_; }
  // Whether the list has as many places as it may have.
  bool is_full() const;
  // Puts a place at the list's end; makes an error object without words where there is none.
  void add(std::wstring_view place);
  // Counts one more, which a full list does not have.
  void add_unlisted();
  void set_places(LPOLESTR list);

 private:
  CComPtr<IErrorInfo> info_;
  const bool is_readable_;
};

// RaiseError for a failure that has come from inside, in words of the caller's: the places stay.
HRESULT raise_around(HRESULT hr, const wchar_t* source, const wchar_t* description);

}  // namespace mirt
