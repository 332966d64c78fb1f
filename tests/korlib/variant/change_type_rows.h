// What a value becomes as each type: one row a value, one column a type.
#pragma once

#include <korlib/variant.h>

#include <gtest/gtest.h>

#include "korlib/variant/values.h"

namespace values {

inline constexpr HRESULT kOver = DISP_E_OVERFLOW;
inline constexpr HRESULT kMismatch = DISP_E_TYPEMISMATCH;

// What a cell expects: a value, or a code.
struct Cell {
  Cell(HRESULT code) : hr(code) {}
  Cell(CComVariant expected) : value(std::move(expected)) {}
  HRESULT hr = S_OK;
  CComVariant value;
};

inline void expect_change(CComVariant source, VARTYPE vt, const Cell& expected) {
  SCOPED_TRACE(testing::PrintToString(source) + " to " + std::to_string(vt));
  CComVariant target(L"kept");
  EXPECT_EQ(expected.hr, VariantChangeType(&target, &source, 0, vt));
  if (FAILED(expected.hr)) {
    ASSERT_EQ(VT_BSTR, target.vt);
    EXPECT_EQ(L"kept", korlib::view_of(target.bstrVal));
    // In place, a failure keeps the value as well.
    CComVariant in_place(source);
    EXPECT_EQ(expected.hr, VariantChangeType(&in_place, &in_place, 0, vt));
    EXPECT_PRED2(same, in_place, source);
    return;
  }
  EXPECT_PRED2(same, target, expected.value);
  CComVariant in_place(source);
  EXPECT_EQ(S_OK, VariantChangeType(&in_place, &in_place, 0, vt));
  EXPECT_PRED2(same, in_place, expected.value);

  if (source.vt == VT_EMPTY || source.vt == VT_NULL) return;
  CComVariant by_value;
  const CComVariant reference = reference_to(source);
  EXPECT_EQ(S_OK, VariantChangeType(&by_value, &reference, 0, vt));
  EXPECT_PRED2(same, by_value, expected.value);
  CComVariant by_variant;
  const CComVariant outer = reference_to_variant(source);
  EXPECT_EQ(S_OK, VariantChangeType(&by_variant, &outer, 0, vt));
  EXPECT_PRED2(same, by_variant, expected.value);
}

struct Row {
  CComVariant source;
  Cell boolean_, i1_, i2_, i4_, i8_, int_, ui1_, ui2_, ui4_, ui8_, uint_, r4_, r8_, cy_, date_, text_;
};

inline void expect_row(const Row& row) {
  const struct {
    VARTYPE vt;
    const Cell& cell;
  } columns[] = {{VT_BOOL, row.boolean_}, {VT_I1, row.i1_},   {VT_I2, row.i2_},     {VT_I4, row.i4_},
                 {VT_I8, row.i8_},        {VT_INT, row.int_}, {VT_UI1, row.ui1_},   {VT_UI2, row.ui2_},
                 {VT_UI4, row.ui4_},      {VT_UI8, row.ui8_}, {VT_UINT, row.uint_}, {VT_R4, row.r4_},
                 {VT_R8, row.r8_},        {VT_CY, row.cy_},   {VT_DATE, row.date_}, {VT_BSTR, row.text_}};
  for (const auto& column : columns) expect_change(row.source, column.vt, column.cell);
}

// The row of a whole number that fits everywhere.
inline Row small(CComVariant source, signed char n, const wchar_t* as_text) {
  const auto u = static_cast<BYTE>(n);
  return {std::move(source),
          boolean(n != 0),
          i1(n),
          i2(n),
          i4(n),
          i8(n),
          integer(n),
          ui1(u),
          ui2(u),
          ui4(u),
          ui8(u),
          unsigned_integer(u),
          r4(static_cast<float>(n)),
          r8(n),
          cy(LONGLONG{n} * 10000),
          date(n),
          text(as_text)};
}

// The row of a negative whole number: no unsigned type holds it, but one of the same size its bits.
inline Row negative(CComVariant source, signed char n, const wchar_t* as_text) {
  const VARTYPE vt = source.vt;
  const bool has_four_bytes = vt == VT_I4 || vt == VT_INT;
  Row row = small(std::move(source), n, as_text);
  row.ui1_ = vt == VT_I1 ? Cell(ui1(static_cast<BYTE>(n))) : Cell(kOver);
  row.ui2_ = vt == VT_I2 ? Cell(ui2(static_cast<USHORT>(n))) : Cell(kOver);
  row.ui4_ = has_four_bytes ? Cell(ui4(static_cast<ULONG>(n))) : Cell(kOver);
  row.uint_ = has_four_bytes ? Cell(unsigned_integer(static_cast<UINT>(n))) : Cell(kOver);
  row.ui8_ = vt == VT_I8 ? Cell(ui8(static_cast<ULONGLONG>(n))) : Cell(kOver);
  return row;
}

}  // namespace values
