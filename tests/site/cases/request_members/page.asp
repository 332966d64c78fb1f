<%
function show(name, value) { Response.Write(name + "=" + value + "\n"); }
function names(collection) {
  var found = [];
  for (var e = new Enumerator(collection); !e.atEnd(); e.moveNext()) found.push(e.item());
  return found.join();
}
show("joined", Request.QueryString("t"));
show("second", Request.QueryString("t")(2));
show("count", Request.QueryString("T").Count);
show("raw", Request.QueryString);
show("raw form", Request.Form);
show("names", names(Request.QueryString));
show("key", Request.QueryString.Key(3));
show("values", names(Request.Form("b")));
show("missing", Request.Form("none"));
show("missing count", Request.Form("none").Count);
show("order", Request("all") + " " + Request("f") + " " + Request("c") + " " + Request("request_method"));
show("nothing", Request("none"));
show("sub-key", Request.Cookies("user")("CITY"));
show("has keys", Request.Cookies("user").HasKeys + " " + Request.Cookies("c").HasKeys);
show("cookie", Request.Cookies("user"));
show("no cookie", "[" + Request.Cookies("none") + Request.Cookies("none")("key") + "]");
show("total", Request.TotalBytes);
var wanted = ["REQUEST_METHOD", "HTTP_METHOD", "QUERY_STRING", "CONTENT_LENGTH", "CONTENT_TYPE", "HTTP_CONTENT_TYPE",
  "HTTP_X_OWN", "http_host", "SERVER_NAME", "SERVER_PORT", "SCRIPT_NAME", "PATH_INFO", "URL", "HTTPS", "REMOTE_ADDR",
  "AUTH_USER", "LOGON_USER", "NONE"];
for (var i = 0; i < wanted.length; i++) show(wanted[i], Request.ServerVariables(wanted[i]));
show("ALL_RAW", /^X-Own: x\r$/m.test(Request.ServerVariables("ALL_RAW")));
show("ALL_HTTP", /^HTTP_X_OWN:x$/m.test(Request.ServerVariables("ALL_HTTP")));
show("translated", /request_members|case/.test(Request.ServerVariables("PATH_TRANSLATED")));
try { Request.QueryString("t")(3); } catch (error) { show("index", error.message); }
try { Request.BinaryRead(1); } catch (error) { show("bytes", error.message); }
%>
