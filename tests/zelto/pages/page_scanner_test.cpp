#include "pages/page_scanner.h"

#include <gtest/gtest.h>

namespace zelto::pages {
namespace {

// Pieces as text: L[…] literal, C[…] code, E[…] expression, D[…] directive; F[…] and V[…] includes, S[…] and R[…]
// script files, from the file's folder and from the root.
std::wstring cut(std::wstring_view text) {
  std::wstring shown;
  for (const Piece& piece : scan_page(text)) {
    shown += (piece.is_virtual ? L"LCEDVR" : L"LCEDFS")[piece.kind];
    shown.append(L"[").append(piece.text).append(L"]");
    EXPECT_EQ(piece.text, text.substr(piece.offset, piece.text.size()));
  }
  return shown;
}

struct Fault {
  std::string what;
  std::size_t offset;
};
Fault fault_of(std::wstring_view text) {
  try {
    scan_page(text);
  } catch (const ScanFault& fault) {
    return {fault.what, fault.offset};
  }
  return {"none", 0};
}

TEST(PageScanner, CutsPagesIntoPieces) {
  const struct {
    const wchar_t* page;
    const wchar_t* pieces;
  } rows[] = {
      {L"", L""},
      {L"plain", L"L[plain]"},
      {L"<", L"L[<]"},
      {L"a <b> c", L"L[a <b> c]"},
      {L"<% x %>", L"C[ x ]"},
      {L"a<%x%>b", L"L[a]C[x]L[b]"},
      {L"<%%>", L"C[]"},
      {L"<%=x%>", L"E[x]"},
      {L"<% =x%>", L"C[ =x]"},
      {L"<%@ Language=JScript %>\n", L"D[ Language=JScript ]L[\n]"},
      {L"<% @ Language=JScript %>", L"D[ Language=JScript ]"},
      {L"<%\r\n\t@Language=JScript@%>", L"D[Language=JScript@]"},
      {L"<%  %>", L"C[  ]"},
      {L"<% x @ %>", L"C[ x @ ]"},
      {L"<%a%><%=b%>", L"C[a]E[b]"},
      {L"%><%a%>%>", L"L[%>]C[a]L[%>]"},
      // The first "%>" ends the code, wherever it stands.
      {L"<% \"%>\" %>", L"C[ \"]L[\" %>]"},
      {L"<% // x %>y", L"C[ // x ]L[y]"},
      {L"<!-- a <% b %> c -->", L"L[<!-- a ]C[ b ]L[ c -->]"},
      {L"<!--#include file=\"a.inc\"-->", L"F[a.inc]"},
      {L"<!-- #INCLUDE\tVirtual = '/a b.inc' -->x", L"V[/a b.inc]L[x]"},
      {L"<!--#include file=a.inc-->", L"F[a.inc]"},
      {L"<!--#include file=a.inc --><!--#include virtual=/b-->", L"F[a.inc]V[/b]"},
      {L"<!-- #included file=\"a\" -->", L"L[<!-- #included file=\"a\" -->]"},
      {L"<!-- include file=\"a\" -->", L"L[<!-- include file=\"a\" -->]"},
      {L"<%<!--#include file=\"a\"-->%>", L"C[<!--#include file=\"a\"-->]"},
      {L"<script runat=\"server\">x</script>y", L"C[x]L[y]"},
      {L"a<SCRIPT Language='JScript' RUNAT=Server>x</SCRIPT >y", L"L[a]C[x]L[y]"},
      {L"<script runat=server>if (a </b) x</script>", L"C[if (a </b) x]"},
      {L"<script runat=server>x</script", L"C[x]"},
      {L"<script>x <%=y%></script>", L"L[<script>x ]E[y]L[</script>]"},
      {L"a<script language=JScript runat=server src=\"a b.js\"></script>b", L"L[a]S[a b.js]L[b]"},
      {L"<script src=/lib/a.js runat=server>\r\n </script><script src='\\\\a.js' runat=server></script>",
       L"R[/lib/a.js]R[\\\\a.js]"},
      {L"<script src=a.js></script>", L"L[<script src=a.js></script>]"},
      {L"<script runat=client>x</script>", L"L[<script runat=client>x</script>]"},
      {L"<scripts runat=server>", L"L[<scripts runat=server>]"},
      {L"<script runat=server", L"L[<script runat=server]"},
      {L"<object id=x></object>", L"L[<object id=x></object>]"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.pieces, cut(row.page));
}

TEST(PageScanner, SaysWhereItCannotCut) {
  const std::string include = "An include is written <!-- #include file=\"\xE2\x80\xA6\" -->.";
  const struct {
    const wchar_t* page;
    std::string what;
    std::size_t offset;
  } rows[] = {
      {L"ab<% x", "This \"<%\" is not closed with \"%>\".", 2},
      {L"<%", "This \"<%\" is not closed with \"%>\".", 0},
      {L"<%a%> <%=", "This \"<%\" is not closed with \"%>\".", 6},
      {L"x<!--#include file=\"a\"", include, 1},
      {L"<!--#include file=\"a -->", include, 0},
      {L"<!--#include file=\"\"-->", include, 0},
      {L"<!--#include file -->", include, 0},
      {L"<!--#include file=-->", include, 0},
      {L"<!--#include \"a\"-->", "An include names its file as file=\"\xE2\x80\xA6\" or virtual=\"\xE2\x80\xA6\".", 0},
      {L"ab<script runat=server>x", "This <script runat=\"server\"> is not closed.", 2},
      {L"a<script runat=server src=a.js> x</script>",
       "A <script runat=\"server\"> with a src holds no script of its own: use a second one.", 1},
      {L"<script runat=server src=''></script>", "<script runat=\"server\"> names no file in its src.", 0},
      {L"<script runat=server src></script>", "<script runat=\"server\"> names no file in its src.", 0},
      {L"a<script runat=server src=a.js>", "This <script runat=\"server\"> is not closed.", 1},
      {L"<script runat=server src=a.vbs language=PerlScript></script>",
       "This host runs pages in JavaScript and VBScript: <script language=\"PerlScript\"> cannot be run.", 0},
      {L"<script runat=server language=PerlScript></script>",
       "This host runs pages in JavaScript and VBScript: <script language=\"PerlScript\"> cannot be run.", 0},
      {L"\n<object runat=server progid=x></object>",
       "<object runat=\"server\"> is not known here: use Server.CreateObject.", 1},
  };
  for (const auto& row : rows) {
    const Fault fault = fault_of(row.page);
    EXPECT_EQ(row.what, fault.what);
    EXPECT_EQ(row.offset, fault.offset) << row.what;
  }
}

TEST(PageScanner, ReadsEveryPrefixOfAPageOrSaysWhyNot) {
  const std::wstring page =
      L"<%@ Language=JScript %>a<% b %><%= c %><!--#include file=\"d\"--><script runat=server>e</script>f";
  for (std::size_t length = 0; length <= page.size(); ++length) {
    try {
      cut(page.substr(0, length));
    } catch (const ScanFault& fault) {
      EXPECT_LT(fault.offset, length);
    }
  }
}

// Some of these would take minutes if what one beginning looks at were looked at again for the next.
TEST(PageScanner, ReadsPagesOfBeginningsOnce) {
  for (const std::wstring_view part :
       {L"<script ", L"<script a=\"", L"<script a='\" b=\"", L"<script runat=server ", L"<script runat=x ",
        L"<object\n", L"<script =", L"<", L"<!--", L"<!-- #", L"<% %>", L"<!-- #include file=a-->", L"</script"}) {
    for (const std::wstring_view end : {L"", L">", L"\">", L"'"}) {
      std::wstring page;
      while (page.size() < 1'000'000) page += part;
      page += end;
      try {
        std::size_t size = 0;
        for (const Piece& piece : scan_page(page)) size += piece.text.size();
        EXPECT_LE(size, page.size());
      } catch (const ScanFault& fault) {
        EXPECT_EQ(0u, fault.offset);
      }
    }
  }
}

TEST(LineCounter, CountsEveryKindOfLineEnd) {
  LineCounter lines(L"a\r\nb\nc\rd\r\r\ne");
  const struct {
    std::size_t offset;
    int line;
    int column;
  } rows[] = {{0, 1, 0}, {1, 1, 1}, {3, 2, 0}, {5, 3, 0}, {7, 4, 0}, {9, 5, 0}, {11, 6, 0}, {99, 6, 1}};
  for (const auto& row : rows) {
    lines.move_to(row.offset);
    EXPECT_EQ(row.line, lines.line()) << row.offset;
    EXPECT_EQ(row.column, lines.column()) << row.offset;
  }
}

}  // namespace
}  // namespace zelto::pages
