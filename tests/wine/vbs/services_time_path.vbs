' wncServices: the time conversions and the path helpers from a script host.
' Run with TZ=EST5EDT,M3.2.0,M11.1.0 (com_server.sh), which Wine takes as
' its zone, and OSTREL_LANGUAGE=de-AT. Exit code: number of failures.

Dim services, fso, shell, localised, winter, toGmt, offset, folder, file, before

' Minutes from one date to the other (Wine's VBScript has no DateDiff).
Function MinutesBetween(fromDate, toDate)
    MinutesBetween = Round((toDate - fromDate) * 1440)
End Function

Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1
Set fso = CreateObject("Scripting.FileSystemObject")
Set shell = CreateObject("WScript.Shell")

' From GMT by the rule of the date; to GMT by the offset in force now (the
' zone's rules in summer, at the year's end and below the second: the
' SystemTimeZone test of the Windows builds, in the same zone).
winter = DateSerial(2024, 1, 15) + TimeSerial(12, 0, 0)
Check services.ConvertFromGMT(winter) = DateSerial(2024, 1, 15) + TimeSerial(7, 0, 0), "ConvertFromGMT in winter: 5 hours back"
toGmt = services.ConvertToGMT(winter)
Check Err.Number = 0 And VarType(toGmt) = vbDate, "ConvertToGMT gives a Date"
offset = MinutesBetween(winter, toGmt)
Check offset = 240 Or offset = 300, "ConvertToGMT: 4 or 5 hours ahead (" & offset & " minutes)"
Check Abs(MinutesBetween(Now, services.NowGMT()) - offset) <= 1, "NowGMT is Now and the offset"

Dim lastSecond
lastSecond = services.ConvertToGMT(DateSerial(9999, 12, 31) + TimeSerial(23, 59, 59))
If Err.Number = 5 And Err.Source = "[OstrelGlobals.gfdatConvertToGMT]" And _
   Err.Description = "[gfdatConvertToGMT]Invalid procedure call or argument" Then
    Check True, "past the calendar's end: error 5 with the routine's source and description"
Else
    Check False, "past the calendar's end (" & Err.Source & ")"
End If

' Paths: the long form of a short name and of a long one (of what does not
' exist: SystemPaths).
folder = fso.BuildPath(fso.GetSpecialFolder(2), "ostrel vbs long folder name")
If Not fso.FolderExists(folder) Then fso.CreateFolder folder
Dim shortName
shortName = fso.GetFolder(folder).ShortPath
If Err.Number = 0 Then
    Check services.GetLongPathFilename(shortName) = folder, "GetLongPathFilename of the short name"
Else
    WScript.Echo "skip the short name: this file system object has no ShortPath"
    Err.Clear
End If
Check services.GetLongPathFilename(folder) = folder, "GetLongPathFilename of the long name"

' The current folder: the old one back (a missing or empty one: SystemPaths
' and the Paths suite).
before = shell.CurrentDirectory
Check services.SetCurrentFolder(folder) = before, "SetCurrentFolder gives the folder before"
Check shell.CurrentDirectory = folder, "and changes it"
Check services.SetCurrentFolder(before) = folder, "the way back"

' Deleting: read-only files go, missing ones count as gone (a file another
' process holds open: the SystemPaths test of the Windows builds).
file = fso.BuildPath(folder, "read-only.txt")
fso.CreateTextFile(file, True).Close
fso.GetFile(file).Attributes = 1
Check services.DeleteFile(file) = True And Not fso.FileExists(file), "DeleteFile of a read-only file"
Check services.DeleteFile(file) = True, "DeleteFile of a missing file"

' The language's variant of a file: suffix2 ("de-AT") before suffix1 ("de")
' (the other orders: the LocalisedFiles suite).
Function LocalisedOf(path)
    Err.Clear
    LocalisedOf = "(raised)"
    LocalisedOf = services.GetLocalisedFileName(path)
    If Err.Number <> 0 Then LocalisedOf = "(error " & Err.Number & ")"
End Function
file = fso.BuildPath(folder, "Guide.txt")
fso.CreateTextFile(fso.BuildPath(folder, "Guide_de.txt"), True).Close
fso.CreateTextFile(fso.BuildPath(folder, "Guide_de-AT.txt"), True).Close
localised = LocalisedOf(file)
Check localised = fso.BuildPath(folder, "Guide_de-AT.txt"), "GetLocalisedFileName: suffix2 first, got " & localised
fso.DeleteFolder folder, True

WScript.Quit failures
