#include "classes/stream.h"

#include <cstring>

#include <korlib_host/results.h>

#include "classes/files.h"
#include "classes/script_errors.h"

namespace korlib {
namespace {

constexpr std::wstring_view kSource = L"ADODB.Stream";
constexpr LONG kModeRead = 1;
constexpr LONG kModeWrite = 2;
constexpr LONG kModeReadWrite = 3;

HRESULT invalid(std::wstring_view text) { return raise(kInvalidArgument, kSource, text); }
HRESULT not_allowed(std::wstring_view text) { return raise(kNotAllowedHere, kSource, text); }

// The bytes of a byte array, however it is passed.
HRESULT bytes_of(const VARIANT& value, std::string_view& bytes) {
  const SAFEARRAY* array = nullptr;
  if (value.vt == (VT_ARRAY | VT_UI1)) array = value.parray;
  if (value.vt == (VT_ARRAY | VT_UI1 | VT_BYREF) && value.pparray) array = *value.pparray;
  if (value.vt == (VT_VARIANT | VT_BYREF) && value.pvarVal) return bytes_of(*value.pvarVal, bytes);
  if (!array || array->cDims != 1) return invalid(L"Write: a byte array is needed.");
  bytes = {static_cast<const char*>(array->pvData), array->rgsabound[0].cElements};
  return S_OK;
}

// The byte of an array of one; null when it is anything else.
const char* only_byte_of(const VARIANT& value) {
  const SAFEARRAY* const array = value.vt == (VT_ARRAY | VT_UI1) ? value.parray : nullptr;
  const bool is_one = array && array->cDims == 1 && array->rgsabound[0].cElements == 1;
  return is_one ? static_cast<const char*>(array->pvData) : nullptr;
}

}  // namespace

std::span<const Member> Stream::members() {
  static constexpr Member table[] = {
      property<&Stream::get_Size>(L"Size"),
      property<&Stream::get_EOS>(L"EOS"),
      property<&Stream::get_Position, &Stream::put_Position>(L"Position"),
      property<&Stream::get_Type, &Stream::put_Type>(L"Type"),
      property<&Stream::get_LineSeparator, &Stream::put_LineSeparator>(L"LineSeparator"),
      property<&Stream::get_State>(L"State"),
      property<&Stream::get_Mode, &Stream::put_Mode>(L"Mode"),
      property<&Stream::get_Charset, &Stream::put_Charset>(L"Charset"),
      method<&Stream::Read>(L"Read").optional(adReadAll),
      method<&Stream::Open>(L"Open").optional(0, 0, -1, 0, 0),
      method<&Stream::Close>(L"Close"),
      method<&Stream::SkipLine>(L"SkipLine"),
      method<&Stream::Write>(L"Write"),
      method<&Stream::SetEOS>(L"SetEOS"),
      method<&Stream::CopyTo>(L"CopyTo").optional(adReadAll),
      method<&Stream::Flush>(L"Flush"),
      method<&Stream::SaveToFile>(L"SaveToFile").optional(adSaveCreateNotExist),
      method<&Stream::LoadFromFile>(L"LoadFromFile"),
      method<&Stream::ReadText>(L"ReadText").optional(adReadAll),
      method<&Stream::WriteText>(L"WriteText").optional(adWriteChar),
      method<&Stream::Cancel>(L"Cancel"),
  };
  return table;
}

HRESULT Stream::check_open() const {
  return is_open_ ? S_OK : raise(kObjectClosed, kSource, L"The stream is not open.");
}

HRESULT Stream::check_readable(LONG type) const {
  RETURN_IF_FAILED(check_open());
  if (mode_ == kModeWrite) return not_allowed(L"The stream was opened for writing only.");
  if (type_ == type) return S_OK;
  return not_allowed(type == adTypeText ? L"A binary stream is read with Read; set Type to 2 for text."
                                        : L"A text stream is read with ReadText; set Type to 1 for bytes.");
}

HRESULT Stream::check_writable(LONG type) const {
  RETURN_IF_FAILED(check_open());
  if (mode_ == kModeRead) return not_allowed(L"The stream was opened for reading only.");
  if (type_ == type) return S_OK;
  return not_allowed(type == adTypeText ? L"A binary stream is written with Write; set Type to 2 for text."
                                        : L"A text stream is written with WriteText; set Type to 1 for bytes.");
}

HRESULT Stream::at_start(std::wstring_view property) const {
  if (store_.position() == 0) return S_OK;
  return not_allowed(std::wstring(property) + L" can be set only at position 0.");
}

STDMETHODIMP Stream::get_Size(LONG* bytes) {
  RETURN_IF_FAILED(give(static_cast<LONG>(store_.size()), bytes));
  return check_open();
}

STDMETHODIMP Stream::get_EOS(VARIANT_BOOL* at_end) {
  RETURN_IF_FAILED(give(store_.rest().empty(), at_end));
  return check_open();
}

STDMETHODIMP Stream::get_Position(LONG* position) {
  RETURN_IF_FAILED(give(static_cast<LONG>(store_.position()), position));
  return check_open();
}

STDMETHODIMP Stream::put_Position(LONG position) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_open());
    if (position < 0) return invalid(L"Position: a negative position.");
    return stored(store_.move_to(static_cast<std::size_t>(position)));
  });
}

STDMETHODIMP Stream::get_Type(LONG* type) { return give(type_, type); }

STDMETHODIMP Stream::put_Type(LONG type) {
  if (type != adTypeBinary && type != adTypeText) return invalid(L"Type is 1 (binary) or 2 (text).");
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(at_start(L"Type"));
    type_ = type;
    return S_OK;
  });
}

STDMETHODIMP Stream::get_LineSeparator(LONG* separator) { return give(separator_, separator); }

STDMETHODIMP Stream::put_LineSeparator(LONG separator) {
  if (separator != adCR && separator != adLF && separator != adCRLF) {
    return invalid(L"LineSeparator is -1 (CRLF), 10 (LF) or 13 (CR).");
  }
  separator_ = separator;
  return S_OK;
}

STDMETHODIMP Stream::get_State(LONG* state) { return give(is_open_ ? adStateOpen : adStateClosed, state); }

STDMETHODIMP Stream::get_Mode(LONG* mode) { return give(mode_, mode); }

STDMETHODIMP Stream::put_Mode(LONG mode) {
  if (is_open_) return raise(kObjectOpen, kSource, L"Mode can be set only while the stream is closed.");
  if (mode < 0) return invalid(L"Mode is 0 (unspecified), 1 (read), 2 (write) or 3 (both).");
  mode_ = mode & kModeReadWrite;
  return S_OK;
}

STDMETHODIMP Stream::get_Charset(BSTR* name) { return give(charset_, name); }

STDMETHODIMP Stream::put_Charset(BSTR name) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(at_start(L"Charset"));
    std::wstring charset(view_of(name));
    std::unique_ptr<TextCodec> opened = open_codec(charset);
    if (!opened) {
      return invalid(L"Charset: '" + charset.substr(0, 60) + L"' is not a known charset.");
    }
    codec_ = std::move(opened);
    charset_ = std::move(charset);
    return S_OK;
  });
}

STDMETHODIMP Stream::Open(VARIANT source, LONG mode, LONG, BSTR, BSTR) {
  if (is_open_) return raise(kObjectOpen, kSource, L"The stream is open already.");
  if (!is_omitted(source) && source.vt != VT_EMPTY && source.vt != VT_ERROR) {
    return raise(kNotSupported, kSource, L"Open: a stream is opened empty; LoadFromFile reads a file.");
  }
  if (mode != 0) RETURN_IF_FAILED(put_Mode(mode));
  is_open_ = true;
  return S_OK;
}

STDMETHODIMP Stream::Close() {
  RETURN_IF_FAILED(check_open());
  store_.clear();
  is_open_ = false;
  return S_OK;
}

STDMETHODIMP Stream::Read(LONG count, VARIANT* bytes) {
  if (!bytes) return E_POINTER;
  VariantInit(bytes);
  RETURN_IF_FAILED(check_readable(adTypeBinary));
  if (count < adReadAll) return invalid(L"Read: the count is -1 (all) or a number of bytes.");
  const std::string_view rest = store_.rest();
  if (rest.empty()) {
    bytes->vt = VT_NULL;
    return S_OK;
  }
  const std::string_view read = count == adReadAll ? rest : rest.substr(0, static_cast<std::size_t>(count));
  CComSafeArray array(VT_UI1, static_cast<ULONG>(read.size()));
  if (!array) return E_OUTOFMEMORY;
  if (!read.empty()) std::memcpy(array.data<char>(), read.data(), read.size());
  array.detach_to(bytes);
  store_.advance(read.size());
  return S_OK;
}

HRESULT Stream::stored(bool has_room) {
  return has_room ? S_OK : raise(E_OUTOFMEMORY, kSource, L"The stream would become too large.");
}

// An upload comes in a byte a write: that one is stored here, without a call.
STDMETHODIMP Stream::Write(VARIANT bytes) {
  const bool is_writable = is_open_ && type_ == adTypeBinary && mode_ != kModeRead;
  const char* const byte = is_writable ? only_byte_of(bytes) : nullptr;
  return byte && store_.put(*byte) ? S_OK : write_array(bytes);
}

HRESULT Stream::write_array(const VARIANT& bytes) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_writable(adTypeBinary));
    std::string_view view;
    RETURN_IF_FAILED(bytes_of(bytes, view));
    return stored(store_.write(view));
  });
}

STDMETHODIMP Stream::SetEOS() {
  RETURN_IF_FAILED(check_open());
  store_.cut_here();
  return S_OK;
}

STDMETHODIMP Stream::CopyTo(IKorLibStream* target, LONG count) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_open());
    if (!target) return invalid(L"CopyTo: a stream is needed.");
    if (count < adReadAll) return invalid(L"CopyTo: the count is -1 (all) or a number.");
    LONG target_type = 0;
    RETURN_IF_FAILED(target->get_Type(&target_type));
    if (type_ == adTypeText && target_type == adTypeText) {
      return wholly([&]() -> HRESULT {
        CComBSTR text;
        RETURN_IF_FAILED(ReadText(count, text.put()));
        return text.empty() ? S_OK : target->WriteText(text, adWriteChar);
      });
    }
    if (target_type == adTypeText) {
      return not_allowed(L"CopyTo: bytes cannot be copied into a text stream.");
    }
    return wholly([&]() -> HRESULT {
      const LONG type = std::exchange(type_, adTypeBinary);
      CComVariant bytes;
      const HRESULT hr = Read(count, bytes.put());
      type_ = type;
      RETURN_IF_FAILED(hr);
      return bytes.vt == VT_NULL ? S_OK : target->Write(bytes);
    });
  });
}

STDMETHODIMP Stream::Flush() { return check_open(); }

STDMETHODIMP Stream::Cancel() { return check_open(); }

STDMETHODIMP Stream::SaveToFile(BSTR path, LONG options) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_open());
    if (options != adSaveCreateNotExist && options != adSaveCreateOverWrite) {
      return invalid(L"SaveToFile: the option is 1 (a new file) or 2 (replace).");
    }
    const bool replace = options == adSaveCreateOverWrite;
    RETURN_IF_FAILED(save_file(view_of(path), store_.all(), replace, {kSource, kCannotWriteFile}));
    return put_Position(0);
  });
}

STDMETHODIMP Stream::LoadFromFile(BSTR path) {
  return guarded(kSource, [&]() -> HRESULT {
    RETURN_IF_FAILED(check_open());
    base::GrowingBuffer contents;
    RETURN_IF_FAILED(load_file(view_of(path), {kSource, kCannotOpenFile}, contents));
    store_.assign(std::move(contents));
    return S_OK;
  });
}

}  // namespace korlib
