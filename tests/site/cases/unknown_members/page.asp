<%
// Members that no object has, and documented ones that this host does not offer: each use names the member.
var objects = {
  Request: Request,
  Response: Response,
  Server: Server,
  Session: Session,
  Application: Application,
  "Request.QueryString": Request.QueryString,
  "Request.Form('a')": Request.Form("a"),
  "Request.Cookies('a')": Request.Cookies("a"),
  "Response.Cookies('a')": Response.Cookies("a"),
  "Session.Contents": Session.Contents
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
  var object = objects[name];
  Response.Write(name + ": " + used(function () { return object.Nowhere; }) + "\n");
  var same = [
    used(function () { object.Nowhere(1); }),
    used(function () { object.Nowhere = 1; })
  ].every(function (message) { return message === used(function () { return object.Nowhere; }); });
  if (!same) Response.Write("  not so when called or set\n");
}
Response.Write(used(function () { Response.PICS("x"); }) + "\n");
Response.Write(used(function () { Response.LCID = 1031; }) + "\n");
Response.Write(used(function () { return Session.StaticObjects; }) + "\n");
%>
