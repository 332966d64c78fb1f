#include "pages/directive.h"

#include <gtest/gtest.h>

namespace zelto::pages {
namespace {

std::string fault_of(std::wstring_view text) {
  try {
    read_directive(text);
  } catch (const std::string& what) {
    return what;
  }
  return "none";
}

TEST(Directive, KnowsItsNamesInAnyLetterCaseQuotedOrNot) {
  for (const wchar_t* text : {L" Language=\"JavaScript\" CodePage=\"932\" EnableSessionState=\"False\" LCID=\"1041\" ",
                              L"LANGUAGE='jscript' codepage='932' enablesessionstate='FALSE' lcid='1041'",
                              L"language=ECMAScript codepage=932 Lcid=1041\nENABLESESSIONSTATE=false",
                              L"Language=LiveScript codepage=932 lcid=1041 EnableSessionState=False@",
                              L" codepage = 932 EnableSessionState = false lcid = 1041 transaction=required @"}) {
    const Directive directive = read_directive(text);
    EXPECT_EQ(932, directive.code_page);
    EXPECT_EQ(1041, directive.lcid);
    EXPECT_FALSE(directive.uses_session);
  }
}

TEST(Directive, LeavesDefaultsWithoutAWord) {
  const Directive directive = read_directive(L" \t\r\n");
  EXPECT_FALSE(directive.code_page);
  EXPECT_FALSE(directive.lcid);
  EXPECT_TRUE(directive.uses_session);
  EXPECT_TRUE(read_directive(L"EnableSessionState=True").uses_session);
}

TEST(Directive, SaysWhatItCannotObey) {
  const struct {
    const wchar_t* text;
    const char* fault;
  } rows[] = {
      {L"Language=PerlScript",
       "This host runs pages in JavaScript and VBScript: Language=\"PerlScript\" cannot be run."},
      {L"Language", "This host runs pages in JavaScript and VBScript: Language=\"\" cannot be run."},
      {L"CodePage=12", "CodePage=\"12\" is not a code page that this host knows; 65001 is UTF-8."},
      {L"CodePage=utf-8", "CodePage=\"utf-8\" is not a code page that this host knows; 65001 is UTF-8."},
      {L"CodePage=99999999999", "CodePage=\"99999999999\" is not a code page that this host knows; 65001 is UTF-8."},
      {L"LCID=12345", "LCID=\"12345\" is not a locale that this host knows; 2048 is the neutral form."},
      {L"LCID=de-DE", "LCID=\"de-DE\" is not a locale that this host knows; 2048 is the neutral form."},
      {L"EnableSessionState=1", "EnableSessionState=\"1\" is neither True nor False."},
      {L"Debug=\"true\"",
       "\"Debug\" is not a directive: Language, CodePage, EnableSessionState, LCID and Transaction are."},
      {L"Language=JScript @ @",
       "\"@\" is not a directive: Language, CodePage, EnableSessionState, LCID and Transaction are."},
      {L"= 3", "A directive is written <%@ Name=\"value\" \xE2\x80\xA6 %>."},
      {L"Language=\"JScript", "A directive is written <%@ Name=\"value\" \xE2\x80\xA6 %>."},
  };
  for (const auto& row : rows) EXPECT_EQ(row.fault, fault_of(row.text));
}

TEST(Directive, IsFoundInBytesOfAnyCodePage) {
  EXPECT_EQ(932, code_page_of_source("<%@ CodePage=932 %>\x83\x65"));
  EXPECT_EQ(1252, code_page_of_source("\xFF<%@CodePage=\"1252\"%>"));
  EXPECT_EQ(932, code_page_of_source("<% \r\n\t@ CodePage=932 @%>\x83\x65"));
  EXPECT_EQ(932, code_page_of_source("a<% x %><%= y %><% @CodePage=932%>"));
  EXPECT_EQ(65001, code_page_of_source("<%@ Language=JScript %><%@ CodePage=932 %>"));
  EXPECT_EQ(65001, code_page_of_source("text"));
  EXPECT_EQ(65001, code_page_of_source("<% "));
  EXPECT_EQ(65001, code_page_of_source("<%@ CodePage=932"));
  EXPECT_EQ(65001, code_page_of_source("<%@ CodePage=7 %>"));
  EXPECT_EQ(65001, code_page_of_source(""));
}

}  // namespace
}  // namespace zelto::pages
