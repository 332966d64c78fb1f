<%@ Language="VBScript" LCID="1033" %><%
' A month as a table, weeks beginning on Monday.
Dim first, day1, d, month1, names
first = DateSerial(2024, 2, 1)
month1 = Month(first)
names = Array("Mo", "Tu", "We", "Th", "Fr", "Sa", "Su")
Response.Write MonthName(month1) & " " & Year(first) & vbLf & Join(names, " ") & vbLf
For d = 2 To Weekday(first, vbMonday)
  Response.Write "   "
Next
day1 = first
Do While Month(day1) = month1
  Response.Write Right(" " & Day(day1), 2)
  If Weekday(day1, vbMonday) = 7 Then
    Response.Write vbLf
  Else
    Response.Write " "
  End If
  day1 = day1 + 1
Loop
Response.Write vbLf & DateDiff("d", first, day1) & " days, " & DateDiff("ww", first, day1, vbMonday) & " weeks" & vbLf
Response.Write FormatDateTime(DateAdd("m", 1, DateSerial(2024, 1, 31)), vbShortDate) & vbLf
Response.Write WeekdayName(Weekday(first)) & " " & WeekdayName(1, True, vbMonday) & " " & MonthName(12, True) & vbLf
Response.Write DatePart("y", DateSerial(2024, 12, 31)) & " " & DatePart("q", first) & " " & DatePart("ww", #1/1/2024#) & vbLf
Response.Write TypeName(first) & " " & CDbl(first) & " " & CDbl(#12/30/1899 6:00:00 PM#) & " " & IsDate("2024-02-30") & IsDate("2/29/2024") & vbLf
Response.Write #2/29/2024 1:05:09 PM# & "|" & #13:00# & "|" & (#3/1/2024# - #2/28/2024#) & "|" & (#3/1/2024# > first) & vbLf
Response.Write Hour(#1:02:03 PM#) & ":" & Minute(#1:02:03 PM#) & ":" & Second(#1:02:03 PM#) & " " & TimeSerial(25, -1, 0) & " " & DateValue("January 5, 1999") & " " & TimeValue("4:35:17 PM")
%>
