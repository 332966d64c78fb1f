<%@ Language="JScript" %>
<script language="JScript" runat="server" src="lib/names.js"></script>
<script language="JScript" runat="server" src="/root.js"></script>
<%
fails();
%>
