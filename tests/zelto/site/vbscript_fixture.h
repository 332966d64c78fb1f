// Tables of VBScript: an expression or a script, and what comes of it.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "zelto/site/page_run_fixture.h"

namespace test {

struct VbScriptRow {
  const char* script;  // or an expression
  const char* answer;
};

class VbScriptFixture : public PageRunFixture {
 protected:
  // Of a page with nothing else.
  std::string body_of(const std::string& script) {
    return run("<%@ Language=\"VBScript\" LCID=\"1033\" %><%\n" + script + "\n%>", "").body;
  }
  void expect_pages(std::span<const VbScriptRow> rows) {
    for (const VbScriptRow& row : rows) EXPECT_EQ(row.answer, body_of(row.script)) << row.script;
  }

  // Expressions with the kind and text of their values, "Null", or "error 13", all in one page. `v` is Empty in each.
  void expect_values(std::span<const VbScriptRow> rows, const std::string& declared = {}) {
    std::string script = declared + kTell;
    for (const VbScriptRow& row : rows) {
      const std::string name = "T" + std::to_string(&row - rows.data());
      script += "Sub " + name + "\nDim v\nOn Error Resume Next\nv = " + row.script +
                "\nTell v\nOn Error GoTo 0\nEnd Sub\n" + name + "\n";
    }
    const std::vector<std::string> told = parts_of(body_of(script));
    ASSERT_EQ(rows.size(), told.size()) << (log.empty() ? told.back() : log.back());
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].answer, told[i]) << rows[i].script;
  }

 private:
  static constexpr const char* kTell = R"vb(
Sub Tell(v)
  If Err.Number <> 0 Then
    Response.Write "error " & Err.Number
  ElseIf IsNull(v) Then
    Response.Write "Null"
  ElseIf IsObject(v) Or IsArray(v) Then
    Response.Write TypeName(v)
  Else
    Response.Write TypeName(v) & " " & v
  End If
  Response.Write Chr(1)
End Sub
)vb";

  static std::vector<std::string> parts_of(std::string_view text) {
    std::vector<std::string> parts;
    for (std::size_t end = text.find('\1'); end != text.npos; end = text.find('\1')) {
      parts.emplace_back(text.substr(0, end));
      text.remove_prefix(end + 1);
    }
    if (!text.empty() || parts.empty()) parts.emplace_back(text);  // a page that failed
    return parts;
  }
};

}  // namespace test
