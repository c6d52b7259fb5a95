' The network inventory on wncServices: the lists as read-only collections
' of names, the interface data as the system's Scripting.Dictionary (the
' list's rules themselves: the KeyedList suite). The keys are the ones
' network.sh writes. Exit code: number of failures.

Dim services, cards, adapters, name, walked, data, keys, key, missing

' Windows names the class Dictionary, Wine by its interface.
Function IsDictionary(value)
    IsDictionary = TypeName(value) = "Dictionary" Or TypeName(value) = "IDictionary"
End Function
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1

' Wine lists adapters of its own among the cards: ours must be there too.
Set cards = services.NetworkCards()
Check Err.Number = 0 And cards.Count >= 2, "NetworkCards: a list with our two cards at least"
Check cards("{ostrel-service-b}") = "{OSTREL-SERVICE-B}", "Item by key ignores case, answers the name as stored"

Set adapters = services.Adapters()
Check Err.Number = 0 And adapters.Count = 2, "Adapters: the two adapter keys"
Check adapters(1) = "{OSTREL-ADAPTER-1}" And adapters(2) = "{OSTREL-ADAPTER-2}", "Item by position, from 1"
name = adapters(3)
Check Err.Number = 9, "Item past the end: error 9"
walked = ""
For Each name In adapters
    walked = walked & name & ";"
Next
Check walked = "{OSTREL-ADAPTER-1};{OSTREL-ADAPTER-2};", "For Each walks in order (" & walked & ")"
adapters.Count = 7
Check Err.Number <> 0 And adapters.Count = 2, "Count is read-only"

Set data = services.InterfaceData("{OSTREL-ADAPTER-1}")
Check Err.Number = 0 And IsDictionary(data), "InterfaceData: a Scripting.Dictionary (" & TypeName(data) & ")"
keys = ""
For Each key In data.Keys  ' Wine's script engine has no Join
    If keys <> "" Then keys = keys & ","
    keys = keys & key
Next
Check keys = "HostName,DefaultGateway,Domain,IPAddress,SubnetMask,Server,NameServer,EnableDHCP," & _
      "DhcpIPAddress,DhcpSubnetMask,DhcpServer,DhcpNameServer,DhcpDomain", "the thirteen keys in order"
Check data("IPAddress") = "10.1.0.5 10.1.0.6", "a multi-string joined by a blank (" & data("IPAddress") & ")"
Check data("Domain") = "lab.example" And data("DhcpServer") = "", "values and defaults"
Check data("EnableDHCP") = 1 And TypeName(data("EnableDHCP")) = "Long", "EnableDHCP a Long"
Check Not data.Exists("ipaddress"), "keys compare case-sensitively"
Set missing = services.InterfaceData("{OSTREL-NO-SUCH}")
Check Err.Number = 0 And IsDictionary(missing) And missing.Count = 0, "no such interface: an empty dictionary"

WScript.Quit failures
