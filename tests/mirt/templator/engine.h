// The template engine with a handler that a test sees through.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "mirt/templator/recording_sink.h"
#include "support/late_bound.h"
#include "templator/templator_concept.h"

namespace test {

inline constexpr const wchar_t* kChildTypes = L"%;:*/=~+-$\\&|";
inline constexpr const wchar_t* kTextTypes = L" \t\r\n";

// A mark as plain data.
struct Mark {
  wchar_t type = 0;
  std::wstring name;
  std::vector<std::wstring> params;

  friend bool operator==(const Mark&, const Mark&) = default;
};

inline Mark mark_of(const CMarkData& data) {
  Mark mark{data.Type, data.Name.str(), {}};
  for (const std::wstringstream* param : data.Params) mark.params.push_back(param->str());
  return mark;
}

// "<type name|param|param>", which tells marks apart in expected output.
inline std::wstring shown(const Mark& mark) {
  std::wstring text = L"<";
  if (mark.type) text += mark.type;
  text += L' ' + mark.name;
  for (const std::wstring& param : mark.params) text += L'|' + param;
  return text + L'>';
}

class Engine final : public CTemplatorConcept {
 public:
  explicit Engine(const wchar_t* types = kChildTypes) : CTemplatorConcept(types) {}

  // By default a mark writes itself.
  std::function<HRESULT(const Mark&)> on_mark = [this](const Mark& mark) {
    return write_output(CComBSTR(std::wstring_view(shown(mark))));
  };
  std::vector<Mark> marks;

  HRESULT OnMarked(CMarkData& data) override {
    marks.push_back(mark_of(data));
    return on_mark(marks.back());
  }

  HRESULT stream(std::wstring_view text) { return Process(CComBSTR(text).get()); }
  HRESULT replay(std::wstring_view text) {
    auto* tmpl = new CTemplate;
    HRESULT hr = Parse(CComBSTR(text).get(), *tmpl);
    if (SUCCEEDED(hr)) hr = Process(*tmpl);
    tmpl->Release();
    return hr;
  }
};

// A parsed template as plain data.
struct Parsed {
  HRESULT hr = S_OK;
  std::vector<std::wstring> texts;
  std::vector<Mark> marks;

  friend bool operator==(const Parsed&, const Parsed&) = default;
};

inline Parsed parse(std::wstring_view text, const wchar_t* types = kChildTypes) {
  Engine engine(types);
  auto* tmpl = new CTemplate;
  Parsed parsed;
  parsed.hr = engine.Parse(CComBSTR(text).get(), *tmpl);
  for (BSTR run : tmpl->Texts) parsed.texts.emplace_back(korlib::view_of(run));
  for (const CMarkData* mark : tmpl->Marks) parsed.marks.push_back(mark_of(*mark));
  tmpl->Release();
  return parsed;
}

}  // namespace test
