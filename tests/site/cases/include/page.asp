<!--#include file="inc/one.inc"-->
<%= shared(2) %>
