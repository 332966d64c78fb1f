<%
Application.Lock(); Application("hits") = 1; Application("hits")++; Application.UnLock();
var names = []; for (var e = new Enumerator(Application.Contents); !e.atEnd(); e.moveNext()) names.push(e.item());
Response.Write(Application("HITS") + "|" + names);
%>
