// The text side of a stream.
#include <korlib_host/results.h>

#include "classes/script_errors.h"
#include "classes/stream.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"ADODB.Stream";

}  // namespace

TextCodec& Stream::codec() {
  if (!codec_) codec_ = open_codec(charset_);
  return *codec_;
}

std::wstring_view Stream::line_end() const { return separator_ == adCR ? L"\r" : separator_ == adLF ? L"\n" : L"\r\n"; }

STDMETHODIMP Stream::WriteText(BSTR text, LONG options) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_writable(adTypeText));
    if (options != adWriteChar && options != adWriteLine) {
      return raise(kInvalidArgument, kSource, L"WriteText: the option is 0 (text) or 1 (a line).");
    }
    return wholly([&]() -> HRESULT {
      if (store_.position() == 0) RETURN_IF_FAILED(stored(store_.write(codec().mark())));
      RETURN_IF_FAILED(stored(codec().write(view_of(text), store_)));
      return options == adWriteLine ? stored(codec().write(line_end(), store_)) : S_OK;
    });
  });
}

void Stream::skip_mark() {
  if (store_.position() != 0) return;
  const std::string_view mark = codec().mark();
  if (!mark.empty() && store_.all().starts_with(mark)) store_.advance(mark.size());
}

bool Stream::next_character(char32_t& c) {
  do {
    std::string_view bytes = store_.rest();
    if (bytes.empty()) return false;
    const std::size_t before = bytes.size();
    c = codec().next(bytes, decoded_to_ == store_.position());
    store_.advance(before - bytes.size());
    decoded_to_ = store_.position();
  } while (c == kNothing);
  return true;
}

std::wstring Stream::read_line() {
  const std::wstring_view end = line_end();
  std::wstring line;
  char32_t c = 0;
  while (next_character(c)) {
    line.push_back(static_cast<wchar_t>(c));
    if (line.ends_with(end)) {
      line.resize(line.size() - end.size());
      break;
    }
  }
  return line;
}

std::wstring Stream::read_characters(LONG count) {
  std::wstring text;
  char32_t c = 0;
  for (LONG i = 0; i < count && next_character(c); ++i) text.push_back(static_cast<wchar_t>(c));
  return text;
}

STDMETHODIMP Stream::ReadText(LONG count, BSTR* text) {
  return guarded(kSource, text, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_readable(adTypeText));
    if (count < adReadLine) {
      return raise(kInvalidArgument, kSource,
                   L"ReadText: the count is -1 (all), -2 (a line) or a number of characters.");
    }
    return wholly([&]() -> HRESULT {
      skip_mark();
      if (count == adReadLine) return give(read_line(), text);
      if (count >= 0) return give(read_characters(count), text);
      const std::string_view bytes = store_.rest();
      CComBSTR all = codec().read(bytes, decoded_to_ == store_.position());
      if (!all.get()) return E_OUTOFMEMORY;
      *text = all.detach();
      store_.advance(bytes.size());
      return S_OK;
    });
  });
}

STDMETHODIMP Stream::SkipLine() {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_readable(adTypeText));
    return wholly([&] {
      skip_mark();
      read_line();
      return S_OK;
    });
  });
}

}  // namespace korlib
