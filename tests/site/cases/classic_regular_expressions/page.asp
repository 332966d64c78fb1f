<%@ Language="JScript" %>
<%
function line(text) { Response.Write(text + "\n"); }

// Of an old page's validation include.
function isEmail(text) {
  var re = new ActiveXObject("VBScript.RegExp");
  re.Pattern = "^[\\w.+-]+@[\\w-]+(\\.[\\w-]+)+$";
  return re.Test(text);
}

var re = Server.CreateObject("VBScript.RegExp");
line("[" + re.Pattern + "] " + re.Global + " " + re.IgnoreCase + " " + re.MultiLine);
re.Pattern = "(\\w+)@(\\w+)\\.com";
re.IgnoreCase = true;
re.global = 1;
var s = "Write to ann@example.com or BOB@TEST.COM, not to carl@example.org";
line(re.Test(s) + " " + re.test("nobody"));

var matches = re.Execute(s);
for (var i = 0; i < matches.Count; i++) {
  var m = matches(i), parts = m.SubMatches;
  line(m.FirstIndex + " " + m.Length + " " + m.Value + " " + parts(0) + " at " + parts.Item(1) + " " + parts.Count);
}
for (var e = new Enumerator(matches); !e.atEnd(); e.moveNext()) line(e.item() + " " + e.item().SubMatches(1));
for (e = new Enumerator(matches.Item(1).SubMatches); !e.atEnd(); e.moveNext()) line(e.item());
line(re.Execute("nobody").Count + " " + matches(0) + " " + matches.Item(1).value);

line(re.Replace(s, "<$1 of $2>"));
line(re.Replace(s, function (all, who, where, at) {
  Response.Write("{" + at + "}");
  return who.toUpperCase();
}));
re.Global = false;
line(re.Replace(s, "$&$$"));
line(isEmail("a.b@c.de") + " " + isEmail("a@b") + " " + isEmail(undefined));

re = Server.CreateObject("vbscript.regexp");
re.Multiline = true;
re.Pattern = "^b.*$";
line(re.Execute("a\nbcd\ne")(0).FirstIndex);
re.Pattern = "(a)|(b)";
line("[" + re.Execute("b")(0).SubMatches(0) + "][" + re.Execute("b")(0).SubMatches(1) + "]");

function failure(action) {
  try {
    action();
    return "none";
  } catch (error) {
    return (error.number & 0xFFFF) + " " + error.description;
  }
}
line(failure(function () { re.Pattern = "(unclosed"; re.Test("x"); }));
line(failure(function () { re.Pattern = "(?<=a)b"; re.Execute("x"); }));
line(failure(function () { matches(2); }));
line(failure(function () { re.Pattern = "x"; re.Replace("x", function () { throw new Error(7, "mine"); }); }));
%>
