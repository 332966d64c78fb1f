// From a request to a form: which requests are uploads, and what is said when one cannot be read.
#include <cstring>

#include "mirt/upload/upload_fixture.h"

namespace test {
namespace {

class Intake : public UploadTest {};

TEST_F(Intake, LeavesOtherRequestsAlone) {
  asp_.request->body = text_part("a", "1") + kEnd;
  for (const wchar_t* type :
       {L"", L"application/x-www-form-urlencoded", L"multipart/form-data", L"Multipart/Form-Data; boundary=B",
        L" multipart/form-data; boundary=B", L"multipart/form-data boundary=B", L"multipart/mixed; boundary=B"}) {
    set_type(type);
    EXPECT_EQ(S_OK, take()) << type;
    EXPECT_FALSE(form_) << type;
  }
  EXPECT_EQ(0, asp_.calls->count("Request.BinaryRead"));
}

TEST_F(Intake, NeedsABoundary) {
  asp_.request->body = text_part("a", "1") + kEnd;
  for (const wchar_t* type : {L"multipart/form-data;", L"multipart/form-data; charset=utf-8",
                              L"multipart/form-data; boundary=", L"multipart/form-data; Boundary=B"}) {
    set_type(type);
    EXPECT_EQ(S_OK, take()) << type;
    EXPECT_FALSE(form_) << type;
  }
}

TEST_F(Intake, TakesTheBoundaryToTheEndOfTheType) {
  set_type(L"multipart/form-data; charset=utf-8;boundary=B");
  asp_.request->body = text_part("a", "1") + kEnd;
  EXPECT_EQ(S_OK, take());
  EXPECT_EQ(L"1", text(L"a"));
}

// The first of two, and the second belongs to it.
TEST_F(Intake, TakesTheFirstOfTwoBoundaries) {
  set_type(L"multipart/form-data; boundary=A; boundary=B");
  asp_.request->body = text_part("b", "1") + kEnd;
  EXPECT_EQ(E_FAIL, take());
  EXPECT_EQ(0, count());
  asp_.request->body = "--A; boundary=B\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n1\r\n--A; boundary=B--";
  EXPECT_EQ(S_OK, take());
  EXPECT_EQ(L"1", text(L"a"));
}

// Characters of the boundary are reduced to seven bits on the way.
TEST_F(Intake, ReducesTheBoundaryToSevenBits) {
  EXPECT_EQ(S_OK, upload(text_part("a", "1") + kEnd, L"\u00c2"));
  EXPECT_EQ(L"1", text(L"a"));
}

// The low seven bits of U+0080 are a NUL, which ends the boundary before its first character.
TEST_F(Intake, TakesABoundaryThatSevenBitsEmptyForNone) {
  for (const wchar_t* boundary : {L"\u0080", L"\u0080B", L"\u0100"}) {
    EXPECT_EQ(S_OK, upload("--\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n1\r\n----", boundary));
    EXPECT_FALSE(form_);
  }
  EXPECT_EQ(0, asp_.calls->count("Request.BinaryRead"));
}

TEST_F(Intake, PassesTheFailureOfTheRequestOn) {
  for (const char* name : {"Request.ServerVariables", "ServerVariables.Item", "Request.TotalBytes"}) {
    asp_.calls->fail(name, DISP_E_OVERFLOW);
    EXPECT_EQ(DISP_E_OVERFLOW, upload(kEnd)) << name;
    EXPECT_FALSE(form_);
    asp_.calls->succeed(name);
  }
}

TEST_F(Intake, PassesTheFailureOfTheResponseOn) {
  asp_.calls->fail("Response.CodePage", DISP_E_OVERFLOW);
  EXPECT_EQ(DISP_E_OVERFLOW, upload(text_part("a", "1") + kEnd));
  EXPECT_EQ(0, count());
}

TEST_F(Intake, AsksForAsManyBytesAsThereAre) {
  ASSERT_EQ(S_OK, upload(text_part("a", "1") + kEnd));
  EXPECT_EQ(1, asp_.calls->count("Request.BinaryRead"));
  EXPECT_EQ(VT_I4, asp_.request->read_count.vt);
  EXPECT_EQ(static_cast<LONG>(asp_.request->body.size()), asp_.request->read_count.lVal);
}

TEST_F(Intake, SaysThatABodyIsTooLarge) {
  asp_.request->total_bytes = 1048576;
  asp_.calls->fail("Request.BinaryRead", E_FAIL);
  EXPECT_EQ(E_FAIL, upload("x"));
  EXPECT_FALSE(form_);
  const ErrorText error = take_error();
  EXPECT_EQ(L"Mirt", error.source);
  EXPECT_EQ(L"Upload size exceeds maximum limit.[1048576B]", error.description);
}

TEST_F(Intake, SaysThatABodyCannotBeRead) {
  asp_.calls->fail("Request.BinaryRead", E_FAIL);
  asp_.request->read_before_failure = 1;
  EXPECT_EQ(E_FAIL, upload("x"));
  EXPECT_EQ(L"Upload failed.", take_error().description);
  asp_.calls->fail("Request.BinaryRead", E_ABORT);
  asp_.request->read_before_failure = 0;
  EXPECT_EQ(E_FAIL, upload("x"));
  const ErrorText error = take_error();
  EXPECT_EQ(L"Upload failed.", error.description);
  EXPECT_EQ(L"Mirt", error.source);
}

TEST_F(Intake, NeedsBytes) {
  for (const CComVariant& value : {null_value(), value_of(L"text"), value_of(std::vector<CComVariant>{value_of(1)})}) {
    asp_.request->body_value = value;
    EXPECT_EQ(S_OK, upload("x"));
    EXPECT_FALSE(form_);
  }
}

// All the bytes of a good body, but in two rows.
TEST_F(Intake, NeedsBytesInARow) {
  const std::string body = text_part("a", "12") + kEnd;
  ASSERT_EQ(0u, body.size() % 2);
  const SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(body.size() / 2), 0}, {2, 0}};
  CComVariant table;
  table.vt = VT_ARRAY | VT_UI1;
  table.parray = SafeArrayCreate(VT_UI1, 2, bounds);
  ASSERT_TRUE(table.parray);
  std::memcpy(table.parray->pvData, body.data(), body.size());
  asp_.request->body_value = table;
  EXPECT_EQ(S_OK, upload("x"));
  EXPECT_FALSE(form_);
}

TEST_F(Intake, ReadsWhatWasSentWhereMoreWasDeclared) {
  asp_.request->total_bytes = 1 << 30;
  EXPECT_EQ(E_FAIL, upload("--B\r\nConte"));
  EXPECT_TRUE(form_);
  EXPECT_EQ(L"", take_error().description) << "a malformed body raises no text";
}

TEST_F(Intake, ReadsTextInTheCodePageOfTheResponse) {
  asp_.response->code_page = 932;
  ASSERT_EQ(S_OK, upload(text_part("\x93\xFA", "\x96\x7B") + file_part("f", "\x93\xFA", "\x96\x7B") + kEnd));
  EXPECT_EQ(L"\u672c", text(L"\u65e5"));
  EXPECT_EQ(L"\u65e5", member(file(L"f").get(), &IFormFile::get_FileName));
  EXPECT_EQ("\x96\x7B", bytes_of(file(L"f").get()));
  asp_.response->code_page = 1252;
  ASSERT_EQ(S_OK, upload(text_part("a", "\xE9") + kEnd));
  EXPECT_EQ(L"\u00e9", text(L"a"));
}

// Escapes that select a character set are bytes and no text.
TEST_F(Intake, TakesAFileNameWithoutCharactersForNone) {
  asp_.response->code_page = 50220;
  ASSERT_EQ(S_OK, upload(file_part("f", "\x1B(B", "x") + file_part("g", "\x1B$B$\"\x1B(B", "x") + kEnd));
  EXPECT_EQ(L"x", text(L"f"));
  EXPECT_EQ(L"\u3042", member(file(L"g").get(), &IFormFile::get_FileName));
}

TEST_F(Intake, FailsInACodePageThatIsNone) {
  asp_.response->code_page = 4711;
  EXPECT_EQ(E_FAIL, upload(text_part("a", "1") + kEnd));
  EXPECT_EQ(0, count());
}

TEST_F(Intake, KeepsEveryByteOfAFile) {
  std::string bytes;
  for (int i = 0; i < 4 * 256; ++i) bytes += static_cast<char>(i * 7);
  ASSERT_EQ(S_OK, upload(file_part("f", "all.bin", bytes) + kEnd));
  EXPECT_EQ(bytes, bytes_of(file(L"f").get()));
}

// A part's lines may come in either order, and the type stays when the disposition comes after it.
TEST_F(Intake, KeepsATypeThatComesAheadOfTheDisposition) {
  const std::string disposition = "Content-Disposition: form-data; name=\"f\"; filename=\"a\"\r\n";
  const std::string type = "Content-Type: image/png\r\n";
  for (const std::string& lines : {type + disposition, disposition + type, type + disposition + disposition}) {
    ASSERT_EQ(S_OK, upload("--B\r\n" + lines + "\r\nbytes\r\n" + kEnd));
    const CComPtr<IFormFile> sent = file(L"f");
    ASSERT_TRUE(sent) << lines;
    EXPECT_EQ(L"image/png", member(sent.get(), &IFormFile::get_ContentType)) << lines;
    EXPECT_EQ("bytes", bytes_of(sent.get())) << lines;
  }
}

// What one part said of itself is forgotten at the next.
TEST_F(Intake, BeginsEveryPartWithoutTheLinesOfTheLast) {
  ASSERT_EQ(S_OK, upload(file_part("f", "a.bin", "x") + "--B\r\nContent-Disposition: form-data\r\n\r\ntext\r\n" +
                         "--B\r\nContent-Disposition: form-data; name=\"f\"; filename=\"b\"\r\n\r\ny\r\n" + kEnd));
  EXPECT_EQ(2, count());
  EXPECT_EQ(L"text", text(L""));
  EXPECT_EQ(L"", member(file(L"f", 2).get(), &IFormFile::get_ContentType));
}

TEST_F(Intake, NeedsARequestAndAResponse) {
  CComPtr<fake::asp::IRequestDictionary> form;
  EXPECT_EQ(E_FAIL, read_multipart_form(nullptr, asp_.response.get(), &form));
  EXPECT_EQ(E_FAIL, read_multipart_form(asp_.request.get(), nullptr, &form));
}

}  // namespace
}  // namespace test
