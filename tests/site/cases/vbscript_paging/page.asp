<%@ Language="VBScript" %>
<%
' A list in pages, with links; the page comes from the query string, and may be nonsense.
Const PageSize = 4
Dim page, pages, total, i, first, last
total = 14
pages = -Int(-total / PageSize)
page = Request.QueryString("page")
If Not IsNumeric(page) Or page = "" Then page = 1 Else page = CInt(page)
If page < 1 Then page = 1
If page > pages Then page = pages
first = (page - 1) * PageSize + 1
last = first + PageSize - 1
If last > total Then last = total
%><table>
<% For i = first To last %><tr class="<% If i Mod 2 = 0 Then %>even<% Else %>odd<% End If %>"><td><%= i %></td><td><%= String(i \ 4 + 1, "*") %></td></tr>
<% Next %></table>
<%
For i = 1 To pages
  Select Case i
    Case page
      Response.Write "<b>" & i & "</b> "
    Case 1, pages
      Response.Write "<a href=""?page=" & i & """>" & i & "</a> "
    Case Else
      Response.Write "<a href=""?page=" & i & """>.</a> "
  End Select
Next
%><%=page%> of <%=pages%>, <%=TypeName(page)%>, <%=TypeName(Request.QueryString("none").Item)%>, <%=Request.QueryString("none") = ""%>
