<%
// The fields of a request are names that a client chooses: only what the script itself has can be set by them.
var page = Server.CreateObject("Mirt");
class Base { set inherited(value) { this.seen = String(value); } }
class Form extends Base { toJSON() { return "own"; } }
var form = new Form();
form.plain = "";
var prototype = Object.getPrototypeOf(form);
page.Script = form;
function put(name) {
  try {
    page.PutIntoProp(name, false);
    Response.Write(name + " set\n");
  } catch (e) {
    Response.Write(name + " 0x" + (e.number >>> 0).toString(16) + " " + e.message + "\n");
  }
}
["plain", "inherited", "toString", "constructor", "__proto__", "hasOwnProperty", "valueOf", "toJSON", "absent", ""]
  .forEach(put);
Response.Write(form.plain + " " + form.seen + " " + (Object.getPrototypeOf(form) === prototype) + " " +
               (form.constructor === Form) + " " + form.toString() + " " + Object.keys(form) + "\n");
var text = Server.CreateObject("Mirt.TextTemplator");
text.Script = { o: { a: 1 }, toString: function () { return "mine"; } };
["(#o|a#)", "(#o|toString#)", "(#o|__proto__#)", "(#valueOf#)", "(#toString#)"].forEach(function (mark) {
  try { text.ProcessTemplate(mark + "|"); } catch (e) { text.Write("0x" + (e.number >>> 0).toString(16) + "|"); }
});
Response.Write(text.Flush());
%>
