<%
// Tries to put ?text= into every part of the response's head.
var text = Request.QueryString("text")(1);
var tries = {
  name: function () { Response.AddHeader("X-" + text, "1"); },
  value: function () { Response.AddHeader("X-A", text); },
  status: function () { Response.Status = "200 " + text; },
  type: function () { Response.ContentType = "text/html" + text; },
  charset: function () { Response.Charset = text; },
  cache: function () { Response.CacheControl = text; },
  redirect: function () { Response.Redirect("/" + text); },
  cookie_path: function () { Response.Cookies("a").Path = "/" + text; },
  cookie_domain: function () { Response.Cookies("a").Domain = text; }
};
var refused = [];
for (var name in tries) {
  try {
    tries[name]();
  } catch (error) {
    refused.push(name);
  }
}
Response.Cookies("b" + text) = "c" + text;
Response.Write(refused.join());
%>
