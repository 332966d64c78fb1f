#include "mirt/upload/upload_fixture.h"

namespace test {

CComPtr<fake::asp::IStringList> UploadTest::list(const std::wstring& name) const {
  const CComBSTR key{std::wstring_view(name)};
  CComVariant found;
  EXPECT_EQ(S_OK, form_->get_Item(korlib::borrowed(key.get()), &found));
  CComPtr<fake::asp::IStringList> values;
  if (found.vt == VT_DISPATCH) {
    EXPECT_EQ(S_OK, CComPtr<IDispatch>(found.pdispVal).query(values.put()));
  }
  return values;
}

CComVariant UploadTest::value(const std::wstring& name, int index) const {
  CComVariant result;
  if (const auto values = list(name)) {
    EXPECT_EQ(S_OK, values->get_Item(index ? korlib::long_variant(index) : korlib::omitted(), &result));
  }
  return result;
}

std::wstring UploadTest::text(const std::wstring& name, int index) const {
  const CComVariant found = value(name, index);
  if (found.vt != VT_BSTR) return L"<type " + std::to_wstring(found.vt) + L">";
  return std::wstring(korlib::view_of(found.bstrVal));
}

CComPtr<IFormFile> UploadTest::file(const std::wstring& name, int index) const {
  const CComVariant found = value(name, index);
  CComPtr<IFormFile> file;
  if (found.vt == VT_DISPATCH) CComPtr<IDispatch>(found.pdispVal).query(file.put());
  return file;
}

std::string bytes_of(IFormFile* file) {
  CComPtr<IDispatch> object;
  CComPtr<IKorLibStream> stream;
  EXPECT_EQ(S_OK, file->get_Stream(object.put()));
  EXPECT_EQ(S_OK, object.query(stream.put()));
  LONG position = -1;
  EXPECT_EQ(S_OK, stream->get_Position(&position));
  EXPECT_EQ(0, position);
  CComVariant read;
  EXPECT_EQ(S_OK, stream->Read(adReadAll, &read));
  EXPECT_EQ(S_OK, stream->put_Position(0));
  if (read.vt == VT_NULL) return {};
  EXPECT_EQ(VT_ARRAY | VT_UI1, read.vt);
  const SAFEARRAY* array = read.parray;
  return {static_cast<const char*>(array->pvData), array->rgsabound[0].cElements};
}

std::wstring member(IFormFile* file, HRESULT (IFormFile::*get)(BSTR*)) {
  CComBSTR text;
  EXPECT_EQ(S_OK, (file->*get)(text.put()));
  return std::wstring(text.view());
}

std::string text_part(const std::string& name, const std::string& value) {
  return "--B\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
}

std::string file_part(const std::string& name, const std::string& file_name, const std::string& bytes) {
  return "--B\r\nContent-Disposition: form-data; name=\"" + name + "\"; filename=\"" + file_name +
         "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + bytes + "\r\n";
}

}  // namespace test
