#include "upload/parts.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <korlib/text.h>

#include "frame/error.h"
#include "frame/host.h"
#include "upload/multipart_parser.h"
#include "upload/upload_classes.h"

namespace {

constexpr UINT kUtf8 = 65001;

using Convert = decltype(codepage_utf32);

bool is_ascii(std::string_view bytes) {
  unsigned int all = 0;
  for (const char c : bytes) all |= static_cast<unsigned char>(c);
  return all < 0x80;
}

std::size_t convert(UINT code_page, std::string_view bytes, wchar_t* out, std::size_t capacity) {
  static Convert* const of_host = mirt::host_function<Convert>("codepage_utf32");
  if (code_page == kUtf8 || (!of_host && is_ascii(bytes))) {
    return utf8_utf32(bytes.data(), bytes.size(), out, capacity);
  }
  return of_host ? of_host(code_page, bytes.data(), bytes.size(), out, capacity) : kUnknownCodePage;
}

// The text of the bytes in front of the first NUL. A code page that the host does not know is E_FAIL. So
// is any but UTF-8 on a host that converts no other, unless the bytes are ASCII and mean the same in all.
HRESULT bytes_to_text(std::string_view bytes, UINT code_page, CComBSTR* text) {
  bytes = bytes.substr(0, bytes.find('\0'));
  // ASCII, as most of it is, has a character a byte.
  const std::size_t length =
      code_page == kUtf8 && is_ascii(bytes) ? bytes.size() : convert(code_page, bytes, nullptr, 0);
  if (length == kUnknownCodePage) return E_FAIL;
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return E_OUTOFMEMORY;
  text->attach(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
  if (!text->get()) return E_OUTOFMEMORY;
  convert(code_page, bytes, text->get(), length);
  return S_OK;
}

// What the headers of a part say about it, in bytes.
class PartHeaders {
 public:
  // Of the next part, in place of those before. S_FALSE when they are complete.
  HRESULT read(CMultipartParser& parser) {
    clear();
    HRESULT hr = S_OK;
    while ((hr = parser.GetHeader(header_)) == S_OK) take_line();
    return hr;
  }

  const std::string& field_name() const { return field_name_; }
  const std::string& file_name() const { return file_name_; }
  const std::string& content_type() const { return content_type_; }

 private:
  // What the texts have taken of memory stays for the next part.
  void clear() {
    header_.name.clear();
    header_.value.clear();
    header_.params.clear();
    field_name_.clear();
    file_name_.clear();
    content_type_.clear();
    is_field_name_new_ = is_file_name_new_ = false;
  }

  // Parameters count from every line of the part, but only when the next disposition line comes. A value
  // is copied at most once each time it was sent, or many short lines would copy a long one over and over.
  void take_line() {
    for (const std::string* key : header_.stored) {
      if (*key == "name") is_field_name_new_ = true;
      if (*key == "filename") is_file_name_new_ = true;
    }
    if (!header_.has_colon) return;
    if (header_.name == "Content-Disposition" && header_.value == "form-data") {
      if (std::exchange(is_field_name_new_, false)) field_name_ = header_.params["name"];
      if (std::exchange(is_file_name_new_, false)) file_name_ = header_.params["filename"];
    } else if (header_.name == "Content-Type") {
      content_type_ = header_.value;
    }
  }

  CMultipartHeader header_;
  std::string field_name_;
  std::string file_name_;
  std::string content_type_;
  bool is_field_name_new_ = false;
  bool is_file_name_new_ = false;
};

HRESULT file_value(CComBSTR name, const std::string& content_type, std::string_view content, UINT code_page,
                   CComVariant* value) {
  CComBSTR type;
  RETURN_IF_FAILED(bytes_to_text(content_type, code_page, &type));
  CComPtr<IFormFile> spFile;
  RETURN_IF_FAILED(g_oCF_FormFile.CreateInstance(nullptr, korlib::iid_of<IFormFile>, spFile.put_void()));
  RETURN_IF_FAILED(static_cast<GIFormFileImpl<IFormFile>*>(spFile.get())
                       ->fill(std::move(name), std::move(type), content.data(), content.size()));
  *value = CComVariant(static_cast<IDispatch*>(spFile.get()));
  return S_OK;
}

HRESULT text_value(std::string_view content, UINT code_page, CComVariant* value) {
  CComBSTR text;
  RETURN_IF_FAILED(bytes_to_text(content, code_page, &text));
  value->vt = VT_BSTR;
  value->bstrVal = text.detach();
  return S_OK;
}

// A part with a file name is a file; the name counts as it reads in the code page.
HRESULT add_part(const PartHeaders& headers, std::string_view content, UINT code_page, GMultipartForm& form) {
  CComBSTR name;
  CComBSTR file_name;
  CComVariant value;
  RETURN_IF_FAILED(bytes_to_text(headers.field_name(), code_page, &name));
  RETURN_IF_FAILED(bytes_to_text(headers.file_name(), code_page, &file_name));
  RETURN_IF_FAILED(file_name.empty()
                       ? text_value(content, code_page, &value)
                       : file_value(std::move(file_name), headers.content_type(), content, code_page, &value));
  return form.add(std::move(name), std::move(value));
}

}  // namespace

HRESULT add_parts(const char* body, std::size_t length, const char* delimiter, UINT code_page, GMultipartForm& form) {
  return mirt::guarded([&] {
    constexpr std::size_t kLineEnd = 2;  // the CR LF in front of a delimiter is not content
    CMultipartParser parser(body, length, delimiter);
    std::size_t delimiter_at = 0;
    bool is_last = false;
    RETURN_IF_FAILED(parser.MoveNextBoundary(delimiter_at, is_last));
    PartHeaders headers;
    while (!is_last) {
      const HRESULT headers_end = headers.read(parser);
      if (headers_end != S_FALSE) return headers_end;
      const std::size_t start = parser.position();
      RETURN_IF_FAILED(parser.MoveNextBoundary(delimiter_at, is_last));
      const std::size_t size = delimiter_at < start + kLineEnd ? 0 : delimiter_at - kLineEnd - start;
      RETURN_IF_FAILED(add_part(headers, {body + start, size}, code_page, form));
    }
    return S_OK;
  });
}
