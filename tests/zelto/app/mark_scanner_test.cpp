// The marks that the check finds are those that the page controller draws.
#include "app/check/mark_scanner.h"

#include <gtest/gtest.h>
#include <korlib/combstr.h>
#include <korlib/errorinfo.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "templator/marks.h"
#include "templator/template.h"
#include "templator/templator_concept.h"

namespace {

using zelto::check::Mark;
using zelto::check::MarkNames;
using zelto::check::names_of;
using zelto::check::scan_marks;

MarkNames wanted_names(MarkSource source) {
  switch (source) {
    case MarkSource::draw_event:
      return MarkNames::draw_function;
    case MarkSource::script:
      return MarkNames::variable;
    case MarkSource::template_file:
      return MarkNames::template_file;
    default:
      return MarkNames::value;
  }
}

TEST(CheckedMarks, HaveTheTypesOfTheComponent) {
  for (wchar_t type = 1; type < 0x100; ++type) {
    const MarkKind* kind = find_mark_kind(type, MarkOwner::page);
    EXPECT_EQ(kind ? wanted_names(kind->source) : MarkNames::nothing, names_of(type)) << static_cast<int>(type);
  }
}

// Only reads templates.
class Reader final : public CTemplatorConcept {
 public:
  Reader() : CTemplatorConcept(kMarkTypes<MarkOwner::page>.data()) {}
  HRESULT OnMarked(CMarkData&) override { return S_OK; }
};

TEST(CheckedMarks, AreCutAsTheComponentCutsThem) {
  constexpr std::wstring_view kPieces[] = {L"(#", L"#)", L"#|#", L"|", L"^", L"#", L"(", L")", L"*", L"%", L"a", L" "};
  std::minstd_rand random(1);
  Reader reader;
  int whole = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::wstring text;
    for (std::size_t pieces = random() % 14; pieces > 0; --pieces) text += kPieces[random() % std::size(kPieces)];
    CTemplate parsed;
    const HRESULT hr = reader.Parse(CComBSTR(std::wstring_view(text)).get(), parsed);
    SetErrorInfo(0, nullptr);
    auto scanned = scan_marks(text);
    ASSERT_EQ(SUCCEEDED(hr), scanned.faults.empty()) << std::string(text.begin(), text.end());
    if (FAILED(hr)) continue;
    std::erase_if(scanned.marks, [](const Mark& mark) { return mark.depth > 0; });
    ASSERT_EQ(parsed.Marks.size(), scanned.marks.size()) << std::string(text.begin(), text.end());
    for (std::size_t i = 0; i < scanned.marks.size(); ++i) {
      EXPECT_EQ(parsed.Marks[i]->Type, scanned.marks[i].type) << std::string(text.begin(), text.end());
      if (!scanned.marks[i].is_literal) continue;
      EXPECT_EQ(parsed.Marks[i]->Name.str(), scanned.marks[i].name) << std::string(text.begin(), text.end());
      ++whole;
    }
  }
  EXPECT_GT(whole, 500);
}

}  // namespace
