// Identifiers of classes and interfaces, and the mapping from an interface type to its identifier.
//
// iid_of<IThing> is the identifier of IThing. An interface's header specialises it next to the
// interface, so that a QueryInterface is a readable list of types (ptr.h) and no identifier is ever
// written twice.
#pragma once

#include <cstring>

#include <korlib/types.h>

// An identifier of 128 bits (RFC 4122) in its in-memory form: the first three fields are numbers of this
// machine, lowest byte first, the last is eight bytes in the order of writing. Equal when all bytes are.
struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];

  friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
static_assert(sizeof(GUID) == 16, "compared as 16 bytes");

// What a GUID identifies: an interface, a class. The REF… forms are how functions take one; none keeps the
// reference beyond the call.
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

namespace korlib {

namespace detail {
// The value of a digit. Text that is not an identifier does not compile: a throw in a consteval function is an
// error.
consteval std::uint8_t hex_digit(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
  throw "not a hexadecimal digit";
}

// The number that the next digits are, most significant first.
consteval std::uint64_t hex_run(const char* text, int digits) {
  std::uint64_t value = 0;
  for (int i = 0; i < digits; ++i) value = value << 4 | hex_digit(text[i]);
  return value;
}
}  // namespace detail

// The identifier written as "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX"; a misspelt one does not compile.
consteval GUID guid(const char (&text)[37]) {
  if (text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') throw "misplaced dash";
  GUID id{};
  id.Data1 = static_cast<std::uint32_t>(detail::hex_run(text, 8));
  id.Data2 = static_cast<std::uint16_t>(detail::hex_run(text + 9, 4));
  id.Data3 = static_cast<std::uint16_t>(detail::hex_run(text + 14, 4));
  for (std::ptrdiff_t i = 0; i < 2; ++i) id.Data4[i] = static_cast<std::uint8_t>(detail::hex_run(text + 19 + 2 * i, 2));
  for (std::ptrdiff_t i = 0; i < 6; ++i)
    id.Data4[2 + i] = static_cast<std::uint8_t>(detail::hex_run(text + 24 + 2 * i, 2));
  return id;
}

namespace detail {
template <class Interface>
struct IidOf;  // no definition: an interface without an identifier is a compile error
}  // namespace detail

// The identifier of an interface type, one object for the whole process.
template <class Interface>
inline constexpr const GUID& iid_of = detail::IidOf<Interface>::value;

}  // namespace korlib

// Gives an interface its identifier; used at namespace scope, right after the interface.
//   struct IThing : IUnknown { … };
//   KORLIB_IID(IThing, "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX");
#define KORLIB_IID(Interface, text)                   \
  template <>                                         \
  struct korlib::detail::IidOf<Interface> {           \
    static constexpr GUID value = korlib::guid(text); \
  }

// The identifier of all zeros: of nothing. As a CLSID it asks a module for a class by name (activation.h); as
// an interface it stands where the automation functions have a reserved argument.
inline constexpr GUID GUID_NULL{};
inline constexpr GUID IID_NULL{};
inline constexpr GUID CLSID_NULL{};
