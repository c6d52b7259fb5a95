' wncServices from a script host: created by its ProgID like the other
' classes, each member handing back what its routine gives. Argument 1:
' "catalogue" when the Toolbar key holds the test products (see
' com_server.sh). Exit code: number of failures.

Dim services, partNumber
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1

' The Toolbar look-ups: first match in the registry's order, any case.
Check services.ToolbarKey("qrl-2040") = "Alpha", "ToolbarKey(""qrl-2040"") = Alpha"
partNumber = "QRL-3100"
Check services.ToolbarKey(partNumber) = "Beta", "ToolbarKey of a variable"
Check services.ToolbarKey("") = "", "ToolbarKey("""") is empty"
Check services.InstallDir() = "C:\Program Files\QUORL", "InstallDir"

WScript.Quit failures
