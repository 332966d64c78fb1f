// Any bytes as the body of an upload, from the request to the values of the form, which are those that the
// rules give.
#include <map>

#include <korlib/adostream.h>
#include <korlib/text.h>
#include <mirt/mirt.h>

#include "decoded_value.h"
#include "frame/globals.h"
#include "multipart_model.h"
#include "support/fake_asp.h"
#include "text_input.h"
#include "upload/intake.h"

namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

// Up to the first NUL; nothing in a code page that is none.
std::optional<std::wstring> text_of(const std::string& bytes, UINT code_page) {
  const std::string_view used(bytes.c_str());
  const std::size_t length = codepage_utf32(code_page, used.data(), used.size(), nullptr, 0);
  if (length == kUnknownCodePage) return std::nullopt;
  std::wstring text(length, L'\0');
  codepage_utf32(code_page, used.data(), used.size(), text.data(), length);
  return text;
}

void require_text(const CComBSTR& text, const std::optional<std::wstring>& expected, const char* rule) {
  fuzz::require(text.view() == expected, rule);
}

// After the last backslash, or after the last slash where there is none.
std::wstring last_name_of(const std::wstring& name) {
  const std::size_t at = name.rfind(name.find(L'\\') == name.npos ? L'/' : L'\\');
  return at == name.npos ? name : name.substr(at + 1);
}

void require_file(const VARIANT& value, const fuzz::Part& part, UINT code_page) {
  fuzz::require(value.vt == VT_DISPATCH, "a file is an object");
  CComPtr<IFormFile> file;
  fuzz::require(value.pdispVal->QueryInterface(korlib::iid_of<IFormFile>, file.put_void()) == S_OK, "of its kind");
  CComBSTR name;
  CComBSTR last_name;
  CComBSTR type;
  CComPtr<IDispatch> object;
  fuzz::require(file->get_FileName(name.put()) == S_OK && file->get_FileName2(last_name.put()) == S_OK, "it has names");
  fuzz::require(file->get_ContentType(type.put()) == S_OK && file->get_Stream(object.put()) == S_OK, "it has the rest");
  const std::optional<std::wstring> sent_as = text_of(part.file_name, code_page);
  require_text(name, sent_as, "the file's name");
  require_text(last_name, last_name_of(sent_as.value_or(L"")), "the file's last name");
  require_text(type, text_of(part.content_type, code_page), "the file's type");
  CComPtr<IKorLibStream> stream;
  fuzz::require(object.query(stream.put()) == S_OK, "its bytes are a stream");
  CComVariant bytes;
  fuzz::require(stream->Read(adReadAll, &bytes) == S_OK, "which is at its beginning");
  fuzz::require(bytes.vt == VT_NULL ? part.content.empty() : fuzz::is_byte_array(bytes, part.content), "the bytes");
}

void require_value(const VARIANT& value, const fuzz::Part& part, UINT code_page) {
  if (!text_of(part.file_name, code_page)->empty()) return require_file(value, part, code_page);
  fuzz::require(value.vt == VT_BSTR, "a text is a string");
  fuzz::require(korlib::view_of(value.bstrVal) == text_of(part.content, code_page), "the text");
}

using Fields = std::map<std::wstring, std::vector<fuzz::Part>>;

void require_field(IRequestDictionary& form, const Fields::value_type& expected, UINT code_page) {
  const CComBSTR key(std::wstring_view(expected.first));
  CComVariant field;
  fuzz::require(form.get_Item(korlib::borrowed(key.get()), &field) == S_OK && field.vt == VT_DISPATCH, "a field");
  CComPtr<IStringList> values;
  int count = 0;
  fuzz::require(CComPtr<IDispatch>(field.pdispVal).query(values.put()) == S_OK, "which is a list");
  fuzz::require(values->get_Count(&count) == S_OK && count == static_cast<int>(expected.second.size()),
                "of its values");
  for (int i = 0; i < count; ++i) {
    CComVariant value;
    fuzz::require(values->get_Item(korlib::long_variant(i + 1), &value) == S_OK, "in their order");
    require_value(value, expected.second[static_cast<std::size_t>(i)], code_page);
  }
}

// The fields that the rules give. A code page that is none ends the reading at the first part.
Fields fields_of(const fuzz::Parts& parts, UINT code_page, HRESULT* hr) {
  Fields fields;
  *hr = parts.is_whole ? S_OK : E_FAIL;
  for (const fuzz::Part& part : parts.all) {
    const std::optional<std::wstring> name = text_of(part.field_name, code_page);
    if (!name) *hr = E_FAIL;
    if (!name) break;
    fields[*name].push_back(part);
  }
  return fields;
}

}  // namespace

// The first byte chooses the code page.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr UINT kCodePages[] = {65001, 932, 1252, 1};
  const UINT code_page = kCodePages[data[0] % std::size(kCodePages)];
  {
    fake::Asp asp;
    asp.response->code_page = static_cast<LONG>(code_page);
    asp.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=B"});
    asp.request->body.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
    HRESULT expected = E_FAIL;
    const Fields fields = fields_of(fuzz::parts_of(asp.request->body, "--B"), code_page, &expected);

    CComPtr<IRequestDictionary> form;
    fuzz::require(read_multipart_form(asp.request.get(), asp.response.get(), &form) == expected, "the code");
    int count = -1;
    fuzz::require(form && form->get_Count(&count) == S_OK, "a form, whatever the body");
    fuzz::require(count == static_cast<int>(fields.size()), "the number of fields");
    for (const auto& field : fields) require_field(*form, field, code_page);
  }
  fuzz::require(g_nRefCount == 0, "nothing is held");
  return 0;
}
