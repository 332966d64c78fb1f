// VBScript.RegExp for pages in JavaScript, and the rows that it adds to the class table. Pages in VBScript have theirs
// in the library itself (regexp_source.cpp), which is what these objects ask.
#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib/comvariant.h>
#include <korlib_host/class_table.h>
#include <korlib_host/dispatch_object.h>
#include <korlib_host/enumerator.h>
#include <korlib_host/results.h>

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "script/realm.h"

namespace zelto::script::vbscript {
namespace {

constexpr std::wstring_view kSource = L"RegExp";
constexpr HRESULT kInvalidCall = korlib::hresult(0x800A0005);
constexpr GUID kRegExpClass = korlib::guid("9253853E-B9FA-4E1B-AD30-0780442D818A");

// Collections that are counted from 0, and do not change.
template <class Self>
class Items : public korlib::DispatchObject<Self> {
 public:
  using Values = std::vector<CComVariant>;
  explicit Items(Values values) : values_(std::move(values)) {}

  static std::span<const korlib::Member> members() {
    static constexpr korlib::Member table[] = {
        Items::template property<&Self::get_Item>(L"Item").is_default(),
        Items::template property<&Self::get_Count>(L"Count"),
        Items::template new_enum<&Self::get__NewEnum>(),
    };
    return table;
  }

  HRESULT get_Item(LONG index, VARIANT* item) {
    if (index >= 0 && static_cast<std::size_t>(index) < values_.size()) {
      return VariantCopy(item, &values_[static_cast<std::size_t>(index)]);
    }
    return korlib::raise(kInvalidCall, kSource, L"Invalid procedure call or argument");
  }
  HRESULT get_Count(LONG* count) { return korlib::give(static_cast<LONG>(values_.size()), count); }
  HRESULT get__NewEnum(IUnknown** items) { return korlib::make_enumerator(values_, items); }

 private:
  Values values_;
};

class Matches final : public Items<Matches> {
 public:
  static constexpr const wchar_t* kClassName = L"Matches";
  using Items::Items;
};

class SubMatches final : public Items<SubMatches> {
 public:
  static constexpr const wchar_t* kClassName = L"SubMatches";
  using Items::Items;
};

class Match final : public korlib::DispatchObject<Match> {
 public:
  static constexpr const wchar_t* kClassName = L"Match";
  static std::span<const korlib::Member> members();

  // Of index, length, text and parts.
  explicit Match(std::span<CComVariant> found)
      : index_(std::move(found[0])), length_(std::move(found[1])), value_(std::move(found[2])) {
    SubMatches::Values parts;
    std::ranges::move(found.subspan(3), std::back_inserter(parts));
    parts_ = korlib::make<SubMatches>(std::move(parts)).get();
  }

  template <CComVariant Match::*field>
  HRESULT get(VARIANT* value) {
    return VariantCopy(value, &(this->*field));
  }
  HRESULT get_SubMatches(IDispatch** parts) { return parts_.copy_to(parts); }

 private:
  CComVariant index_;
  CComVariant length_;
  CComVariant value_;
  CComPtr<IDispatch> parts_;
};

std::span<const korlib::Member> Match::members() {
  using M = Match;
  static constexpr korlib::Member table[] = {
      property<&M::get<&M::value_>>(L"Value").is_default(),
      property<&M::get<&M::index_>>(L"FirstIndex"),
      property<&M::get<&M::length_>>(L"Length"),
      property<&M::get_SubMatches>(L"SubMatches"),
  };
  return table;
}

class RegExp final : public korlib::DispatchObject<RegExp> {
 public:
  static constexpr const wchar_t* kClassName = L"RegExp";
  static std::span<const korlib::Member> members();

  HRESULT get_Pattern(BSTR* pattern) { return korlib::give(pattern_.view(), pattern); }
  HRESULT put_Pattern(BSTR pattern) {
    pattern_ = CComBSTR(korlib::view_of(pattern));
    return S_OK;
  }
  template <VARIANT_BOOL RegExp::*flag>
  HRESULT get_flag(VARIANT_BOOL* is_set) {
    return korlib::give(this->*flag != VARIANT_FALSE, is_set);
  }
  template <VARIANT_BOOL RegExp::*flag>
  HRESULT put_flag(VARIANT_BOOL is_set) {
    this->*flag = is_set;
    return S_OK;
  }
  HRESULT Test(VARIANT text, VARIANT* is_found) { return ask(L"test", std::array{text}, is_found); }
  HRESULT Replace(VARIANT text, VARIANT by, VARIANT* changed) { return ask(L"replace", std::array{text, by}, changed); }
  HRESULT Execute(VARIANT text, IDispatch** matches);

 private:
  HRESULT ask(std::wstring_view member, std::span<const VARIANT> given, VARIANT* answer);

  CComBSTR pattern_;
  VARIANT_BOOL is_global_ = VARIANT_FALSE;
  VARIANT_BOOL ignores_case_ = VARIANT_FALSE;
  VARIANT_BOOL is_multiline_ = VARIANT_FALSE;
};

std::span<const korlib::Member> RegExp::members() {
  using R = RegExp;
  static constexpr korlib::Member table[] = {
      property<&R::get_Pattern, &R::put_Pattern>(L"Pattern"),
      property<&R::get_flag<&R::is_global_>, &R::put_flag<&R::is_global_>>(L"Global"),
      property<&R::get_flag<&R::ignores_case_>, &R::put_flag<&R::ignores_case_>>(L"IgnoreCase"),
      property<&R::get_flag<&R::is_multiline_>, &R::put_flag<&R::is_multiline_>>(L"Multiline"),
      method<&R::Test>(L"Test"),
      method<&R::Execute>(L"Execute"),
      method<&R::Replace>(L"Replace"),
  };
  return table;
}

// The page that runs has the engine that matches. Called as any function of a script, so that what it throws, and what
// a function of the page's throws in Replace, is told as usual.
HRESULT RegExp::ask(std::wstring_view member, std::span<const VARIANT> given, VARIANT* answer) {
  Engine* const engine = Engine::current();
  if (!engine || !engine->has_realms()) return korlib::raise(E_UNEXPECTED, kSource, L"No page runs here.");
  RETURN_IF_FAILED(check_stack());
  Realm& realm = *engine->realms().back();
  const EngineLock lock(realm.context());
  const Library* const library = realm.world().need_library();
  if (!library) return E_OUTOFMEMORY;
  const CComPtr<IDispatch> function = realm.wrappers().to_automation(library->regexp());
  const auto flag = [](VARIANT_BOOL is_set) { return CComVariant(is_set != VARIANT_FALSE); };
  std::vector<CComVariant> arguments(given.rbegin(), given.rend());  // the last one first
  for (const CComVariant& one : {flag(is_multiline_), flag(ignores_case_), flag(is_global_),
                                 CComVariant(pattern_.view()), CComVariant(member)}) {
    arguments.push_back(one);
  }
  DISPPARAMS params{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  return function->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &params, answer, nullptr,
                          nullptr);
}

HRESULT RegExp::Execute(VARIANT text, IDispatch** matches) {
  CComVariant answer;
  RETURN_IF_FAILED(ask(L"execute", std::array{text}, answer.put()));
  if (answer.vt != (VT_ARRAY | VT_VARIANT)) return E_UNEXPECTED;
  std::vector<CComVariant> list(answer.parray->rgsabound[0].cElements);
  auto* element = static_cast<VARIANT*>(answer.parray->pvData);
  for (CComVariant& one : list) one.attach(element++);
  Matches::Values found;
  if (!list.empty()) {
    const auto each = static_cast<std::size_t>(list[0].lVal);
    for (std::size_t at = 1; at < list.size(); at += each) {
      found.emplace_back(korlib::make<Match>(std::span(list).subspan(at, each)).get());
    }
  }
  *matches = korlib::make<Matches>(std::move(found)).detach();
  return S_OK;
}

constexpr korlib_host::ClassRow kRows[] = {{kRegExpClass, L"VBScript.RegExp", &korlib::create_object<RegExp>}};

const korlib_host::ClassRegistration g_classes{kRows};

}  // namespace
}  // namespace zelto::script::vbscript
