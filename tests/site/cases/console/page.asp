<%
console.log("a", { b: 1 }, [2]);
console.info("two\nlines");
Server.Execute("part.asp");
%><% function warned() { console.warn(new Error("w")); }
   warned();
   console.error(Request.QueryString("a")); %>
