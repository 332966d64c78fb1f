// ADODB.Stream.
#pragma once

#include <new>
#include <string>

#include <korlib/adostream.h>
#include <korlib_host/dispatch_object.h>

#include "classes/byte_store.h"
#include "classes/text_codec.h"

namespace korlib {

// Text written at position 0 begins with the charset's byte-order mark, where it has one; a mark read
// there is skipped. Serves one thread at a time.
class Stream final : public DispatchObject<Stream, IKorLibStream> {
 public:
  static constexpr const wchar_t* kClassName = L"Stream";
  static std::span<const Member> members();

  HRESULT get_Size(LONG* bytes) override;
  HRESULT get_EOS(VARIANT_BOOL* at_end) override;
  HRESULT get_Position(LONG* position) override;
  HRESULT put_Position(LONG position) override;
  HRESULT get_Type(LONG* type) override;
  HRESULT put_Type(LONG type) override;
  HRESULT get_LineSeparator(LONG* separator) override;
  HRESULT put_LineSeparator(LONG separator) override;
  HRESULT get_State(LONG* state) override;
  HRESULT get_Mode(LONG* mode) override;
  HRESULT put_Mode(LONG mode) override;
  HRESULT get_Charset(BSTR* name) override;
  HRESULT put_Charset(BSTR name) override;
  HRESULT Read(LONG count, VARIANT* bytes) override;
  HRESULT Open(VARIANT source, LONG mode, LONG options, BSTR user, BSTR password) override;
  HRESULT Close() override;
  HRESULT SkipLine() override;
  HRESULT Write(VARIANT bytes) override;
  HRESULT SetEOS() override;
  HRESULT CopyTo(IKorLibStream* target, LONG count) override;
  HRESULT Flush() override;
  HRESULT SaveToFile(BSTR path, LONG options) override;
  HRESULT LoadFromFile(BSTR path) override;
  HRESULT ReadText(LONG count, BSTR* text) override;
  HRESULT WriteText(BSTR text, LONG options) override;
  HRESULT Cancel() override;

 private:
  HRESULT check_open() const;
  HRESULT check_readable(LONG type) const;
  HRESULT check_writable(LONG type) const;
  HRESULT at_start(std::wstring_view property) const;
  HRESULT write_array(const VARIANT& bytes);
  // What a write answers; without room the stream would become too large.
  static HRESULT stored(bool has_room);
  // Calls the body, and goes back to where the stream was when that fails.
  template <class Body>
  HRESULT wholly(Body body);
  TextCodec& codec();
  bool next_character(char32_t& c);
  void skip_mark();
  std::wstring read_line();
  std::wstring read_characters(LONG count);
  std::wstring_view line_end() const;

  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

  ByteStore store_;
  std::unique_ptr<TextCodec> codec_;  // of charset_, once it was needed
  std::wstring charset_ = L"Unicode";
  std::size_t decoded_to_ = 0;  // where the codec's state holds
  LONG type_ = adTypeText;
  LONG separator_ = adCRLF;
  LONG mode_ = 0;
  bool is_open_ = false;
};

template <class Body>
HRESULT Stream::wholly(Body body) {
  const ByteStore::Place before = store_.place();
  HRESULT hr = E_OUTOFMEMORY;
  try {
    hr = body();
  } catch (const std::bad_alloc&) {
    hr = E_OUTOFMEMORY;
  }
  if (SUCCEEDED(hr)) return hr;
  store_.go_back(before);
  decoded_to_ = kNowhere;
  return hr;
}

}  // namespace korlib
