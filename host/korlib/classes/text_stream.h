// Scripting.TextStream: a text file in the hands of a script.
#pragma once

#include <korlib/textstream.h>
#include <korlib_host/dispatch_object.h>

#include "classes/text_file.h"

namespace korlib {

// Made by the file system object, open. Serves one thread at a time.
class TextStream final : public DispatchObject<TextStream, Scripting::ITextStream> {
 public:
  static constexpr const wchar_t* kClassName = L"TextStream";
  static std::span<const Member> members();

  TextFile& file() { return file_; }

  HRESULT Write(BSTR text) override;
  HRESULT WriteLine(BSTR text) override;
  HRESULT WriteBlankLines(LONG lines) override;
  HRESULT Read(LONG characters, BSTR* text) override;
  HRESULT ReadLine(BSTR* text) override;
  HRESULT ReadAll(BSTR* text) override;
  HRESULT get_AtEndOfStream(VARIANT_BOOL* at_end) override;
  HRESULT get_Line(LONG* line) override;
  HRESULT Close() override;

 private:
  HRESULT check(bool is_reader) const;
  template <class Reader>
  HRESULT read(BSTR* text, Reader reader);

  TextFile file_;
};

}  // namespace korlib
