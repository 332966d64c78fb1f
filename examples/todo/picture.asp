<%@ Language="JavaScript" CodePage="65001" %>
<!--#include file="database.inc"-->
<!--#include file="pictures.inc"-->
<%
// The picture of one item, for those who are known.
function answer() {
  var id = Number(Request.QueryString("id")) || 0;
  var item = Session("is_known") === true && database.rows("SELECT picture FROM items WHERE id = ?", [id])[0];
  if (!item || !item.picture) return false;
  var stream = Server.CreateObject("ADODB.Stream");
  stream.Type = 1;
  stream.Open();
  stream.LoadFromFile(pictures.path(item.picture));
  var bytes = stream.Read();
  Response.ContentType = pictures.kindOf(bytes).type;
  Response.CacheControl = "private";
  Response.BinaryWrite(bytes);
  return true;
}

Response.Clear();  // the line ends between the includes
if (!answer()) {
  Response.Status = "404 Not Found";
  Response.Write("There is no such picture.");
}
Response.End();  // a line end behind this would belong to the picture
%>
