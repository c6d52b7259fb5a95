' Put before every script by com_server.sh: Wine's cscript prints no script
' errors, so each risky statement is followed by a Check that looks at Err.
Option Explicit
On Error Resume Next
Dim failures : failures = 0

Sub Check(ok, what)
    If ok Then
        WScript.Echo "ok   " & what
    Else
        WScript.Echo "FAIL " & what & " (Err " & Err.Number & " " & Err.Description & ")"
        failures = failures + 1
    End If
    Err.Clear
End Sub

