<%@ Language="JavaScript" CodePage="65001" %>
<!-- #include file="store.inc" -->
<%
// The list of pictures, the upload of new ones and the removal of old ones. A post ends in a redirect;
// what there is to say about it waits in the session until the list is drawn.

var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.Name = "gallery";
mirt.TemplateFolder = Server.MapPath("templates");
mirt.TemplateExt = ".html";
mirt.DefaultTemplate = "page";
mirt.NullIsEmpty = true;

var hasRequest = false;

// Text for a message, which is itself a template: what a visitor typed must not become a mark.
function literal(text) {
  return mirt.HTMLEncode(text).replace(/\^/g, "^^").replace(/\(#/g, "^(#").replace(/#\)/g, "^#)");
}

function strong(text) { return "<strong>" + literal(text) + "</strong>"; }

function notices() { return JSON.parse(Session("notices") || "[]"); }

// `kind` is "done" or "refused".
function say(kind, html) {
  Session("notices") = JSON.stringify(notices().concat({ kind: kind, html: html }));
}

function values(name) {
  var list = mirt.Request(name);
  return list ? mirt.ToArray(list) : [];
}

function texts(name) {
  return values(name).filter(function (value) { return typeof value === "string"; });
}

// A file without a name is a field without a file, and arrives as an empty text.
function OnCommand_Upload() {
  var files = values("pictures").filter(function (file) { return typeof file !== "string"; });
  var names = texts("names");
  var caption = mirt.Trim((texts("caption")[0] || "").slice(0, 200)) || "";
  if (!files.length) say("refused", "Choose at least one picture.");
  files.forEach(function (file, i) {
    var name = names.length === files.length ? names[i] : file.FileName;
    var kind = store.kindOf(file.Stream.Read(8));
    if (kind) {
      var about = { id: mirt.MakeGUID(true), name: name, caption: caption, tags: texts("tags") };
      store.add(file, kind, about);
      say("done", strong(name) + " was added.");
    } else {
      say("refused", strong(name) + " is not a PNG, JPEG or GIF picture.");
    }
  });
  mirt.Redirect("default.asp");
}

function OnCommand_Delete() {
  var picture = store.remove(texts("id")[0]);
  if (picture) say("done", strong(picture.name) + " was deleted.");
  else say("refused", "That picture is gone already.");
  mirt.Redirect("default.asp");
}

function On_StartProcess() { hasRequest = true; }

function On_StartDraw() {
  if (Response.Status.indexOf("302") === 0) return false;
  notices().forEach(function (notice) { mirt.AddMessage(notice.html, notice.kind); });
  if (Session("notices")) Session("notices") = "";
  return true;
}

function sizeText(bytes) {
  return bytes < 1048576 ? Math.ceil(bytes / 1024) + " KiB" : (bytes / 1048576).toFixed(1) + " MiB";
}

function OnDraw_Pictures() {
  var row = mirt.NewTemplator("");
  row.Stream = Response;
  var pictures = store.list();
  if (!pictures.length) mirt.Write("<p class=\"empty\">No pictures yet.</p>", false);
  pictures.forEach(function (picture) {
    mirt.SetView("id", picture.id);
    mirt.SetView("name", picture.name);
    mirt.SetView("caption", picture.caption);
    mirt.SetView("alt", picture.caption || picture.name);
    mirt.SetView("tags", picture.tags.join(", "));
    mirt.SetView("size", sizeText(picture.size));
    row.ProcessTemplateFile(Server.MapPath("templates/picture.html"), "UTF-8");
  });
}

// Why a body was refused as a whole, in a visitor's words.
function refusal(message) {
  var size = /^Upload size exceeds maximum limit\.\[(\d+)B\]$/.exec(message);
  return size ? "The upload is too large: " + sizeText(+size[1]) + " at once cannot be taken."
              : "The upload did not arrive in a form that can be read.";
}

try {
  mirt.Process();
} catch (error) {
  // A link may be old, and anybody can type a command that there is not.
  if (/^Unknown Command /.test(error.message)) {
    Response.Clear();
    Response.Status = "404 Not Found";
    Response.Write("There is no such page.");
    Response.End();
  }
  // An upload that cannot be read fails before the page is asked for anything: there is no command to run.
  if (hasRequest || Request.TotalBytes === 0) throw error;
  say("refused", refusal(error.message));
  Response.Clear();
  Response.Redirect("default.asp");
}
%>
