<%@ Language="JavaScript" CodePage="65001" EnableSessionState="False" %>
<!-- #include file="store.inc" -->
<%
// One picture: shown, or saved under the name it came with (RFC 6266, RFC 8187).
var picture = store.find(String(Request.QueryString("id")));
if (!picture) {
  Response.Status = "404 Not Found";
  Response.Write("There is no such picture.");
  Response.End();
}
var stream = Server.CreateObject("ADODB.Stream");
stream.Type = 1;
stream.Open();
stream.LoadFromFile(store.folder + "/" + picture.file);
Response.ContentType = picture.type;
Response.AddHeader("Content-Disposition",
  (Request.QueryString("save").Count ? "attachment" : "inline") + "; filename*=UTF-8''" +
  encodeURIComponent(picture.name).replace(/['()*]/g, function (c) { return "%" + c.charCodeAt(0).toString(16); }));
Response.BinaryWrite(stream.Read(-1));
%>
