' wncServices: the time conversions and the path helpers from a script host,
' one call each for the Date and the texts on the way (the rules: the
' TimeConversion, SystemTimeZone, Paths, SystemPaths and LocalisedFiles
' suites, which the Windows builds run under Wine too). Run with
' TZ=EST5EDT,M3.2.0,M11.1.0 (com_server.sh), which Wine takes as its zone,
' and OSTREL_LANGUAGE=de-AT. Exit code: number of failures.

Dim services, fso, shell, winter, folder, file, before, shortName
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1
Set fso = CreateObject("Scripting.FileSystemObject")
Set shell = CreateObject("WScript.Shell")

winter = DateSerial(2024, 1, 15) + TimeSerial(12, 0, 0)
Check services.ConvertFromGMT(winter) = DateSerial(2024, 1, 15) + TimeSerial(7, 0, 0), "ConvertFromGMT in winter: 5 hours back"
Check VarType(services.ConvertToGMT(winter)) = vbDate And Err.Number = 0, "ConvertToGMT gives a Date"
services.ConvertToGMT DateSerial(9999, 12, 31) + TimeSerial(23, 59, 59)
If Err.Number = 5 And Err.Source = "[OstrelGlobals.gfdatConvertToGMT]" And _
   Err.Description = "[gfdatConvertToGMT]Invalid procedure call or argument" Then
    Check True, "past the calendar's end: error 5 with the routine's source and description"
Else
    Check False, "past the calendar's end (" & Err.Source & ")"
End If

' The long form of a short name: the system's A call.
folder = fso.BuildPath(fso.GetSpecialFolder(2), "ostrel vbs long folder name")
If Not fso.FolderExists(folder) Then fso.CreateFolder folder
shortName = fso.GetFolder(folder).ShortPath
If Err.Number = 0 Then
    Check services.GetLongPathFilename(shortName) = folder, "GetLongPathFilename of the short name"
Else
    WScript.Echo "skip the short name: this file system object has no ShortPath"
    Err.Clear
End If

before = shell.CurrentDirectory
Check services.SetCurrentFolder(folder) = before And shell.CurrentDirectory = folder, _
      "SetCurrentFolder gives the folder before and changes it"
services.SetCurrentFolder before

file = fso.BuildPath(folder, "read-only.txt")
fso.CreateTextFile(file, True).Close
fso.GetFile(file).Attributes = 1
Check services.DeleteFile(file) = True And Not fso.FileExists(file), "DeleteFile of a read-only file"

' The language's variant of a file: suffix2 ("de-AT") before suffix1 ("de").
fso.CreateTextFile(fso.BuildPath(folder, "Guide_de.txt"), True).Close
fso.CreateTextFile(fso.BuildPath(folder, "Guide_de-AT.txt"), True).Close
Check services.GetLocalisedFileName(fso.BuildPath(folder, "Guide.txt")) = fso.BuildPath(folder, "Guide_de-AT.txt"), _
      "GetLocalisedFileName: suffix2 first"
fso.DeleteFolder folder, True

WScript.Quit failures
