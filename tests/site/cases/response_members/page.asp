<%
function refused(name, use) {
  try {
    use();
    Response.Write(name + ": done\n");
  } catch (error) {
    Response.Write(name + ": " + error.message + "\n");
  }
}
Response.Write("dropped");
Response.Clear();
Response.Status = "201 Made Here";
Response.ContentType = "text/plain";
Response.Charset = "utf-8";
Response.CacheControl = "no-cache";
Response.AddHeader("X-A", "1");
Response.AddHeader("x-a", "2");
refused("name", function () { Response.AddHeader("X:A", "1"); });
refused("status", function () { Response.Status = "OK"; });
refused("code page", function () { Response.CodePage = 1; });
Response.Buffer = false;
refused("clear", function () { Response.Clear(); });
refused("flush", function () { Response.Flush(); });
refused("buffer", function () { Response.Buffer = true; });
refused("late header", function () { Response.AddHeader("X-B", "1"); });
refused("late status", function () { Response.Status = "200 OK"; });
refused("late type", function () { Response.ContentType = "text/html"; });
refused("late redirect", function () { Response.Redirect("/"); });
refused("late cookie", function () { Response.Cookies("a") = "b"; });
Response.Write(Response.IsClientConnected + " " + Response.Buffer + " " + Response.Status + "\n");
Response.BinaryWrite(new Uint8Array([98, 121, 116, 101, 115, 10]));
Response.End();
Response.Write("never");
%>
