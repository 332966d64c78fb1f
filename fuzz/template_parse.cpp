// Any text as a template: streaming and replay draw what the rules of marks say, and end as they say.
#include <initializer_list>
#include <vector>

#include <korlib/text.h>

#include "mirt/templator/recording_sink.h"
#include "templator/templator_concept.h"
#include "text_input.h"

namespace {

constexpr std::wstring_view kEscape = L"^";
constexpr std::wstring_view kOpen = L"(#";
constexpr std::wstring_view kClose = L"#)";
constexpr std::wstring_view kName = L"|";
constexpr std::wstring_view kParam = L"#|#";

// How a mark is drawn here: its type and all of its texts, the name first.
std::wstring drawn(wchar_t type, const std::vector<std::wstring>& texts) {
  std::wstring all = L"<" + std::wstring(1, type);
  for (const std::wstring& text : texts) all += text + L'\x1';
  return all + L">";
}

// Reads a template a delimiter or a character at a time.
class Reader {
 public:
  Reader(std::wstring_view text, std::wstring_view types) : rest_(text), types_(types) {}

  // Reads to the end, or to what is wrong.
  bool read() {
    while (!rest_.empty()) {
      std::wstring& run = texts.back();
      if (take_escape({kEscape, kOpen, kClose}, run)) continue;
      if (take(kOpen)) {
        if (!read_mark()) return false;
        texts.emplace_back();
      } else if (take(kClose)) {
        return false;
      } else {
        take_character(run);
      }
    }
    return true;
  }

  std::vector<std::wstring> texts{L""};  // of what is read, in pieces between marks
  std::vector<std::wstring> marks;       // as they are drawn

 private:
  bool take(std::wstring_view wanted) {
    if (!rest_.starts_with(wanted)) return false;
    rest_.remove_prefix(wanted.size());
    return true;
  }
  void take_character(std::wstring& into) {
    into += rest_[0];
    rest_.remove_prefix(1);
  }
  bool take_literally(std::wstring_view wanted, std::wstring& into) {
    if (!take(wanted)) return false;
    into += wanted;
    return true;
  }
  bool take_escape(std::initializer_list<std::wstring_view> protectable, std::wstring& into) {
    if (!take(kEscape)) return false;
    for (const std::wstring_view each : protectable) {
      if (take_literally(each, into)) return true;
    }
    into += kEscape;
    return true;
  }

  // Behind its opening; false where it does not close.
  bool read_mark() {
    wchar_t type = 0;
    if (!rest_.empty() && types_.find(rest_[0]) != types_.npos) {
      type = rest_[0];
      rest_.remove_prefix(1);
    }
    std::vector<std::wstring> parts{L""};
    int depth = 0;
    while (!rest_.empty()) {
      std::wstring& part = parts.back();
      if (take_escape({kEscape, kOpen, kClose, kName, kParam}, part)) continue;
      if (take_literally(kOpen, part)) {
        ++depth;
      } else if (depth == 0 && take(kClose)) {
        marks.push_back(drawn(type, parts));
        return true;
      } else if (take_literally(kClose, part)) {
        --depth;
      } else if (depth == 0 && ((parts.size() == 1 && take(kName)) || take(kParam))) {
        parts.emplace_back();
      } else if (!take_literally(kName, part) && !take_literally(kParam, part)) {
        take_character(part);
      }
    }
    return false;
  }

  std::wstring_view rest_;
  std::wstring_view types_;
};

class Engine final : public CTemplatorConcept {
 public:
  explicit Engine(const wchar_t* types) : CTemplatorConcept(types) {
    fuzz::require(putref_Output(sink->unknown()) == S_OK, "the sink");
  }

  HRESULT OnMarked(CMarkData& mark) override {
    std::vector<std::wstring> texts{mark.Name.str()};
    for (const std::wstringstream* param : mark.Params) texts.push_back(param->str());
    marks.push_back(drawn(mark.Type, texts));
    return write_output(CComBSTR(std::wstring_view(marks.back())));
  }

  std::vector<std::wstring> marks;
  const CComPtr<test::RecordingSink> sink = test::RecordingSink::make(test::kResponse);
};

// All that is drawn before the end, or before what is wrong.
std::wstring whole(const Reader& reader) {
  std::wstring all;
  for (std::size_t i = 0; i < reader.texts.size(); ++i) {
    all += reader.texts[i];
    if (i < reader.marks.size()) all += reader.marks[i];
  }
  return all;
}

void draw_both_ways(const CComBSTR& text, const wchar_t* types) {
  Reader expected(text.view(), types);
  const HRESULT code = expected.read() ? S_OK : E_FAIL;
  Engine streaming(types);
  fuzz::require(streaming.Process(text.get()) == code, "how streaming ends");
  fuzz::require(streaming.sink->text() == whole(expected), "what streaming draws");

  Engine replaying(types);
  auto* tmpl = new CTemplate;
  fuzz::require(replaying.Parse(text.get(), *tmpl) == code, "how parsing ends");
  fuzz::require(tmpl->Marks.size() == expected.marks.size(), "the number of marks");
  if (code == S_OK) {
    std::vector<std::wstring> texts;
    for (const BSTR each : tmpl->Texts) texts.emplace_back(korlib::view_of(each));
    fuzz::require(texts == expected.texts, "the runs");
    fuzz::require(replaying.Process(*tmpl) == S_OK, "replay succeeds");
    fuzz::require(replaying.marks == expected.marks, "the marks");
    fuzz::require(replaying.sink->text() == whole(expected), "what replay draws");
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
