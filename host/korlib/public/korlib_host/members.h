// Member tables: what the names of a late-bound object mean, and the core that runs a call.
//
// A class describes itself by one constant table of Members. From it come the identifiers of its names
// (ids_of_names), its type information (class_type_info.h), and Invoke (invoke_member). Objects do not use this header
// alone; dispatch_object.h shows how a table is written. Tables are read by any thread and never change.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include <korlib/comvariant.h>

namespace korlib {

// The arguments of one call in the order in which they were written: place 0 is the first. A DISPPARAMS has them the
// other way round. Refers to the caller's block and lives as long as the call.
class Arguments {
 public:
  explicit Arguments(const DISPPARAMS& params) : params_(params) {}

  // How many were given, omitted ones included.
  UINT count() const { return params_.cArgs; }
  // A VT_BYREF | VT_VARIANT is followed. Beyond the end: an omitted argument.
  const VARIANT& operator[](UINT index) const {
    static const VARIANT left_out = omitted();
    return index < params_.cArgs ? *slot(index) : left_out;
  }
  // For a member that writes its argument back: the caller's own variable when it was passed by reference, else the
  // slot in the caller's block. `index` must be below count().
  VARIANT* slot(UINT index) const {
    VARIANT* argument = &params_.rgvarg[params_.cArgs - 1 - index];
    return argument->vt == (VT_BYREF | VT_VARIANT) && argument->pvarVal ? argument->pvarVal : argument;
  }
  // Notes which argument could not be converted, for the caller's argerr; answers `hr` unchanged.
  HRESULT reject(UINT index, HRESULT hr) const {
    if (index < params_.cArgs) rejected_ = params_.cArgs - 1 - index;
    return hr;
  }
  // The one noted last, as an index into rgvarg; nothing when all were accepted.
  std::optional<UINT> rejected() const { return rejected_; }

 private:
  const DISPPARAMS& params_;
  mutable std::optional<UINT> rejected_;
};

// How many arguments of a member may be optional.
inline constexpr std::size_t kMaxOptional = 6;

// As the largest number of arguments: any.
inline constexpr BYTE kAnyNumber = 255;

// One thing that a member can do: be called, read, assigned, or assigned by reference. `run` is null when it cannot.
struct Operation {
  // Converts the arguments, calls the member function of `self` and puts its result into *result, which is VT_EMPTY
  // before and may be null. May throw.
  using Run = HRESULT (*)(void* self, const Operation& operation, const Arguments& arguments, VARIANT* result);

  Run run = nullptr;
  bool exists = false;               // with sanitizers the compiler does not compare `run` in a constant expression
  BYTE required = 0;                 // the least number of arguments
  BYTE accepted = 0;                 // the largest, or kAnyNumber
  BYTE required_to_read = 0;         // of a property that is read and not called (DISPATCH_PROPERTYGET alone)
  LONG defaults[kMaxOptional] = {};  // for the arguments from `required` on
};

// The identifier of a member that is numbered by its row.
inline constexpr DISPID kNumberByPosition = -1000;

// A name, its identifier and its operations. Tables are constant data; the builders below finish a row:
//   method<&Stream::ReadText>(L"ReadText").optional(-1)
//   property<&List::get_Item, &List::put_Item>(L"Item").is_default()
struct Member {
  std::wstring_view name;         // as scripts write it; found in any letter case of ASCII
  DISPID id = kNumberByPosition;  // the row's number, counted from 1
  Operation get;                  // reads a property (DISPATCH_PROPERTYGET)
  Operation put;                  // assigns a value (DISPATCH_PROPERTYPUT)
  Operation putref;               // assigns an object (DISPATCH_PROPERTYPUTREF); where it is missing, `put` does
  Operation method;               // calls (DISPATCH_METHOD)

  // The same member with an identifier of its own instead of the row's number.
  constexpr Member numbered(DISPID number) const {
    Member copy = *this;
    copy.id = number;
    return copy;
  }
  // The member that stands for the object where it is used as a value (DISPID_VALUE).
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

// The member with that identifier, a row of `members`; null when there is none.
KORLIB_API const Member* find_member(std::span<const Member> members, DISPID id);

// GetIDsOfNames over a table, in any letter case. names[0] is a member; arguments have no names, so that more than one
// name is DISP_E_UNKNOWNNAME, which a name that is not in the table is as well. What is unknown gets DISPID_UNKNOWN.
// E_POINTER and E_INVALIDARG for arguments that are missing.
KORLIB_API HRESULT ids_of_names(std::span<const Member> members, LPOLESTR* names, UINT count, DISPID* ids);

// Invoke over a table. `self` is what the table's operations expect.
//
// A property read of a method is DISP_E_MEMBERNOTFOUND, and so is a method call of a property unless the
// read bit is set as well. Arguments that a property without parameters does not take go on to the
// default member of the object it holds: rs.Fields("a") is rs.Fields.Item("a"), also when assigning. An omitted
// argument is VT_EMPTY for a VARIANT that is required, and DISP_E_PARAMNOTFOUND for any other type. The index of an
// argument that cannot be converted goes to *argerr, which is left alone otherwise: the member has not run then. A put
// with both put bits set stores an object with putref where the member has it, with put otherwise. A
// failing member's code is returned unchanged; its words are in the thread's error object. So are those of a call with
// a wrong number of arguments, which say how many the member takes; a read that finds that there should be some has
// none.
KORLIB_API HRESULT invoke_member(std::span<const Member> members, void* self, DISPID id, REFIID riid, LCID lcid,
                                 WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo, UINT* argerr);

}  // namespace korlib
