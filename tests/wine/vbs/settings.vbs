' wncServices' settings and lock members from a script host, each through
' its parameters (the stores themselves: the Settings suite and
' tests/e2e/settings_test.sh). Exit code: number of failures.

Dim services, handle, released
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1

Check services.GetApplicationSetting("Ostrel", "Settings", "Missing", "dflt") = "dflt", "a missing setting gives the default"
services.SaveApplicationSetting "Ostrel", "Settings", "Colour", "blue"
Check Err.Number = 0, "SaveApplicationSetting"
Check services.GetApplicationSetting("Ostrel", "Settings", "Colour", "") = "blue", "read back what was saved"

' The lock: a handle, given back through the variable.
handle = services.GetMutex("ostrel-vbs", 1000)
Check Err.Number = 0 And handle > 0, "GetMutex gives a handle"
released = services.ReleaseMutexHandle(handle)
Check released = True And handle = 0, "ReleaseMutexHandle sets the variable to 0"

WScript.Quit failures
