' wncPCInfo and wncServices from a script host: created by their ProgIDs,
' each kind of member once through late binding (the routines' rules: the
' native suites, which the Windows builds run under Wine too): values by
' reference in and out, a Date, an error's source and text, the lists of
' names, the system's Scripting.Dictionary; the keys com_server.sh writes in
' the 32-bit view. Run with TZ=EST5EDT,M3.2.0,M11.1.0, which Wine takes as its
' zone. Exit code: number of failures.

Dim pc, services, partNumber, processId, ready, handle, adapters, name, walked, data
Set pc = CreateObject("Ostrel.wncPCInfo")
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(pc) And IsObject(services), "CreateObject of wncPCInfo and wncServices"
If Not IsObject(services) Then WScript.Quit 1

Check Len(pc.ComputerName) > 0 And Err.Number = 0, "ComputerName: " & pc.ComputerName
pc.NoSuchMember
Check Err.Number = 438, "an unknown member raises 438"

' A variable as a text argument (the look-up's rules: the catalogue suite).
partNumber = "QRL-3100"
Check services.ToolbarKey(partNumber) = "Beta", "ToolbarKey of a variable"
Check services.InstallDir() = "C:\Program Files\QUORL", "InstallDir"

' Processes: the script host itself, by file name in any case and folder.
processId = "before"
Check services.IsProcessRunning("C:\Nowhere\CSCRIPT.EXE", processId) And processId > 0, _
      "IsProcessRunning finds the script host, its id in the variable"
Check Not services.IsProcessRunning("no-such-program.exe", processId) And processId = 0 And _
      TypeName(processId) = "Integer", "no such process: False and the integer 0"
' A started program is ready once its file is there (a generous wait under
' Wine; com_server.sh deletes the file after each run).
services.SaveApplicationSetting "Ostrel", "Settings", "ProgramReadyTimeout", "20000"
Check services.GetApplicationSetting("Ostrel", "Settings", "ProgramReadyTimeout", "") = "20000", "a setting saved and read back"
ready = "C:\ProgramData\QUORL\ready.txt"
Check services.RunProgram("cmd.exe /c echo up>" & ready, 12345, ready), "RunProgram: ready once the file is written"

' The lock: a handle, given back through the variable.
handle = services.GetMutex("ostrel-vbs", 1000)
Check Err.Number = 0 And handle > 0 And services.ReleaseMutexHandle(handle) And handle = 0, _
      "GetMutex gives a handle, ReleaseMutexHandle sets the variable to 0"

Check services.ConvertFromGMT(DateSerial(2024, 1, 15) + TimeSerial(12, 0, 0)) = _
      DateSerial(2024, 1, 15) + TimeSerial(7, 0, 0), "ConvertFromGMT in winter: 5 hours back"
services.ConvertToGMT DateSerial(9999, 12, 31) + TimeSerial(23, 59, 59)
Check Err.Number = 5 And Err.Source = "[OstrelGlobals.gfdatConvertToGMT]" And _
      Err.Description = "[gfdatConvertToGMT]Invalid procedure call or argument", _
      "past the calendar's end: error 5 with the routine's source and description (" & Err.Source & ")"

Set adapters = services.Adapters()
Check Err.Number = 0 And adapters.Count = 2 And adapters(2) = "{OSTREL-ADAPTER-2}", "Adapters: a list of names from 1"
For Each name In adapters
    walked = walked & name & ";"
Next
Check walked = "{OSTREL-ADAPTER-1};{OSTREL-ADAPTER-2};", "For Each walks the names in order (" & walked & ")"
' Windows names the class Dictionary, Wine by its interface.
Set data = services.InterfaceData("{OSTREL-ADAPTER-1}")
Check Err.Number = 0 And InStr(TypeName(data), "Dictionary") > 0 And data.Count = 13 And _
      data("Domain") = "lab.example", "InterfaceData: a Scripting.Dictionary of the thirteen values"

data = services.WmiInfo()
Check Left(data, 2) = "//" And InStr(data, vbCrLf) = 23, "WmiInfo starts with its stamp: " & Left(data, 24)

WScript.Quit failures
