' Put before every script by run_vbs (loaders.bash): Wine's cscript prints no
' script errors, so each risky statement is followed by a Check that looks at
' Err.
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


' Put by run_vbs before each Check that doesn't look at Err itself, and before
' the script's end: an error still pending there was raised by a statement
' since the last Check and seen by nobody. A Check whose own argument raised
' is such a statement: On Error Resume Next skips it whole.
Sub Guard(line)
    If Err.Number <> 0 Then
        WScript.Echo "FAIL a statement before line " & line & " raised, unchecked (Err " & _
                     Err.Number & " " & Err.Description & ")"
        failures = failures + 1
        Err.Clear
    End If
End Sub
