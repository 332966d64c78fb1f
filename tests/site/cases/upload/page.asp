<%
var mirt = Server.CreateObject("Mirt");
mirt.Script = this;
function On_StartProcess(m) {
  Response.Write(m.Request("text") + "|" + m.Request("tags").Count + "|" + m.Request("tags")(2) + "|");
  var file = m.Request("file").Item(1);
  Response.Write(file.FileName + "|" + file.FileName2 + "|" + file.ContentType + "|" + file.Stream.Size);
}
mirt.Process();
%>
