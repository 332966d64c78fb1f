<%@ Language="JavaScript" CodePage="65001" %>
<!--#include file="page.inc"-->
<%
// Counts visits: in the session's bag those of one visitor, in the application those of all.
var title = "Visits";

var page = newPage(this);
page.Name = "visits";
processPage(page);

function On_FirstAccess(page) { page.Bag.Item("visits") = 0; }

function OnCommand_(page) {
  page.Bag.Item("visits") = page.Bag.Item("visits") + 1;
  Application.Lock();
  Application("visits") = (Application("visits") || 0) + 1;
  Application.Unlock();
}

// Forgets this visitor's count; the next request starts anew.
function OnCommand_Forget(page) { page.Abandon(); }

function On_StartDraw(page) { page.Include.Item("Content") = page.Command == "Forget" ? "forgotten" : "visits"; }
%>
