<%@ Language="JavaScript" CodePage="65001" %>
<%
// Says why an upload was refused as a whole.
var mirt = Server.CreateObject("Mirt");
mirt.AddScript(this);
mirt.TemplateFolder = Server.MapPath("templates");
mirt.TemplateExt = ".html";
mirt.DefaultTemplate = "refused";
var reason = Session("gallery_refused") || "There is nothing to say.";
mirt.Process();
%>
