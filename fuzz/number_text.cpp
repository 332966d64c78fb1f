// Numbers in text: what is read lies in its type's range and is the same in every type, what is written reads back as
// the same number, and what any reader of numbers knows is what it reads.
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <string>
#include <string_view>

#include <korlib/comvariant.h>

#include "conversion.h"
#include "text/charset.h"
#include "text/locale.h"
#include "text_input.h"
#include "variant/number_parser.h"

namespace {

using fuzz::convert;
using fuzz::Converted;

std::wstring text_of(const VARIANT& value) {
  const Converted text = convert(value, VT_BSTR);
  fuzz::require(text.hr == S_OK, "each number has a text");
  return std::wstring(korlib::view_of(text.value.bstrVal));
}

bool is_same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// Each locale has its decimal mark instead of a point, and no other difference.
void check_locales(const std::wstring& neutral) {
  static const zelto::LocaleText locales[] = {zelto::LocaleText("de_DE"), zelto::LocaleText("en_US"),
                                              zelto::LocaleText("fr_CH"), zelto::LocaleText("ja_JP"),
                                              zelto::LocaleText("fa_IR")};
  for (const zelto::LocaleText& locale : locales) {
    std::wstring text = locale.number(neutral);
    const std::size_t point = neutral.find(L'.');
    if (point != std::wstring::npos) {
      const std::wstring mark = locale.number(L".");
      fuzz::require(text.compare(point, mark.size(), mark) == 0, "its mark stands where the point was");
      text.replace(point, mark.size(), L".");
    }
    fuzz::require(text == neutral, "read back it is the same number");
  }
}

void check_written(double real) {
  const CComVariant value(real);
  const std::wstring text = text_of(value);
  const Converted back = convert(CComVariant(std::wstring_view(text)), VT_R8);
  if (std::isfinite(real)) {
    fuzz::require(back.hr == S_OK && back.value.dblVal == real, "a double comes back");
    fuzz::require(std::wcstod(text.c_str(), nullptr) == real, "for every reader");
    check_locales(text);
  } else {
    fuzz::require(back.hr == DISP_E_TYPEMISMATCH, "what is no number is not read");
  }

  CComVariant single;
  single.vt = VT_R4;
  single.fltVal = static_cast<float>(real);
  if (std::isfinite(single.fltVal)) {
    const Converted single_back = convert(CComVariant(std::wstring_view(text_of(single))), VT_R4);
    fuzz::require(single_back.hr == S_OK && single_back.value.fltVal == single.fltVal, "a single comes back");
  }

  CComVariant amount;
  amount.vt = VT_CY;
  std::memcpy(&amount.cyVal.int64, &real, sizeof real);
  const Converted amount_back = convert(CComVariant(std::wstring_view(text_of(amount))), VT_CY);
  fuzz::require(amount_back.hr == S_OK && amount_back.value.cyVal.int64 == amount.cyVal.int64, "an amount comes back");
  check_locales(text_of(amount));
}

// Digits, a point and an exponent: what the library's reader takes as well.
bool is_plain(std::wstring_view text) {
  const auto take = [&text](std::wstring_view of) {
    const bool is_taken = !text.empty() && of.find(text[0]) != std::wstring_view::npos;
    if (is_taken) text.remove_prefix(1);
    return is_taken;
  };
  const auto take_digits = [&take] {
    int count = 0;
    while (take(L"0123456789")) ++count;
    return count;
  };
  take(L"-+");
  int digits = take_digits();
  if (take(L".")) digits += take_digits();
  if (digits == 0) return false;
  if (!take(L"eE")) return text.empty();
  take(L"-+");
  return take_digits() > 0 && text.empty();
}

// By a reader of another make.
void check_against_library(const std::wstring& text, const Converted& real) {
  errno = 0;
  const double expected = std::wcstod(text.c_str(), nullptr);
  const bool is_huge = std::isinf(expected);
  fuzz::require(real.hr == (is_huge ? DISP_E_OVERFLOW : S_OK), "in range or not");
  if (!is_huge) fuzz::require(real.value.dblVal == expected, "the nearest double");
}

void check_plain(std::wstring_view text, const Converted& real) {
  std::wstring plain;
  const HRESULT hr = korlib::variants::plain_number(text, &plain);
  fuzz::require((hr == DISP_E_TYPEMISMATCH) == (real.hr == DISP_E_TYPEMISMATCH), "a number is plain or none");
  if (hr != S_OK) return;
  fuzz::require(is_plain(plain) && plain.size() <= text.size() + 200, "in digits alone, and not many more");
  const Converted again = convert(CComVariant(std::wstring_view(plain)), VT_R8);
  fuzz::require(again.hr == real.hr, "plain, it is a number or too large as before");
  if (real.hr == S_OK) fuzz::require(again.value.dblVal == real.value.dblVal, "the same number");
}

template <class Integer>
void check_integer(const VARIANT& text, VARTYPE type, const Converted& real) {
  const Converted made = convert(text, type);
  if (made.hr == S_OK) {
    fuzz::require(real.hr == S_OK, "what is an integer is a number");
    Integer integer = 0;
    std::memcpy(&integer, &made.value.llVal, sizeof integer);
    const double nearest = std::nearbyint(real.value.dblVal);
    // Beyond 53 bits the double is not the number any more.
    if (std::abs(nearest) < 9007199254740992.0)
      fuzz::require(static_cast<double>(integer) == nearest, "the nearest integer, halves to the even one");
    const Converted back = convert(CComVariant(std::wstring_view(text_of(made.value))), type);
    Integer again = 0;
    std::memcpy(&again, &back.value.llVal, sizeof again);
    fuzz::require(back.hr == S_OK && again == integer, "it comes back");
  } else if (real.hr == S_OK) {
    using Limits = std::numeric_limits<Integer>;
    const double nearest = std::nearbyint(real.value.dblVal);
    const bool may_fit = nearest > static_cast<double>(Limits::min()) && nearest < static_cast<double>(Limits::max());
    fuzz::require(made.hr == DISP_E_OVERFLOW && !may_fit, "refused for its range alone");
  }
}

void check_read(const std::wstring& text) {
  const CComVariant value{std::wstring_view(text)};
  const Converted real = convert(value, VT_R8);
  if (real.hr == S_OK) {
    fuzz::require(std::isfinite(real.value.dblVal), "no text is infinite");
    const Converted back = convert(CComVariant(std::wstring_view(text_of(real.value))), VT_R8);
    fuzz::require(back.hr == S_OK && back.value.dblVal == real.value.dblVal, "what was read comes back");
  }
  if (is_plain(text)) check_against_library(text, real);
  check_plain(text, real);
  const std::wstring padded = L"\t \x3000" + text + L" \r\n";
  const Converted same = convert(CComVariant(std::wstring_view(padded)), VT_R8);
  fuzz::require(same.hr == real.hr && is_same(same.value.dblVal, real.value.dblVal),
                "blanks around it count for nothing");
  check_integer<LONGLONG>(value, VT_I8, real);
  check_integer<ULONGLONG>(value, VT_UI8, real);
  check_integer<LONG>(value, VT_I4, real);
  check_integer<SHORT>(value, VT_I2, real);
  check_integer<BYTE>(value, VT_UI1, real);
  const Converted amount = convert(value, VT_CY);
  if (amount.hr == S_OK) {
    fuzz::require(real.hr == S_OK, "an amount is a number");
    const double units = static_cast<double>(amount.value.cyVal.int64) / 10000;
    fuzz::require(std::abs(units - real.value.dblVal) <= 0.00005001 + std::abs(units) * 1e-15, "to its decimals");
  }
  const Converted truth = convert(value, VT_BOOL);
  if (real.hr == S_OK) {
    fuzz::require(truth.hr == S_OK && (truth.value.boolVal != VARIANT_FALSE) == (real.value.dblVal != 0),
                  "true or not");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_written(fuzz::double_from(data, size));
  std::wstring text = zelto::to_wide({reinterpret_cast<const char*>(data), size});
  std::erase(text, L'\0');  // the library's reader ends there
  check_read(text);
  return 0;
}
