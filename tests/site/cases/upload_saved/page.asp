<%
// A file of an upload, saved under a name of the page's own and read again.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
function On_StartProcess() {
  var file = mirt.Request("photo").Item(1);
  var path = Server.MapPath("saved.png");
  file.Stream.SaveToFile(path);
  try { file.Stream.SaveToFile(path, 1); } catch (error) { Response.Write("refused: it is there\n"); }
  file.Stream.SaveToFile(path, 2);
  var saved = Server.CreateObject("ADODB.Stream");
  saved.Type = 1;
  saved.Open();
  saved.LoadFromFile(path);
  Response.Write(file.FileName2 + " " + saved.Size + " " + mirt.Base64Encode(saved.Read(), 0) + "\n");
}
function On_StartDraw() { return false; }
mirt.Process();
%>
