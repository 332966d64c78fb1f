Dim x: x = 3
Function F(n): F = n + x: End Function
Sub T(a)
  Dim y: y = 4
  Execute "y = y + 1 : a = y * X : Dim zz : zz = 9"
  Response.Write a & "," & y & "," & Eval("f(y) + A")
  Execute "y = zz"
  Response.Write "," & y
End Sub
Dim q: q = 1
T q
Response.Write q & "|" & Eval("1 = 1") & Eval("x > 2 And True")
ExecuteGlobal "Function NewOne(v) : NewOne = v * 2 : End Function" & vbCrLf & "Class K" & vbLf & "Public a" & vbLf & "End Class"
Response.Write newone(21) : Dim kk : Set kk = New k : kk.A = 5 : Response.Write kk.a
Execute "x = x & ""!""" : Response.Write x
On Error Resume Next
Execute "x = "
Response.Write Err.Number & Err.Description
