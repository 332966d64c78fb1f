// Member tables: what the names of a late-bound object mean, and the core that runs a call.
//
// Objects do not use this header alone; see dispatch_object.h.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include <korlib/comvariant.h>

namespace korlib {

// The arguments of one call in the order in which they were written.
class Arguments {
 public:
  explicit Arguments(const DISPPARAMS& params) : params_(params) {}

  UINT count() const { return params_.cArgs; }
  // A VT_BYREF | VT_VARIANT is followed. Beyond the end: an omitted argument.
  const VARIANT& operator[](UINT index) const {
    static const VARIANT left_out = omitted();
    return index < params_.cArgs ? *slot(index) : left_out;
  }
  // For a member that writes its argument back; the caller's own variable when it was passed by reference.
  VARIANT* slot(UINT index) const {
    VARIANT* argument = &params_.rgvarg[params_.cArgs - 1 - index];
    return argument->vt == (VT_BYREF | VT_VARIANT) && argument->pvarVal ? argument->pvarVal : argument;
  }
  // Notes which argument could not be converted; answers `hr` unchanged.
  HRESULT reject(UINT index, HRESULT hr) const {
    if (index < params_.cArgs) rejected_ = params_.cArgs - 1 - index;
    return hr;
  }
  std::optional<UINT> rejected() const { return rejected_; }  // as an index into rgvarg

 private:
  const DISPPARAMS& params_;
  mutable std::optional<UINT> rejected_;
};

inline constexpr std::size_t kMaxOptional = 6;

// One thing that a member can do. `run` is null when it cannot.
struct Operation {
  using Run = HRESULT (*)(void* self, const Operation& operation, const Arguments& arguments, VARIANT* result);

  Run run = nullptr;
  bool exists = false;  // with sanitizers the compiler does not compare `run` in a constant expression
  BYTE required = 0;
  BYTE accepted = 0;
  BYTE required_to_read = 0;         // of a property that is read and not called (DISPATCH_PROPERTYGET alone)
  LONG defaults[kMaxOptional] = {};  // for the arguments from `required` on
};

inline constexpr DISPID kNumberByPosition = -1000;

// A name, its identifier and its operations. Tables are constant data; the builders below finish a row:
//   method<&Stream::ReadText>(L"ReadText").optional(-1)
//   property<&List::get_Item, &List::put_Item>(L"Item").is_default()
struct Member {
  std::wstring_view name;
  DISPID id = kNumberByPosition;  // the row's number, counted from 1
  Operation get;
  Operation put;
  Operation putref;
  Operation method;

  constexpr Member numbered(DISPID number) const {
    Member copy = *this;
    copy.id = number;
    return copy;
  }
  constexpr Member is_default() const { return numbered(DISPID_VALUE); }
  // The last arguments (of a method, or of a property read) may be left out; numbers and booleans then
  // have these values, variants arrive as omitted(), text and objects as null.
  template <class... Value>
  constexpr Member optional(Value... values) const {
    static_assert(sizeof...(values) <= kMaxOptional);
    Member copy = *this;
    Operation& operation = copy.method.exists ? copy.method : copy.get;
    operation.required = static_cast<BYTE>(operation.accepted - sizeof...(values));
    std::size_t at = 0;
    ((operation.defaults[at++] = static_cast<LONG>(values)), ...);
    return copy;
  }
  // A property with optional arguments that a script calls, `list.Item(1)` or `list.Item()`: reading it without
  // any is DISP_E_BADPARAMCOUNT, so that the reader makes a function of it, which stands for its value.
  constexpr Member is_called() const {
    Member copy = *this;
    copy.get.required_to_read = 1;
    return copy;
  }
};

// The member with that identifier; null when there is none.
KORLIB_API const Member* find_member(std::span<const Member> members, DISPID id);

// GetIDsOfNames over a table, in any letter case.
KORLIB_API HRESULT ids_of_names(std::span<const Member> members, LPOLESTR* names, UINT count, DISPID* ids);

// Invoke over a table. `self` is what the table's operations expect.
//
// A property read of a method is DISP_E_MEMBERNOTFOUND, and so is a method call of a property unless the
// read bit is set as well. Arguments that a property without parameters does not take go on to the
// default member of the object it holds: rs.Fields("a") is rs.Fields.Item("a"), also when assigning. An omitted
// argument is VT_EMPTY for a VARIANT that is required, and DISP_E_PARAMNOTFOUND for any other type. The index of an
// argument that cannot be converted goes to *argerr, which is left alone otherwise: the member has not run then. A put
// with both put bits set stores an object with putref where the member has it, with put otherwise. A
// failing member's code is returned unchanged; its words are in the thread's error object.
KORLIB_API HRESULT invoke_member(std::span<const Member> members, void* self, DISPID id, REFIID riid, LCID lcid,
                                 WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo, UINT* argerr);

}  // namespace korlib
