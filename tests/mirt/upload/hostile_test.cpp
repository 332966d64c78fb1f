// Bodies that no browser sends, and recorded ones that real clients did (record_clients.mjs):
// tests/data/multipart has them with what must come of them beside.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <korlib/text.h>

#include "mirt/upload/upload_fixture.h"

namespace test {
namespace {

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::wstring wide(const std::string& bytes) {
  std::wstring text(utf8_utf32(bytes.data(), bytes.size(), nullptr, 0), L'\0');
  utf8_utf32(bytes.data(), bytes.size(), text.data(), text.size());
  return text;
}

// \r \n \t \0 \\ and \xNN stand for what they are in C.
std::string unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      plain += text[i];
      continue;
    }
    const char next = text.at(++i);
    if (next == 'x') {
      plain += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
      continue;
    }
    plain += next == 'r' ? '\r' : next == 'n' ? '\n' : next == 't' ? '\t' : next == '0' ? '\0' : next;
  }
  return plain;
}

// The columns of a line, which tabs separate.
std::vector<std::string> columns(const std::string& line) {
  std::vector<std::string> all;
  std::size_t start = 0;
  for (std::size_t tab = 0; tab != std::string::npos; start = tab + 1) {
    tab = line.find('\t', start);
    all.push_back(unescaped(line.substr(start, tab - start)));
  }
  return all;
}

class RecordedBody : public UploadTest {
 protected:
  void check(const std::filesystem::path& folder) {
    std::istringstream expected(contents(folder / "expected"));
    const std::string body = contents(folder / "body");
    for (std::string line; std::getline(expected, line);) {
      if (line.empty() || line[0] == '#') continue;
      const std::vector<std::string> row = columns(line);
      if (row[0] == "boundary") boundary_ = wide(row.at(1));
      if (row[0] == "result") check_result(body, row.at(1));
      if (row[0] == "count") {
        EXPECT_EQ(std::stoi(row.at(1)), count());
      }
      if (row[0] == "text") {
        EXPECT_EQ(wide(row.at(3)), text(wide(row.at(1)), std::stoi(row.at(2))));
      }
      if (row[0] == "file") check_file(row);
    }
  }

 private:
  void check_result(const std::string& body, const std::string& code) {
    EXPECT_EQ(static_cast<HRESULT>(std::stoul(code, nullptr, 16)), upload(body, boundary_));
    EXPECT_EQ(L"", take_error().description);
    ASSERT_TRUE(form_);
  }
  void check_file(const std::vector<std::string>& row) {
    const CComPtr<IFormFile> sent = file(wide(row.at(1)), std::stoi(row.at(2)));
    ASSERT_TRUE(sent) << row[1];
    EXPECT_EQ(wide(row.at(3)), member(sent.get(), &IFormFile::get_FileName));
    EXPECT_EQ(wide(row.at(4)), member(sent.get(), &IFormFile::get_FileName2));
    EXPECT_EQ(wide(row.at(5)), member(sent.get(), &IFormFile::get_ContentType));
    EXPECT_EQ(row.at(6), bytes_of(sent.get()));
  }

  std::wstring boundary_;
};

TEST_F(RecordedBody, GivesWhatIsExpected) {
  int folders = 0;
  for (const auto& folder : std::filesystem::directory_iterator(TEST_DATA "/multipart")) {
    SCOPED_TRACE(folder.path().filename().string());
    check(folder.path());
    ++folders;
  }
  EXPECT_GE(folders, 80);
}

class HostileBody : public UploadTest {};

TEST_F(HostileBody, MayEndAnywhere) {
  const std::string whole = text_part("a", "one") + file_part("f", "x", "bytes") + text_part("b", "two") + "--B--";
  const std::size_t behind_first = text_part("a", "one").size() + 5;  // its delimiter and line end
  const std::size_t behind_second = behind_first + file_part("f", "x", "bytes").size();
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    EXPECT_EQ(E_FAIL, upload(whole.substr(0, cut))) << cut;
    EXPECT_EQ((cut >= behind_first) + (cut >= behind_second), count()) << cut;
  }
  EXPECT_EQ(S_OK, upload(whole));
  EXPECT_EQ(3, count());
}

TEST_F(HostileBody, MayHoldValuesOfEverySize) {
  for (std::size_t size = 0; size <= 5120; ++size) {
    const std::string value(size, 'v');
    ASSERT_EQ(S_OK, upload(text_part("t", value) + kEnd));
    ASSERT_EQ(std::wstring(size, L'v'), text(L"t")) << size;
    ASSERT_EQ(S_OK, upload(file_part("f", "f", value) + kEnd));
    ASSERT_EQ(value, bytes_of(file(L"f").get())) << size;
  }
}

TEST_F(HostileBody, MayHaveALongHeaderLine) {
  const std::string filler(std::size_t{64} * 1024, 'x');
  ASSERT_EQ(S_OK, upload("--B\r\nX: " + filler + "\r\n" + text_part("a", "1").substr(5) + kEnd));
  EXPECT_EQ(L"1", text(L"a"));
}

TEST_F(HostileBody, MayHaveALongName) {
  const std::string name(100'000, 'n');
  ASSERT_EQ(S_OK, upload(text_part(name, "1") + file_part("f", name, "x") + kEnd));
  EXPECT_EQ(L"1", text(std::wstring(100'000, L'n')));
  EXPECT_EQ(100'000u, member(file(L"f").get(), &IFormFile::get_FileName).size());
}

TEST_F(HostileBody, MayHaveManyHeaders) {
  for (const char* line : {"X: y\r\n", "no colon\r\n", "X: y; name=b\r\n", "Content-Type: t\r\n"}) {
    std::string headers;
    for (int i = 0; i < 100'000; ++i) headers += line;
    ASSERT_EQ(S_OK, upload("--B\r\nContent-Disposition: form-data; name=\"a\"\r\n" + headers + "\r\n1\r\n" + kEnd));
    EXPECT_EQ(L"1", text(L"a")) << line;
  }
}

TEST_F(HostileBody, MayHaveManyParameters) {
  std::string line = "Content-Disposition: form-data; name=\"a\"";
  for (int i = 0; i < 100'000; ++i) line += ";p" + std::to_string(i) + "=";
  ASSERT_EQ(S_OK, upload("--B\r\n" + line + "\r\n\r\n1\r\n" + kEnd));
  EXPECT_EQ(L"1", text(L"a"));
}

TEST_F(HostileBody, MayHaveManyParts) {
  std::string body;
  for (int i = 0; i < 100'000; ++i) body += text_part("n" + std::to_string(i % 1000), std::to_string(i));
  ASSERT_EQ(S_OK, upload(body + kEnd));
  EXPECT_EQ(1000, count());
  EXPECT_EQ(L"99999", text(L"n999", 100));
}

TEST_F(HostileBody, MayBeAllDashes) {
  EXPECT_EQ(E_FAIL, upload(std::string(1'000'000, '-')));
  EXPECT_EQ(E_FAIL, upload(std::string(1'000'000, '-'), std::wstring(200, L'-') + L"x"));
  EXPECT_EQ(0, count());
}

}  // namespace
}  // namespace test
