// Any text as a template: whatever it is, streaming and replay agree on the outcome and on what is drawn.
#include <cstdint>
#include <cstdlib>
#include <string>

#include <korlib/text.h>

#include "mirt/templator/recording_sink.h"
#include "templator/templator_concept.h"

namespace {

void require(bool claim) {
  if (!claim) std::abort();
}

class Engine final : public CTemplatorConcept {
 public:
  explicit Engine(const wchar_t* types) : CTemplatorConcept(types) { require(putref_Output(sink->unknown()) == S_OK); }

  HRESULT OnMarked(CMarkData& mark) override {
    std::wstring text = L"<" + std::wstring(1, mark.Type) + mark.Name.str();
    for (const std::wstringstream* param : mark.Params) text += L'\x1' + param->str();
    return write_output(CComBSTR(std::wstring_view(text + L">")));
  }

  const CComPtr<test::RecordingSink> sink = test::RecordingSink::make(test::kResponse);
};

void draw_both_ways(const CComBSTR& text, const wchar_t* types) {
  Engine streaming(types);
  Engine replaying(types);
  const HRESULT streamed = streaming.Process(text.get());
  auto* tmpl = new CTemplate;
  const HRESULT parsed = replaying.Parse(text.get(), *tmpl);
  require(parsed == streamed);
  if (SUCCEEDED(parsed)) {
    require(tmpl->Texts.size() == tmpl->Marks.size() + 1);
    require(SUCCEEDED(replaying.Process(*tmpl)));
    require(streaming.sink->text() == replaying.sink->text());
  }
  tmpl->Release();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* bytes = reinterpret_cast<const char*>(data);
  std::wstring text(utf8_utf32(bytes, size, nullptr, 0), L'\0');
  utf8_utf32(bytes, size, text.data(), text.size());
  // A kept run ends at its NUL, a streamed one does not: that is how they are.
  std::erase(text, L'\0');
  const CComBSTR source{std::wstring_view(text)};
  draw_both_ways(source, L"%;:*/=~+-$\\&|!?`@");
  draw_both_ways(source, L" \t\r\n");
  return 0;
}
