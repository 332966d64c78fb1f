<%
// Members that no object has, and documented ones that this host does not offer: reading gives undefined, as pages
// that test for features expect; calling or setting one names the object, the member and the nearest one there is.
var objects = {
  Request: [Request, "Formm"],
  Response: [Response, "Wriet"],
  Server: [Server, "Mappath2"],
  Session: [Session, "Abandom"],
  Application: [Application, "Unlok"],
  "Request.QueryString": [Request.QueryString, "Cuont"],
  "Request.Form('a')": [Request.Form("a"), "Itm"],
  "Request.Cookies('a')": [Request.Cookies("a"), "HasKey"],
  "Response.Cookies('a')": [Response.Cookies("a"), "Expire"],
  "Session.Contents": [Session.Contents, "RemovAll"],
  "ADODB.Connection": [Server.CreateObject("ADODB.Connection"), "Excute"],
  "ADODB.Recordset": [Server.CreateObject("ADODB.Recordset"), "MoveNex"],
  "ADODB.Stream": [Server.CreateObject("ADODB.Stream"), "ReadTxt"],
  "Scripting.Dictionary": [Server.CreateObject("Scripting.Dictionary"), "Exist"],
  Mirt: [Server.CreateObject("Mirt"), "Proces"]
};
function used(use) {
  try {
    use();
    return "done";
  } catch (error) {
    return error.message;
  }
}
for (var name in objects) {
  var object = objects[name][0], member = objects[name][1];
  Response.Write(name + ": " + typeof object.Nowhere + ", " + used(function () { object[member] = 1; }) + "\n");
  var said = used(function () { object.Nowhere = 1; });
  var same = [
    used(function () { object.Nowhere(1); }),
    used(function () { object.Nowhere(); }),
    used(function () { object.Nowhere; }),
    used(function () { object.Nowhere.x; })
  ].every(function (message) { return message === said; });
  Response.Write("  " + said + (same ? "" : "  not so when called") + "\n");
}
Response.Write(typeof Request("q").length + " " + (Response.Foo ? "has it" : "has it not") + "\n");
%>
