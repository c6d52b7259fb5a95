' wncPCInfo from a script host: creation by ProgID, every member by name,
' and the class name. Wine's cscript prints no script errors, so every risky
' statement is followed by a look at Err. Exit code: number of failures.

Dim pc, value, group
Set pc = CreateObject("Ostrel.wncPCInfo")
Check Err.Number = 0 And IsObject(pc), "CreateObject(""Ostrel.wncPCInfo"")"
If Not IsObject(pc) Then WScript.Quit 1

value = pc.ComputerName
Check Err.Number = 0 And Len(value) > 0, "ComputerName is the machine's name: " & value
value = pc.UserName
Check Err.Number = 0 And Len(value) > 0, "UserName is the user's name: " & value

' Declared and never filled: empty on every machine.
Check pc.ClientSiteName = "" And Err.Number = 0, "ClientSiteName is empty"
Check pc.DomainName = "" And Err.Number = 0, "DomainName is empty"
Check pc.DomainControllerAddress = "" And Err.Number = 0, "DomainControllerAddress is empty"
Check pc.DomainControllerName = "" And Err.Number = 0, "DomainControllerName is empty"
Check pc.ForestName = "" And Err.Number = 0, "ForestName is empty"
Check pc.PrimaryDomainController = "" And Err.Number = 0, "PrimaryDomainController is empty"
Check pc.SiteName = "" And Err.Number = 0, "SiteName is empty"
Check pc.Groups Is Nothing And Err.Number = 0, "Groups is Nothing"

' A variable passes by reference (VT_BYREF|VT_VARIANT), a literal by value.
group = "Administrators"
Check pc.IsMemberOfGroup(group) = False And Err.Number = 0, "IsMemberOfGroup(variable) is False"
Check pc.IsMemberOfGroup("Users") = False And Err.Number = 0, "IsMemberOfGroup(literal) is False"
Check group = "Administrators", "IsMemberOfGroup leaves its argument alone"
Check pc.GetNetworkInfo() = False And Err.Number = 0, "GetNetworkInfo is False"
pc.DebugPrint
Check Err.Number = 0, "DebugPrint does nothing, quietly"

pc.ComputerName = "other"
Check Err.Number <> 0, "ComputerName can't be written"
pc.NoSuchMember
Check Err.Number = 438, "an unknown member raises 438"

' TypeName names the class where the engine asks IProvideClassInfo; Wine's
' engine names the default interface instead.
value = TypeName(pc)
Check value = "wncPCInfo" Or value = "_wncPCInfo", "TypeName: " & value

Set pc = Nothing
WScript.Quit failures
