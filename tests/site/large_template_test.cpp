// Template files of a size that nobody writes, drawn by a page.
#include <gtest/gtest.h>

#include "site/program.h"
#include "support/temporary_folder.h"

namespace {

constexpr char kPage[] = R"(<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
mirt.TemplateFolder = Server.MapPath(".");
mirt.TemplateExt = ".html";
mirt.CacheTemplate = Request.QueryString("cached") == "1";
var v = "<mark>";
try { mirt.DrawTemplate("large"); } catch (e) { Response.Write(e.message.slice(0, 80)); }
%>)";

class LargeTemplate : public testing::TestWithParam<const char*> {
 protected:
  LargeTemplate() { folder_.write("page.asp", kPage); }

  std::string drawn(const std::string& text) const {
    folder_.write("large.html", text);
    test::Ran ran = test::run_program({"run", "page.asp", "--query", GetParam()}, folder_.path(), folder_.path());
    EXPECT_EQ(0, ran.status) << ran.error;
    return std::move(ran.output);
  }

  const test::TemporaryFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(EachMode, LargeTemplate, testing::Values("cached=0", "cached=1"),
                         [](const auto& one) { return one.index == 0 ? "Streamed" : "Cached"; });

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

TEST_P(LargeTemplate, OfFiftyMegabytesIsDrawnToTheLastByte) {
  const std::string half = repeated("<p>Zeile mit Umlaut: \xC3\xA4, und so weiter.</p>\n", 25'000'000 / 44);
  EXPECT_TRUE(drawn(half + "(#;v#)" + half) == half + "&lt;mark&gt;" + half);
}

TEST_P(LargeTemplate, OfAHundredThousandMarksIsDrawn) {
  EXPECT_TRUE(drawn(repeated("(#;v#)\n", 100'000)) == repeated("&lt;mark&gt;\n", 100'000));
}

TEST_P(LargeTemplate, NestedTenThousandDeepIsRefused) {
  EXPECT_EQ("Template text is nested too deeply.",
            drawn(repeated("(#%_InputDefaultP|v#|#<mark>#|#", 10'000) + repeated("#|#no#)", 10'000)));
  EXPECT_EQ("Invalid mark order.", drawn(repeated("(#;v|", 10'000)));
}

}  // namespace
