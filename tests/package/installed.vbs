' After the MSI: the four classes made by ProgID in this script host's
' bitness, and ReadAll reads the product the test put under the Toolbar key.
Dim name, made, products
For Each name In Array("wncSoftwareProducts", "wncSoftwareProduct", "wncPCInfo", "wncServices")
    Set made = CreateObject("Ostrel." & name)
    Check Err.Number = 0 And IsObject(made), "CreateObject(""Ostrel." & name & """)"
Next
Set products = CreateObject("Ostrel.wncSoftwareProducts")
products.ReadAll
Check Err.Number = 0 And products.Count = 1, "ReadAll finds the one product of the Toolbar key"
WScript.Quit failures
