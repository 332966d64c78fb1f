<%@ Language="JavaScript" CodePage="65001" EnableSessionState="False" %>
<!-- #include file="store.inc" -->
<%
// One picture: shown, or saved under the name it came with (RFC 6266, RFC 8187).

// The name without its folders and control characters, with the extension of what the file is.
function fileName(name, file) {
  var last = name.split(/[\/\\]/).pop().replace(/[\u0000-\u001F\u007F]/g, "") || "picture";
  if (!/\.(png|jpe?g|gif)$/i.test(last)) last += /\.\w+$/.exec(file);
  return encodeURIComponent(last).replace(/['()*]/g, function (c) {
    return "%" + c.charCodeAt(0).toString(16).toUpperCase();
  });
}

var picture = store.find(String(Request.QueryString("id")));
var stream = picture && store.open(picture);
Response.Clear();
if (stream) {
  var how = Request.QueryString("save").Count ? "attachment" : "inline";
  Response.ContentType = picture.type;
  Response.AddHeader("Content-Disposition", how + "; filename*=UTF-8''" + fileName(picture.name, picture.file));
  // A piece at a time: a large picture need not lie in memory more than once.
  for (;;) {
    Response.BinaryWrite(stream.Read(1048576));
    if (stream.EOS) break;
    Response.Flush();
  }
} else {
  Response.Status = "404 Not Found";
  Response.ContentType = "text/plain";
  Response.Write("There is no such picture.");
}
Response.End();
%>
