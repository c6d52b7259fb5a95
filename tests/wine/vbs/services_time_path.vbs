' wncServices: the time conversions and the path helpers from a script host.
' Run with TZ=EST5EDT,M3.2.0,M11.1.0 (com_server.sh), which Wine takes as
' its zone, and OSTREL_LANGUAGE=de-AT. Exit code: number of failures.

Dim services, fso, shell, localised, winter, summer, toGmt, offset, folder, file, before

' Minutes from one date to the other (Wine's VBScript has no DateDiff).
Function MinutesBetween(fromDate, toDate)
    MinutesBetween = Round((toDate - fromDate) * 1440)
End Function

Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1
Set fso = CreateObject("Scripting.FileSystemObject")
Set shell = CreateObject("WScript.Shell")

' From GMT by the rule of the date; to GMT by the offset in force now.
winter = DateSerial(2024, 1, 15) + TimeSerial(12, 0, 0)
summer = DateSerial(2024, 7, 15) + TimeSerial(12, 0, 0)
Check services.ConvertFromGMT(winter) = DateSerial(2024, 1, 15) + TimeSerial(7, 0, 0), "ConvertFromGMT in winter: 5 hours back"
Check services.ConvertFromGMT(summer) = DateSerial(2024, 7, 15) + TimeSerial(8, 0, 0), "ConvertFromGMT in summer: 4 hours back"
toGmt = services.ConvertToGMT(winter)
Check Err.Number = 0 And VarType(toGmt) = vbDate, "ConvertToGMT gives a Date"
offset = MinutesBetween(winter, toGmt)
Check offset = 240 Or offset = 300, "ConvertToGMT: 4 or 5 hours ahead (" & offset & " minutes)"
Check MinutesBetween(summer, services.ConvertToGMT(summer)) = offset, "the same offset for a summer date"
Check Abs(MinutesBetween(Now, services.NowGMT()) - offset) <= 1, "NowGMT is Now and the offset"
Check services.ConvertToGMT(winter + 0.4 / 86400) = toGmt, "a fraction of a second is lost"
Check Year(services.ConvertToGMT(DateSerial(2023, 12, 31) + TimeSerial(23, 30, 0))) = 2024, "23:30 on 31 December is next year in GMT"

Dim lastSecond
lastSecond = services.ConvertToGMT(DateSerial(9999, 12, 31) + TimeSerial(23, 59, 59))
If Err.Number = 5 And Err.Source = "[OstrelGlobals.gfdatConvertToGMT]" And _
   Err.Description = "[gfdatConvertToGMT]Invalid procedure call or argument" Then
    Check True, "past the calendar's end: error 5 with the routine's source and description"
Else
    Check False, "past the calendar's end (" & Err.Source & ")"
End If

' Paths: the long form of a short name, and of what does not exist.
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
Check services.GetLongPathFilename("C:\no such\file.txt") = "C:\no such\file.txt", "GetLongPathFilename of a missing path"

' The current folder: the old one back, also when the new one is missing.
Check services.SetCurrentFolder("") = "", "SetCurrentFolder("""") changes nothing"
before = shell.CurrentDirectory
Check services.SetCurrentFolder(folder) = before, "SetCurrentFolder gives the folder before"
Check shell.CurrentDirectory = folder, "and changes it"
Check services.SetCurrentFolder("C:\no such folder") = folder, "a missing folder: the old one back"
Check shell.CurrentDirectory = folder, "and the folder stays"
Check services.SetCurrentFolder(before) = folder, "the way back"

' Deleting: read-only files go, missing ones count as gone (a file another
' process holds open: the SystemPaths test of the Windows builds).
file = fso.BuildPath(folder, "read-only.txt")
fso.CreateTextFile(file, True).Close
fso.GetFile(file).Attributes = 1
Check services.DeleteFile(file) = True And Not fso.FileExists(file), "DeleteFile of a read-only file"
Check services.DeleteFile(file) = True, "DeleteFile of a missing file"

' The language's variant of a file: suffix2 ("de-AT") before suffix1 ("de"),
' never the file itself.
Function LocalisedOf(path)
    Err.Clear
    LocalisedOf = "(raised)"
    LocalisedOf = services.GetLocalisedFileName(path)
    If Err.Number <> 0 Then LocalisedOf = "(error " & Err.Number & ")"
End Function
file = fso.BuildPath(folder, "Guide.txt")
fso.CreateTextFile(file, True).Close
localised = LocalisedOf(file)
Check localised = "", "GetLocalisedFileName: the plain file is no candidate, got " & localised
fso.CreateTextFile(fso.BuildPath(folder, "Guide_de.txt"), True).Close
localised = LocalisedOf(file)
Check localised = fso.BuildPath(folder, "Guide_de.txt"), "GetLocalisedFileName: suffix1, got " & localised
fso.CreateTextFile(fso.BuildPath(folder, "Guide_de-AT.txt"), True).Close
localised = LocalisedOf(file)
Check localised = fso.BuildPath(folder, "Guide_de-AT.txt"), "GetLocalisedFileName: suffix2 first, got " & localised
fso.DeleteFolder folder, True

WScript.Quit failures
