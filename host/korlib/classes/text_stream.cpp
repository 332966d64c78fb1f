#include "classes/text_stream.h"

#include <korlib_host/results.h>

#include "classes/script_errors.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"Scripting.TextStream";
constexpr LONG kMostBlankLines = 1'000'000;

}  // namespace

std::span<const Member> TextStream::members() {
  static constexpr Member table[] = {
      method<&TextStream::Write>(L"Write"),
      method<&TextStream::WriteLine>(L"WriteLine").optional(0),
      method<&TextStream::WriteBlankLines>(L"WriteBlankLines"),
      method<&TextStream::Read>(L"Read"),
      method<&TextStream::ReadLine>(L"ReadLine"),
      method<&TextStream::ReadAll>(L"ReadAll"),
      property<&TextStream::get_AtEndOfStream>(L"AtEndOfStream"),
      property<&TextStream::get_Line>(L"Line"),
      method<&TextStream::Close>(L"Close"),
  };
  return table;
}

HRESULT TextStream::check(bool is_reader) const {
  if (!file_.is_open()) return raise(kBadFileMode, kSource, L"The text stream is closed.");
  if (file_.is_reader() == is_reader) return S_OK;
  return raise(kBadFileMode, kSource,
               is_reader ? L"The text stream was opened for writing." : L"The text stream was opened for reading.");
}

STDMETHODIMP TextStream::Write(BSTR text) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check(false));
    return file_.write(view_of(text));
  });
}

STDMETHODIMP TextStream::WriteLine(BSTR text) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check(false));
    return file_.write(view_of(text), "\n");
  });
}

STDMETHODIMP TextStream::WriteBlankLines(LONG lines) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check(false));
    if (lines < 0 || lines > kMostBlankLines) return raise(E_INVALIDARG, kSource, L"WriteBlankLines: a wrong number.");
    return file_.write(std::wstring(static_cast<std::size_t>(lines), L'\n'));
  });
}

template <class Reader>
HRESULT TextStream::read(BSTR* text, Reader reader) {
  return guarded(kSource, text, [&]() -> HRESULT {
    RETURN_IF_FAILED(check(true));
    if (file_.at_end()) return raise(kPastEndOfFile, kSource, L"The text stream is at its end.");
    const TextFile::Place before = file_.place();
    const HRESULT hr = give(reader(), text);
    if (FAILED(hr)) file_.go_back(before);
    return hr;
  });
}

STDMETHODIMP TextStream::Read(LONG characters, BSTR* text) {
  if (!text) return E_POINTER;
  *text = nullptr;
  if (characters < 0) return raise(E_INVALIDARG, kSource, L"Read: a negative number of characters.");
  return read(text, [&] { return file_.read(static_cast<std::size_t>(characters)); });
}

STDMETHODIMP TextStream::ReadLine(BSTR* text) {
  return read(text, [&] { return file_.read_line(); });
}

STDMETHODIMP TextStream::ReadAll(BSTR* text) {
  return read(text, [&] { return file_.read(); });
}

STDMETHODIMP TextStream::get_AtEndOfStream(VARIANT_BOOL* at_end) {
  RETURN_IF_FAILED(give(true, at_end));
  RETURN_IF_FAILED(check(true));
  return give(file_.at_end(), at_end);
}

STDMETHODIMP TextStream::get_Line(LONG* line) { return give(file_.line(), line); }

STDMETHODIMP TextStream::Close() {
  return guarded(kSource, [&] { return file_.close(); });
}

}  // namespace korlib
