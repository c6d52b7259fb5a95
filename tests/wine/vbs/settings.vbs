' wncServices' settings and lock members from a script host. com_server.sh
' prepares the prefix (an older value "Moved" under HKCU, no settings file)
' and checks the file and the registry afterwards. Arguments:
'   (none)            the members, as a script sees them
'   writer ID COUNT   saves COUNT distinct keys W<ID>_<n>, for the
'                     concurrent writers
' Exit code: number of failures.

Dim services, handle, released, i
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1

If WScript.Arguments.Count > 0 Then
    For i = 1 To CLng(WScript.Arguments(2))
        services.SaveApplicationSetting "Ostrel", "Settings", "W" & WScript.Arguments(1) & "_" & i, CStr(i)
        If Err.Number <> 0 Then Check False, "save " & i
    Next
    WScript.Quit failures
End If

' Settings: the file first, the older store behind it; nothing ever raises.
Check services.GetApplicationSetting("Ostrel", "Settings", "Missing", "dflt") = "dflt", "a missing setting gives the default"
services.SaveApplicationSetting "Ostrel", "Settings", "Colour", "blue"
Check Err.Number = 0, "SaveApplicationSetting"
Check services.GetApplicationSetting("Ostrel", "Settings", "Colour", "") = "blue", "read back what was saved"
Check services.GetApplicationSetting("Ostrel", "Settings", "Moved", "") = "older", "an older value is read (and moves into the file)"
Check services.GetApplicationSetting("Ostrel", "Settings", "a b", "d") = "d" And Err.Number = 0, "a bad key: the default, no error"
services.SaveApplicationSetting "Ostrel", "Second", "K", "v"
Check Err.Number = 0, "a second section is saved without an error (into the older store)"

' The lock: a handle, given back through the variable.
handle = services.GetMutex("ostrel-vbs", 1000)
Check Err.Number = 0 And handle > 0, "GetMutex gives a handle"
released = services.ReleaseMutexHandle(handle)
Check released = True And handle = 0, "ReleaseMutexHandle sets the variable to 0"
released = services.ReleaseMutexHandle(handle)
Check released = True And handle = 0, "a second release of the same variable does nothing"
Check services.GetMutex("", 100) = 0, "an empty name gives 0"

WScript.Quit failures
