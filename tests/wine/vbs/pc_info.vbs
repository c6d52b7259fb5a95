' wncPCInfo from a script host: creation by ProgID and every member by name.
' Exit code: number of failures.

Dim pc, value, group
Set pc = CreateObject("Ostrel.wncPCInfo")
Check Err.Number = 0 And IsObject(pc), "CreateObject(""Ostrel.wncPCInfo"")"
If Not IsObject(pc) Then WScript.Quit 1

value = pc.ComputerName
Check Err.Number = 0 And Len(value) > 0, "ComputerName is the machine's name: " & value
value = pc.UserName
Check Err.Number = 0 And Len(value) > 0, "UserName is the user's name: " & value

' Declared and never filled: empty on every machine.
Check pc.ClientSiteName & pc.DomainName & pc.DomainControllerAddress & pc.DomainControllerName & _
      pc.ForestName & pc.PrimaryDomainController & pc.SiteName = "" And pc.Groups Is Nothing And _
      Err.Number = 0, "the domain members are empty, Groups is Nothing"

' A variable passes by reference (VT_BYREF|VT_VARIANT), a literal by value.
group = "Administrators"
Check pc.IsMemberOfGroup(group) = False And pc.IsMemberOfGroup("Users") = False And _
      group = "Administrators" And Err.Number = 0, "IsMemberOfGroup(variable or literal) is False"
Check pc.GetNetworkInfo() = False And Err.Number = 0, "GetNetworkInfo is False"
pc.DebugPrint
Check Err.Number = 0, "DebugPrint does nothing, quietly"

pc.ComputerName = "other"
Check Err.Number <> 0, "ComputerName can't be written"
pc.NoSuchMember
Check Err.Number = 438, "an unknown member raises 438"

Set pc = Nothing
WScript.Quit failures
