<%@ Language="VBScript" LCID="1033" %>
<% Option Explicit
' A shop's basket: an array of two dimensions in the session, which grows with ReDim Preserve.
Const cName = 0, cPrice = 1, cCount = 2
Dim catalogue(2)
catalogue(0) = Array("Tea", 3.5)
catalogue(1) = Array("Pot", 12)
catalogue(2) = Array("Cup", 4.25)

Sub AddToBasket(ByVal item, ByVal count)
  Dim basket, i, last
  basket = Session("basket")
  If IsEmpty(basket) Then
    ReDim basket(2, -1)
  End If
  last = UBound(basket, 2)
  For i = 0 To last
    If basket(cName, i) = catalogue(item)(cName) Then
      basket(cCount, i) = basket(cCount, i) + count
      Session("basket") = basket
      Exit Sub
    End If
  Next
  last = last + 1
  ReDim Preserve basket(2, last)
  basket(cName, last) = catalogue(item)(cName)
  basket(cPrice, last) = catalogue(item)(cPrice)
  basket(cCount, last) = count
  Session("basket") = basket
End Sub

AddToBasket 0, 2
AddToBasket 2, 1
AddToBasket 0, 1
AddToBasket 1, 1

Dim lines, i, sum
lines = Session("basket")
sum = 0
For i = LBound(lines, 2) To UBound(lines, 2)
  sum = sum + lines(cPrice, i) * lines(cCount, i)
  Response.Write lines(cCount, i) & " x " & lines(cName, i) & " = " & FormatNumber(lines(cPrice, i) * lines(cCount, i), 2) & vbLf
Next
Response.Write "Total: " & FormatNumber(sum, 2) & " (" & UBound(lines, 2) + 1 & " lines)" & vbLf
' What the session has is a copy: a change of the variable does not show there.
lines(cName, 0) = "changed"
Response.Write Session("basket")(cName, 0) & vbLf
If sum > 25 And Not (sum < 26) Then Response.Write "Free delivery" Else Response.Write "Delivery 4.90"
%>
