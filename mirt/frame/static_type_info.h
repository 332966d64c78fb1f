// Type information that the component carries itself, so that scripts can call its objects where no type
// library is. It maps names to identifiers and late-bound calls to typed members.
//
// The objects are static and hold no state: any thread may use them, and counting changes nothing.
#pragma once

#include <span>

#include <korlib/plain_typeinfo.h>

// Serves one kind of call of one member. `instance` points at the interface that the member belongs to.
using MemberServer = HRESULT (*)(void* instance, DISPPARAMS* params, VARIANT* result, UINT* argerr);

// A member, with what serves each kind of call; a kind that is null is not served.
struct Member {
  const wchar_t* name;
  MemberServer method = nullptr;
  MemberServer get = nullptr;
  MemberServer put = nullptr;
  MemberServer putref = nullptr;
  UINT takes = 0;  // how many arguments the method needs, for what is said of a call with fewer
};

// Members whose identifiers follow each other: the first row has the identifier `first`.
struct MemberTable {
  DISPID first;
  std::span<const Member> rows;
};

class StaticTypeInfo : public korlib::PlainTypeInfo {
 public:
  STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

 protected:
  constexpr StaticTypeInfo() = default;
  ~StaticTypeInfo() = default;
};

// Knows the members of one interface.
class MemberTypeInfo final : public StaticTypeInfo {
 public:
  // Names are looked for in the order of the tables, which outlive this.
  explicit constexpr MemberTypeInfo(std::span<const MemberTable> tables) : tables_(tables) {}

  // The first of `names` only, in any letter case; names of arguments get no identifier.
  STDMETHODIMP GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
  // Flags are looked at bit by bit, writes before reads: a caller that cannot tell a method from a
  // property read sets both bits and is served either way. A method that was called with too few arguments says how
  // many it takes.
  STDMETHODIMP Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* excepinfo, UINT* argerr) override;

 private:
  std::span<const MemberTable> tables_;
};

// Knows no names: for interfaces that are used early-bound, or through the host's type library.
class PassiveTypeInfo final : public StaticTypeInfo {
 public:
  constexpr PassiveTypeInfo() = default;
  STDMETHODIMP GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
  STDMETHODIMP Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* excepinfo, UINT* argerr) override;
};
