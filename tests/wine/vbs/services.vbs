' wncServices from a script host: created by its ProgID like the other
' classes, each member handing back what its routine gives, through the
' system's own registry and processes (the routines' rules: the Toolbar and
' Processes suites). Argument 1: "catalogue" when the Toolbar key holds the
' test products (see com_server.sh). Exit code: number of failures.

Dim services, partNumber
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1

' The Toolbar look-ups: first match in the registry's order, any case.
partNumber = "QRL-3100"
Check services.ToolbarKey("qrl-2040") = "Alpha" And services.ToolbarKey(partNumber) = "Beta", _
      "ToolbarKey of a literal and of a variable"
Check services.InstallDir() = "C:\Program Files\QUORL", "InstallDir"

' Processes: the script host itself, by file name in any case and folder.
Dim processId, ready, fso
processId = "before"
Check services.IsProcessRunning("C:\Nowhere\CSCRIPT.EXE", processId) And processId > 0, _
      "IsProcessRunning finds the script host, its id in the variable"
Check Not services.IsProcessRunning("no-such-program.exe", processId) And processId = 0 And _
      TypeName(processId) = "Integer", "no such process: False and the integer 0"
' A started program is ready once its file is there (a generous wait under Wine).
services.SaveApplicationSetting "Ostrel", "Settings", "ProgramReadyTimeout", "20000"
Set fso = CreateObject("Scripting.FileSystemObject")
ready = "C:\ProgramData\QUORL\ready.txt"
If fso.FileExists(ready) Then fso.DeleteFile ready
Check services.RunProgram("cmd.exe /c echo up>" & ready, 12345, ready), "RunProgram: ready once the file is written"
services.SaveApplicationSetting "Ostrel", "Settings", "ProgramReadyTimeout", "100"
Check Not services.RunProgram("no-such-program.exe", 0, "") And Err.Number = 0, "RunProgram of nothing: False, no error"
If fso.FileExists(ready) Then fso.DeleteFile ready

WScript.Quit failures
