<%@ Language="JavaScript" CodePage="65001" %>
<!-- #include file="store.inc" -->
<%
// The list of pictures, the upload of new ones and the removal of old ones. A post ends in a redirect;
// what there is to say about it waits in the bag until the list is drawn.

var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.Name = "gallery";
mirt.TemplateFolder = Server.MapPath("templates");
mirt.TemplateExt = ".html";
mirt.DefaultTemplate = "page";
mirt.NullIsEmpty = true;

// Text for a message, which is itself a template: what a visitor typed must not become a mark.
function literal(text) {
  return mirt.HTMLEncode(text).replace(/\^/g, "^^").replace(/\(#/g, "^(#").replace(/#\)/g, "^#)");
}

function say(text) {
  var said = mirt.Bag("notices") || "";
  mirt.Bag("notices") = said + text + "\n";
}

function field(name) {
  var value = mirt.Request(name);
  return value === undefined || value === null ? "" : mirt.Trim(value + "") || "";
}

function OnCommand_Upload() {
  var files = mirt.Request("pictures");
  var tags = mirt.Request("tags");
  tags = tags ? mirt.ToArray(tags) : [];
  (files ? mirt.ToArray(files) : []).forEach(function (file) {
    if (typeof file === "string") {
      say("Choose at least one picture.");
      return;
    }
    var kind = store.kindOf(file.Stream.Read(8));
    file.Stream.Position = 0;
    if (!kind) {
      say("<strong>" + literal(file.FileName2) + "</strong> is no picture: PNG, JPEG and GIF can be shown.");
      return;
    }
    store.add(file, kind, mirt.MakeGUID(true), field("caption"), tags);
    say("<strong>" + literal(file.FileName2) + "</strong> was added.");
  });
  mirt.Redirect("default.asp");
}

function OnCommand_Delete() {
  var picture = store.remove(field("id"));
  say(picture ? "<strong>" + literal(picture.name) + "</strong> was deleted." : "That picture is gone already.");
  mirt.Redirect("default.asp");
}

function On_StartDraw() {
  if (Response.Status.indexOf("302") === 0) return false;
  (mirt.Bag("notices") || "").split("\n").filter(Boolean).forEach(function (notice) {
    mirt.AddMessage(notice, "notice");
  });
  mirt.Bag("notices") = "";
  return true;
}

function OnDraw_Pictures(page, texts) {
  var row = mirt.NewTemplator("");
  row.Stream = Response;
  var pictures = store.list();
  if (!pictures.length) mirt.Write("<p class=\"empty\">No pictures yet.</p>", false);
  pictures.forEach(function (picture) {
    mirt.SetView("id", picture.id);
    mirt.SetView("name", picture.name);
    mirt.SetView("caption", picture.caption || picture.name);
    mirt.SetView("tags", picture.tags.join(", "));
    mirt.SetView("size", Math.ceil(picture.size / 1024) + " KiB");
    row.ProcessTemplateFile(Server.MapPath("templates/picture.html"), "UTF-8");
  });
}

try {
  mirt.Process();
} catch (error) {
  // The body was refused before anything of it was read: there is no command to run.
  if (!/^Upload /.test(error.message)) throw error;
  Session("gallery_refused") = error.message;
  Response.Clear();
  Response.Redirect("refused.asp");
}
%>
