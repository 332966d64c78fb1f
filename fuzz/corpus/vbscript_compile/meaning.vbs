' semantics
Dim r: r = ""
Sub P(x): r = r & x & "|": End Sub
Function Fact(n)
  If n <= 1 Then Fact = 1 Else Fact = n * Fact(n - 1)
End Function
P Fact(10)
Sub Swap(a, b): Dim t: t = a: a = b: b = t: End Sub
Dim u, v: u = 1: v = 2
Swap u, v: P u & "," & v
Swap (u), v: P u & "," & v
Dim m(2): m(0) = "x": m(1) = "y"
Swap m(0), m(1): P m(0) & m(1)
Call Swap(m(0), u): P m(0) & u
Sub ByV(ByVal a): a = 5: End Sub
u = 7: ByV u: P u
Dim i, j, n
For i = 10 To 1 Step -3: n = n & i & " ": Next
P n & i
n = "": For i = 1 To 2: For j = 1 To 5: If j = 3 Then Exit For
n = n & i & j & " "
Next: Next
P n
i = 0: Do: i = i + 1: If i = 5 Then Exit Do
Loop While True
P i
i = 0: Do Until i >= 3: i = i + 1: Loop: P i
While i < 6: i = i + 1: Wend: P i
Dim arr: arr = Array(1, "two", 3.5)
Dim e, s: For Each e In arr: s = s & e & ";": Next: P s
Dim c: c = arr: c(0) = 99: P arr(0) & "/" & c(0)
ReDim d(1): d(1) = 5: ReDim Preserve d(3): P d(1) & UBound(d)
Select Case "b"
  Case "a": P "no"
  Case "b", "c": P "yes"
End Select
P 7 \ 2 & " " & 7 Mod 3 & " " & -7 \ 2 & " " & 2 ^ 10 & " " & 5 / 2
P (1 = 1) & " " & (Null = 1) & " " & (Not True) & " " & (5 And 3) & " " & (1 Or 4)
P TypeName(1) & TypeName(1.0) & TypeName("a") & TypeName(Empty) & TypeName(Null) & TypeName(Nothing) & TypeName(arr) & TypeName(1 = 1)
On Error Resume Next
x = 1 / 0
P Err.Number & Err.Description
Err.Clear
If 1 / 0 Then P "fell in"
For i = 1 To 1 / 0: P "once": Next
undefinedsub 1
P Err.Number & Err.Description
On Error GoTo 0
P IsEmpty(nobody)
Class Counter
  Private n
  Private Sub Class_Initialize: n = 10: End Sub
  Public Default Function Value(): Value = n: End Function
  Public Sub Add(ByRef by): n = n + by: by = 0: End Sub
  Public Property Get Items(i): Items = n * i: End Property
  Public Property Let Items(i, x): n = i * 100 + x: End Property
  Public Property Set Obj(o): Set inner = o: End Property
  Public inner
End Class
Dim k: Set k = New Counter
Dim by: by = 5: k.Add by: P k & "," & by
P k.Items(2): k.Items(3) = 7: P k.Value & k
Set k.Obj = k: P TypeName(k.inner) & (k.inner Is k)
P TypeName(New Counter)
Dim f: Set f = GetRef("fact"): P f(5)
Const PI = 3.14: P PI * 2
P "a" & vbTab & "b" & vbCrLf
P Left("hello", 2) & Mid("hello", 2, 3) & UCase("x") & InStr("abc", "c") & Replace("aXa", "X", "y") & Len("four")
With New Counter: .Add 3: P .Value: End With
P #1/2/2000#
[odd name] = 5: P [odd name]
P 10 Mod 4 + 2 * 3 & "z"
P -2 ^ 2
Function NoArgs: NoArgs = "na": End Function
P NoArgs & NoArgs()
P Eq(1)
Function Eq(ByRef q): q = q + 1: Eq = q: End Function
P 1000000 * 1000000
Dim big: big = 2147483647: big = big + 1: P big & TypeName(big)
P CInt(2.5) & CInt(3.5)
Response.Write r
