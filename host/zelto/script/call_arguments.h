// The arguments of one call. Automation has them in reverse; that order is known in here only.
#pragma once

#include <boost/container/small_vector.hpp>
#include <boost/range/iterator_range.hpp>
#include <span>

#include <korlib/comvariant.h>
#include <korlib/dispatch.h>

#include "script/values.h"

namespace zelto::script {

// Moving takes no memory: a few elements are moved one by one, more of them with the memory that they are in. The check
// does not see that.
class CallArguments {  // NOLINT(bugprone-exception-escape)
 public:
  // Nothing but the index of an element.
  void set_index(LONG index) { reversed_.assign(1, CComVariant(index)); }
  // From the script: undefined is an omitted argument. False with an exception when one has no form over there.
  // Repeated texts are lent where there is a loan, which goes before these do, and these are then not moved.
  bool convert(Values& values, std::size_t count, const JSValueRef* given, JSValueRef* exception,
               RepeatedTexts::Loan* loan = nullptr);

  // The other way: so many, each of which the caller sets, the first one first.
  void resize(std::size_t count) { reversed_.resize(count); }
  VARIANT& at(std::size_t i) { return reversed_[reversed_.size() - 1 - i]; }

  bool empty() const noexcept { return reversed_.empty(); }
  // Refers to these.
  DISPPARAMS params() noexcept { return {reversed_.data(), nullptr, static_cast<UINT>(reversed_.size()), 0}; }

  // What a component gave, the first argument first.
  static auto in_order(const DISPPARAMS* params) {
    std::span<const VARIANT> given;
    if (params) given = {params->rgvarg, params->cArgs};
    return boost::make_iterator_range(given.rbegin(), given.rend());
  }

  // Makes an omitted argument, which Invoke refused by this index (*puArgErr), the empty value. False when it names
  // none, or one that was given.
  static bool fill_omitted(DISPPARAMS* params, UINT refused);

 private:
  friend class PutArguments;
  boost::container::small_vector<CComVariant, 4> reversed_;
};

// The same for an assignment of a value, which goes with them. Both are borrowed.
class PutArguments {
 public:
  PutArguments(const CallArguments& arguments, const VARIANT& value);
  PutArguments(const PutArguments&) = delete;
  PutArguments& operator=(const PutArguments&) = delete;

  DISPPARAMS params() noexcept { return {all_.data(), &named_, static_cast<UINT>(all_.size()), 1}; }

 private:
  boost::container::small_vector<VARIANT, 4> all_;
  DISPID named_ = DISPID_PROPERTYPUT;
};

}  // namespace zelto::script
