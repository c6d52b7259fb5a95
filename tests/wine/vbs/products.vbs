' wncSoftwareProducts and wncSoftwareProduct from a script host: the error
' numbers a script sees, the default member, For Each, one object per
' record, and variables passed by reference. Argument 1: "catalogue" when the
' Toolbar key holds the test products (see com_server.sh).
' Exit code: number of failures.

Dim products, product, other, item, count, name, key, names, value
Set products = CreateObject("Ostrel.wncSoftwareProducts")
Check Err.Number = 0 And IsObject(products), "CreateObject(""Ostrel.wncSoftwareProducts"")"
Set product = CreateObject("Ostrel.wncSoftwareProduct")
Check Err.Number = 0 And IsObject(product), "CreateObject(""Ostrel.wncSoftwareProduct"")"
If Not IsObject(products) Or Not IsObject(product) Then WScript.Quit 1

' The run time's own numbers and descriptions.
Check products.Count = 0, "a new collection is empty"
Set item = products(1)
Check Err.Number = 9 And Err.Description = "Subscript out of range", "products(1) on an empty collection: 9"
Set item = products.Item("abc")
Check Err.Number = 5 And Err.Description = "Invalid procedure call or argument", "Item(""abc"") missing: 5"
products.Remove "abc"
Check Err.Number = 0, "Remove of a missing key is quiet"

' Variables pass by reference (VT_BYREF|VT_VARIANT) for the typed parameters.
name = "x" : key = "k"
Set product = products.Add(name, key)
Check Err.Number = 0 And products.Count = 1, "Add(variable, variable)"
Check name = "x" And key = "k", "Add leaves its arguments as they were"
key = "K"
Set other = products.Add("y", key)
Check Err.Number = 457 And Err.Description = "This key is already associated with an element of this collection", _
      "a key differing only in case: 457"
Check products.Count = 1, "the refused record isn't added"
Set other = products.Add("x")
Check Err.Number = 0 And products.Count = 2, "Add without a key, twice the same name"
Set other = products.Add(name)
Check Err.Number = 0 And products.Count = 3, "Add(variable) without a key"
Set item = products(key)
Check Err.Number = 0 And item Is product, "products(variable) reaches Item, the same object (Is)"
Set item = products("k")
Check item Is products(1), "the record handed out twice is one object"
Set item = products(1.5)
Check Err.Number = 0 And item Is products(2), "a fractional position rounds like the run time (1.5 -> 2)"
Set item = products(Nothing)
Check Err.Number = 13, "an object as index: 13"

' For Each walks the list in order through NewEnum.
count = 0 : names = ""
For Each item In products
    count = count + 1
    names = names & item.ProductName & ";"
Next
Check Err.Number = 0 And count = 3 And names = "x;x;x;", "For Each visits every record in order"

products.Remove 1
Check Err.Number = 0 And products.Count = 2, "Remove(1)"
products.Remove key
Check Err.Number = 0 And products.Count = 2, "Remove of a key that went is quiet"
products.SaveAll
Check Err.Number = 0 And products.Count = 2, "SaveAll changes nothing"

' The record's properties through late binding.
Set product = CreateObject("Ostrel.wncSoftwareProduct")
product.ProductName = "NoSuchProduct"
Check Err.Number = 0 And product.ProductName = "NoSuchProduct" And product.BuildID = "", _
      "naming a record without a key leaves BuildID empty"
product.PartNumber = "abc"
product.PartNumber = "ABC"
Check product.PartNumber = "abc", "a PartNumber write that changes only the case is dropped"
product.ApplicationPath = "C:\App\" : product.IconFile = "i.ico" : product.Label = "L"
product.Revision = "r" : product.ToolTip = "t"
Check product.ApplicationPath = "C:\App\" And product.IconFile = "i.ico" And product.Label = "L" _
      And product.Revision = "r" And product.ToolTip = "t" And Err.Number = 0, "string properties"
product.VersionMajor = 9 : product.VersionMinor = "30" : product.VersionBugFix = 2
Check product.VersionMajor = 9 And product.VersionMinor = 30 And product.VersionBugFix = 2 _
      And Err.Number = 0, "version numbers (text converted)"
Check TypeName(product.VersionMajor) = "Integer", "version numbers are 16-bit"
product.VersionMajor = 40000
Check Err.Number = 6, "a version number beyond 16 bits: 6"
product.VersionMajor = "nine"
Check Err.Number = 13, "a version number that isn't one: 13"
product.BuildID = "1"
Check Err.Number <> 0, "BuildID can't be written"
product.Load
Check Err.Number = 0 And product.VersionMajor = 0 And product.Label = "", "Load refreshes from the (missing) key"
value = TypeName(product)
Check value = "wncSoftwareProduct" Or value = "_wncSoftwareProduct", "TypeName: " & value

If WScript.Arguments.Count > 0 Then
    If WScript.Arguments(0) = "catalogue" Then
        ' ReadAll through the automation interface: the test keys hold two
        ' known products under one part number and an unknown one.
        Set products = CreateObject("Ostrel.wncSoftwareProducts")
        products.ReadAll
        Check Err.Number = 0 And products.Count = 2, "ReadAll finds the two known products"
        names = ""
        For Each item In products
            names = names & item.PartNumber & "=" & item.ProductName & ";"
        Next
        Check names = "QRL-2040=Alpha;QRL-3100=Beta;", "in part-number order, first key wins: " & names
        Set item = products("qrl-3100")
        Check Err.Number = 0 And item.BuildID = "9300003" And item.Label = "0", "record read from its key"
        Check item Is products(2), "the catalogue's record is one object"
    End If
End If

WScript.Quit failures
