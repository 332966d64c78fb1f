<%
// A list's Item is its whole value without an index, as a property and with parentheses.
var page = Server.CreateObject("Mirt");
page.Script = this;
function told(name, list) {
  var item = list.Item;
  var called = list.Item();
  Response.Write(name + ": " + item + "; " + called + "; " + list.Item + "; " + (list.Item == String(called)) + "; " +
                 list.item(1) + "; " + Server.HTMLEncode(list.Item) + "\n");
}
told("QueryString", Request.QueryString("a"));
told("Cookies", Request.Cookies("c"));
var q = Request.QueryString;
Response.Write((q("none").Item || "none") + "; " + q("a").Item.length + "; " + q("a").Item.split(", ")[1] + "; " + (!q("a").Item) +
               "; " + [q("a").Item] + "; " + JSON.stringify({ a: q("a").Item }) + "; " + (q("a").Item === "1, 2") + "\n");
Response.Write(Request.QueryString.Item + "|" + Request.QueryString.Item() + "\n");
function On_StartProcess() { told("multipart", page.Request("b")); return false; }
page.Process();
%>
