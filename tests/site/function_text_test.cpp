// A page cannot tell by its functions' texts that it was rewritten: they are what stands in its file, to the letter.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "site/program.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kNone = std::string::npos;
constexpr char kEnd = '\x01';  // of each text in a page's answer

// A function as it stands in a page, and what makes an expression of it.
struct Piece {
  std::string source;
  std::string before = {};
  std::string behind = {};
  std::string from = {};  // where it was found
};

// A page that shows the text of each.
std::string page_of(const std::vector<Piece>& pieces) {
  std::string page = "<% var all = []; %>";
  for (const Piece& piece : pieces) page += "<% all.push((" + piece.before + piece.source + piece.behind + ")); %>\n";
  return page + "<% all.forEach(function (f) { Response.Write(String(f) + '\\x01') }) %>";
}

std::string with_line_ends(std::string_view text, std::string_view line_end) {
  std::string result;
  for (const char c : text) c == '\n' ? result.append(line_end) : result.append(1, c);
  return result;
}

std::vector<std::string> texts_in(const std::string& output) {
  std::vector<std::string> texts;
  std::size_t begin = output.find_first_not_of("\r\n");  // what stands between the pieces
  for (std::size_t end = 0; begin != kNone && (end = output.find(kEnd, begin)) != kNone; begin = end + 1) {
    texts.push_back(output.substr(begin, end - begin));
  }
  return texts;
}

// In a world of its own, and in one that is kept.
void expect_shown(const std::vector<Piece>& pieces, std::string_view line_end) {
  const test::TemporaryFolder folder;
  folder.write("page.asp", with_line_ends(page_of(pieces), line_end));
  // A file that has just been changed is read each time.
  fs::last_write_time(folder.path("page.asp"), fs::file_time_type::clock::now() - std::chrono::minutes(1));
  for (const char* times : {"1", "6"}) {
    const test::Ran ran =
        test::run_program({"run", "page.asp", "--debug", "--times", times}, folder.path(), folder.path());
    ASSERT_EQ(0, ran.status) << ran.error;
    const std::vector<std::string> texts = texts_in(ran.output);
    ASSERT_EQ(pieces.size(), texts.size()) << ran.output;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      EXPECT_EQ(with_line_ends(pieces[i].source, line_end), texts[i]) << pieces[i].from << ", asked for " << times;
    }
  }
}

void expect_shown(const std::vector<Piece>& pieces) {
  for (const char* line_end : {"\n", "\r\n", "\r"}) expect_shown(pieces, line_end);
}

// --- functions of pages that are there

// One past what begins there, where that is a string, a comment, page text or a pattern; else one further.
std::size_t past(const std::string& text, std::size_t at) {
  const char c = text[at];
  const auto behind = [&](const char* end) { return std::min(text.find(end, at + 2), text.size() - 2) + 2; };
  if (text.compare(at, 2, "%>") == 0) return behind("<%");
  if (text.compare(at, 2, "/*") == 0) return behind("*/");
  if (text.compare(at, 2, "//") == 0) return std::min(text.find('\n', at), text.find("%>", at));
  const std::size_t word = at == 0 ? kNone : text.find_last_not_of(' ', at - 1);
  const bool is_pattern = c == '/' && word != kNone && std::string_view("(,=:[!&|?{};\n").find(text[word]) != kNone;
  if (c != '"' && c != '\'' && c != '`' && !is_pattern) return at + 1;
  for (std::size_t end = at + 1; end < text.size(); ++end) {
    if (text[end] == '\\')
      ++end;
    else if (text[end] == c)
      return end + 1;
  }
  return text.size();
}

// One past the bracket that closes the one there; kNone without one.
std::size_t past_bracket(const std::string& text, std::size_t at) {
  int depth = 0;
  while (at < text.size()) {
    const char c = text[at];
    if (c == '(' || c == '{' || c == '[') ++depth;
    if ((c == ')' || c == '}' || c == ']') && --depth == 0) return at + 1;
    at = past(text, at);
  }
  return kNone;
}

bool is_in_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$'; }

std::size_t find_word(std::string_view text, std::string_view word, std::size_t from = 0) {
  for (std::size_t at = text.find(word, from); at != kNone; at = text.find(word, at + 1)) {
    const std::size_t behind = at + word.size();
    const bool is_begin = at == 0 || !is_in_name(text[at - 1]);
    if (is_begin && (behind == text.size() || !is_in_name(text[behind]))) return at;
  }
  return kNone;
}

std::size_t past_all(std::string_view text, std::size_t at, std::string_view characters) {
  return std::min(text.find_first_not_of(characters, at), text.size());
}

// That of the parameters of the function whose word ends there; kNone where another thing follows.
std::size_t opening_bracket(std::string_view text, std::size_t at) {
  at = past_all(text, at, " *");
  while (at < text.size() && is_in_name(text[at])) ++at;
  at = past_all(text, at, " \n");
  return at < text.size() && text[at] == '(' ? at : kNone;
}

std::vector<Piece> functions_in(const fs::path& file) {
  constexpr std::string_view kWord = "function";
  constexpr std::string_view kAsync = "async ";
  const std::string text = test::read(file).value_or("");
  std::vector<Piece> found;
  for (std::size_t at = find_word(text, kWord); at != kNone; at = find_word(text, kWord, at + 1)) {
    const bool is_async = std::string_view(text).substr(0, at).ends_with(kAsync);
    const std::size_t begin = is_async ? at - kAsync.size() : at;
    const std::size_t bracket = opening_bracket(text, at + kWord.size());
    const std::size_t parameters = bracket == kNone ? kNone : past_bracket(text, bracket);
    const std::size_t body = parameters == kNone ? kNone : text.find_first_not_of(" \n", parameters);
    if (body == kNone || text[body] != '{') continue;
    const std::size_t end = past_bracket(text, body);
    if (end == kNone) continue;
    std::string source = text.substr(begin, end - begin);
    if (source.find("#include") == kNone && source.find('\r') == kNone) {
      found.push_back({.source = std::move(source), .from = file.string()});
    }
  }
  return found;
}

TEST(FunctionText, IsThatOfThePagesFileInPagesThatAreThere) {
  constexpr std::array kNames{"eval",  "Function",    "caller", "this",   "globalThis",
                              "super", "constructor", "Object", "Symbol", "Reflect"};
  const auto has_one = [&](const std::string& source) {
    return std::ranges::any_of(kNames, [&](const char* name) { return find_word(source, name) != kNone; });
  };
  std::vector<Piece> plain;  // in a page that may share a world
  std::vector<Piece> other;
  for (const char* folder : {EXAMPLES, SITE_CASES, DOCUMENTS}) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      const std::string kind = entry.path().extension().string();
      if (kind != ".asp" && kind != ".inc" && kind != ".md") continue;
      for (Piece& piece : functions_in(entry.path())) {
        std::vector<Piece>& list = has_one(piece.source) ? other : plain;
        list.push_back(std::move(piece));
      }
    }
  }
  EXPECT_GE(plain.size(), 200U);
  EXPECT_GE(other.size(), 10U);
  expect_shown(plain);
  expect_shown(other);
}

TEST(FunctionText, HasWhatIsIncludedInThePlaceOfItsTag) {
  const test::TemporaryFolder folder;
  folder.write("part.inc", "<i><% g() %></i>");
  folder.write("page.asp",
               "<script runat=\"server\">function f() {</script>text<!-- #include file=\"part.inc\" --><% }\n"
               "Response.Write(String(f)) %>");
  const test::Ran ran = test::run_program({"run", "page.asp"}, folder.path(), folder.path());
  EXPECT_EQ("function f() {%>text<i><% g() %></i><% }", ran.output) << ran.error;
}

// --- functions of anything that is rewritten, with blanks wherever there may be some

constexpr std::array kStatements{"Response~.~Write~(~a~)~;",
                                 "rs~.~Close~;",
                                 "v~=~rs~.~Name~;",
                                 "rs~.~EOF~(~)~;",
                                 "f('x')~.~EOF~(~)~;",
                                 "Session~(~'x'~)~=~1;",
                                 "a('x')~++~;",
                                 "page~.~SetView~(~a~,~b~)~;",
                                 "page~.~AddScript~(~this~)~;",
                                 "throw~ new~ Error~(~5~,~'t'~)~;",
                                 "while~(~0~)~{~}",
                                 "l :~for~(;;)~break~;",
                                 "do~{~}~while~(~0~)~;",
                                 "try~{~}~catch~(~e~)~{~e~}",
                                 "if~(~l~.~Item~)~;",
                                 "switch~(~rs.Kind~)~{~}",
                                 "return~ a~.~Item~;",
                                 "Server~.~HTMLEncode~(~a~)~;",
                                 "Server.URLEncode~(~a~)~;",
                                 "'\xE2\x80\xA8'~;~\"\xE2\x80\xA9\"~;~rs.Close~;",
                                 "`${~a~.~Item~}\n`~;",
                                 "v = x~=>~y~.~Item~;",
                                 "%> page text { <%",
                                 "%><%=~a.b~; \t\n;%><%",
                                 "%><% %><%",
                                 "f((a~%><%));",
                                 "%><%=~l.Item%> <b><%",
                                 "f(~a~.~b~,~c.d~)~;",
                                 "// a comment\n",
                                 "l.Item('a')~=~b~.~Item~;",
                                 "v = '\xF0\x9F\x98\x80'~;~rs~.~Close~;~v = '\xF0\x9F\x98\x80'.Item~;",
                                 "rs.EOF(/* , */)~;",
                                 "rs.EOF/* , */()~;"};
// "@" stands for the statements; what stands around the bars is not part of the text.
constexpr std::array kFunctions{"|function~ f~(~a~)~{@}|",
                                "|function~(~)~{@}|",
                                "|(~a,~b~)~=>~{@}|",
                                "|a~=>~a~.~Item|",
                                "|a => rs~.~EOF~(~)|",
                                "|async~ function~(a)~{@}|",
                                "|async a~=>~{@}|",
                                "|function~*~g~(~)~{@}|",
                                "({~|m~(~a~)~{@}|~}).m",
                                "({ |async~ *~m~()~{@}|~}).m",
                                "Object.getOwnPropertyDescriptor({ |get~ g~(~)~{@}|~}, 'g').get",
                                "|class~ C~{~m~()~{@}~}|",
                                "|class { static s = x => {@}; #p; }|",
                                "new (class { |m~()~{@}| })().m"};

class Writer {
 public:
  explicit Writer(unsigned seed) : random_(seed) {}

  Piece write() {
    std::string text;
    for (const char c : std::string_view(any_of(kFunctions))) {
      if (c != '@')
        text += blanked(c);
      else
        for (auto left = random_() % 3 + 1; left > 0; --left) add_statement(text);
    }
    std::istringstream parts(text);
    Piece piece{.source = {}};
    for (std::string* part : {&piece.before, &piece.source, &piece.behind}) std::getline(parts, *part, '|');
    return piece;
  }

 private:
  const char* any_of(const auto& list) { return list[random_() % list.size()]; }
  std::string blanked(char c) {
    static constexpr std::array kBlanks{"", "", "", " ", "\t", "/* c */", " /**/ "};
    return c == '~' ? any_of(kBlanks) : std::string(1, c);
  }
  void add_statement(std::string& text) {
    for (const char c : std::string_view(any_of(kStatements))) text += blanked(c);
  }

  std::mt19937 random_;
};

TEST(FunctionText, IsThatOfThePagesFileWhateverWasRewritten) {
  for (const unsigned seed : {1U, 2U, 3U}) {
    Writer writer(seed);
    std::vector<Piece> pieces;
    for (int i = 0; i < 200; ++i) pieces.push_back(writer.write());
    SCOPED_TRACE(seed);
    expect_shown(pieces);
  }
}

}  // namespace
