<%@ Language="JavaScript" %>
<%
// Begins a sale and ends as it is told.
var till = Server.CreateObject("ADODB.Connection");
till.Open("Driver=SQLite3;Database=" + Server.MapPath("till.db"));
till.CommandTimeout = 1;
if (Request("end") == "count") {
  Response.Write(till.Execute("SELECT COUNT(*) FROM sale")(0));
  Response.End();
}
if (Request("end") == "new") {
  till.Execute("CREATE TABLE sale (n INTEGER)");
  Response.End();
}
if (Request("begin") == "words") till.Execute("BEGIN"); else till.BeginTrans();
till.Execute("INSERT INTO sale VALUES (1)");
switch (String(Request("end"))) {
  case "commit": till.CommitTrans(); break;
  case "end": Response.End();
  case "redirect": Response.Redirect("sale.asp?end=count");
  case "error": throw new Error("no change");
  case "time": for (;;);
  case "kept": Session("till") = till;
}
%>
