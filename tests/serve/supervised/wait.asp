<%@ EnableSessionState="False" %>
<%
// Says that it has begun, waits until the folder has a file "go", and fails.
Response.Write("begun ");
Response.Flush();
var files = Server.CreateObject("Scripting.FileSystemObject");
while (!files.FileExists(Server.MapPath("go.txt")));
throw new Error("told to the author");
%>
