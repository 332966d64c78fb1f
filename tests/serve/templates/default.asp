<%
var mirt = Server.CreateObject("Mirt");
mirt.TemplateFolder = Server.MapPath("parts");
mirt.TemplateExt = ".html";
mirt.DrawTemplate("sub\\..\\t");
%>
