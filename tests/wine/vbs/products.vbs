' wncSoftwareProducts and wncSoftwareProduct from a script host: what only a
' script sees (the collection's rules themselves: the catalogue suite; the
' enumerator's and the conversions' codes: com_host). The run time's error
' number, the default member, For Each, one object per record, variables
' passed by reference, each property by name, ReadAll from the test keys
' com_server.sh writes in the 32-bit view. Exit code: number of failures.

Dim products, product, item, name, key, names
Set products = CreateObject("Ostrel.wncSoftwareProducts")
Check Err.Number = 0 And IsObject(products), "CreateObject(""Ostrel.wncSoftwareProducts"")"
If Not IsObject(products) Then WScript.Quit 1

' Variables pass by reference (VT_BYREF|VT_VARIANT) for the typed parameters;
' the key is optional.
name = "x" : key = "k"
Set product = products.Add(name, key)
Check Err.Number = 0 And name = "x" And key = "k", "Add(variable, variable) leaves them as they were"
products.Add name
Set item = products(key)
Check Err.Number = 0 And item Is product And products("k") Is products(1), _
      "products(variable) reaches Item; the record handed out twice is one object (Is)"

' Each property by its name, the version numbers 16-bit.
Set product = CreateObject("Ostrel.wncSoftwareProduct")
product.ProductName = "P" : product.PartNumber = "abc" : product.ApplicationPath = "C:\App\"
product.IconFile = "i.ico" : product.Label = "L" : product.Revision = "r" : product.ToolTip = "t"
Check product.ProductName = "P" And product.PartNumber = "abc" And product.ApplicationPath = "C:\App\" _
      And product.IconFile = "i.ico" And product.Label = "L" And product.Revision = "r" _
      And product.ToolTip = "t" And product.BuildID = "" And Err.Number = 0, "string properties"
product.VersionMajor = 9 : product.VersionMinor = "30" : product.VersionBugFix = 2
Check product.VersionMajor = 9 And product.VersionMinor = 30 And product.VersionBugFix = 2 _
      And TypeName(product.VersionMajor) = "Integer" And Err.Number = 0, "version numbers: 16-bit, text converted"
product.VersionMajor = 40000
Check Err.Number = 6, "a version number beyond 16 bits: 6"
product.BuildID = "1"
Check Err.Number <> 0, "BuildID can't be written"

' ReadAll, walked by For Each.
Set products = CreateObject("Ostrel.wncSoftwareProducts")
products.ReadAll
For Each item In products
    names = names & item.PartNumber & "=" & item.ProductName & ";"
Next
Check Err.Number = 0 And names = "QRL-2040=Alpha;QRL-3100=Beta;", "ReadAll in part-number order: " & names
Check products("qrl-3100").BuildID = "9000000", "a number read from its key (the build number's rules: the catalogue suite)"

WScript.Quit failures
