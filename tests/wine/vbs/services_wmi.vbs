' wncServices.WmiInfo beside the script's own WMI queries: the block holds what
' WMI says, in its order, with CR LF line ends. Exit code: number of failures.

Dim services, text, wmi, item, parts, caption, cpuName
Set services = CreateObject("Ostrel.wncServices")
Check Err.Number = 0 And IsObject(services), "CreateObject(""Ostrel.wncServices"")"
If Not IsObject(services) Then WScript.Quit 1

text = services.WmiInfo()
Check Err.Number = 0 And TypeName(text) = "String", "WmiInfo gives a string"
Check Left(text, 2) = "//" And Mid(text, 7, 1) = "-" And Mid(text, 11, 1) = "-" And _
      Mid(text, 23, 2) = vbCrLf, "WmiInfo starts with its stamp: " & Left(text, 24)
Check Right(text, 2) = vbCrLf Or Right(text, 1) = " ", "WmiInfo ends with its last section"
Check InStr(Replace(text, vbCrLf, ""), vbLf) = 0, "no bare line feed"

Set wmi = GetObject("winmgmts:{impersonationLevel=impersonate}!\\.\root\cimv2")
Check Err.Number = 0, "the script's own WMI"
For Each item In wmi.ExecQuery("Select * from Win32_Processor")
    If IsEmpty(cpuName) Then cpuName = Trim(item.Name)
Next
For Each item In wmi.ExecQuery("Select * from Win32_OperatingSystem")
    parts = Split(item.Name, "|")
    caption = Trim(parts(0))
Next
Check Err.Number = 0, "the processor and the system by the script"
Check InStr(text, "//CPU_0 " & cpuName & ", ") > 0, "the processor line: CPU_0 " & cpuName
Check InStr(text, "//" & caption & ", ") > 0, "the system line: " & caption
Check InStr(text, "//CPU_0 ") < InStr(text, "//" & caption & ", "), "the processor before the system"

WScript.Quit failures
