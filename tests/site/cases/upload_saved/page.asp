<%
// A file of an upload, saved under a name of the page's own and read again; and where it cannot be saved.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
function save(file, name, option) {
  try {
    file.Stream.SaveToFile(Server.MapPath(name), option);
    Response.Write(name + " saved\n");
  } catch (error) {
    Response.Write(name + error.message.slice(error.message.lastIndexOf(":")) + "\n");
  }
}
function On_StartProcess() {
  var file = mirt.Request("photo").Item(1);
  save(file, "saved.png");
  save(file, "saved.png", 1);
  save(file, "saved.png", 2);
  save(file, "missing/saved.png", 2);
  save(file, "saved.png/saved.png", 2);
  save(file, ".", 2);
  var saved = Server.CreateObject("ADODB.Stream");
  saved.Type = 1;
  saved.Open();
  saved.LoadFromFile(Server.MapPath("saved.png"));
  Response.Write(file.FileName2 + " " + saved.Size + " " + mirt.Base64Encode(saved.Read(), 0) + "\n");
}
function On_StartDraw() { return false; }
mirt.Process();
%>
