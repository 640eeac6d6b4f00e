' The in-process server as a script sees it: run with
'   wine cscript //nologo tests/com/suite.vbs
' after `wine regsvr32 TylHartTypes.dll`. Prints each failure and ends with
' "N passed, N failed"; the exit code is the number of failures.
Option Explicit

Const InvalidArgument = -2147024809   ' 0x80070057, the library's own checks
Const Lib = "TylHartTypes."
Dim passed, failed
passed = 0
failed = 0

Sub Check(label, actual, expected)
    If CStr(actual) = CStr(expected) Then
        passed = passed + 1
    Else
        failed = failed + 1
        WScript.Echo "FAILED: " & label & ": got [" & actual & "], expected [" & expected & "]"
    End If
End Sub

' The pending error as "number|Source|Description", cleared.
Function Record()
    Record = Err.Number & "|" & Err.Source & "|" & Err.Description
    Err.Clear
End Function

Function Runtime(code, description)
    Runtime = code & "|TylHartTypes|" & description
End Function

Function Definition(name, kind)
    Set Definition = CreateObject(Lib & "CDefinition")
    Definition.Initialize name, kind
End Function

' ---- Every class by its programmatic name, with its rendering ----------------
Sub Created(className, rendering)
    Dim o
    Set o = CreateObject(Lib & className)
    If rendering = "" Then
        Check className & " created", IsObject(o), True
    Else
        Check className & ".ToString", o.ToString(), rendering
    End If
End Sub

Created "CDefinition", "Definition{Name:unknown}"
Created "DDEnums", ""
Created "CDefinitionList", "DefinitionList{Count:0}"
Created "CValueSet", "ValueSet{Count:0}"
Created "DDTypes", ""
Created "COutputStatusClass", "OutputStatusClass{BESCHEIBUNG:00}"
Created "COutputStatusClassSet", "OutputStatusClassSet{Count:0}"
Created "CDataItem", "DataItem{}"
Created "CDataItemList", "DataItemList{Count:0}"
Created "CEnumerator", "Enumerator{Description:}"
Created "CResponseCode", "ResponseCode{Description:}"
Created "CResponseCodeSet", "ResponseCodeSet{Count:0}"
Created "CValueList", "ValueList{Count:0}"
Created "CTransaction", "Transaction{TNo:0}"
Created "CTransactionSet", "TransactionSet{Count:0}"
Created "CDefinitionSet", "DefinitionSet{Count:0}"
Created "CCommand", "COMMAND{Definition{Name:unknown}}"
Created "CStatusClass", "StatusClass{Other:0000000000000000}"
Created "CVariableClass", "VariableClass{Type:0000000000000}"
Created "CBitEnumerator", "BitEnumerator{Description:}"
Created "CMenu", "MENU{Definition{Name:unknown}}"
Created "CMenuItemList", "MenuItemList{Count:0}"
Created "CMenuItem", "MenuItem{Definition{Name:unknown}}"
Created "CMember", "Member{Definition{Name:unknown}}"
Created "CElementList", "CElementList{Count:0}"
Created "CElement", "Element{Definition{Name:unknown}}"
Created "CMemberSet", "MemberSet{Count:0}"
Created "CCollection", "COLLECTION{Definition{Name:unknown}}"
Created "CArray", "ARRAY{Definition{Name:unknown}}"
Created "CWriteAsOne", "WRITE_AS_ONE{Definition{Name:unknown}}"
Created "CUnit", "UNIT{Definition{Name:unknown}}"
Created "CRefresh", "REFRESH{Definition{Name:unknown}}"
Created "CVariableDefinitionSet", "VariableDefinitionSet{Count:0}"
Created "CMethodClass", "MethodClass{Type:00000000000}"
Created "CMethod", "METHOD{Definition{Name:unknown}}"
Created "CObject", "OBJECT{}"
Created "CTransactionDef", "TransactionDef{Number:0}"
Created "CType", "Type{Kind:-1}}"
Created "CVariable", "VARIABLE{Definition{Name:unknown}}"
Created "CEditDisplay", "EDIT_DISPLAY{Definition{Name:unknown}}"
Created "CEditDisplayItem", "EditDisplayItem{Definition{Name:unknown}}"
Created "CEditDisplayItemList", "EditDisplayItemList{Count:0}"
Created "CVariableItem", "VariableItem{Definition{Name:unknown}}"
Created "CVariableItemList", "DataItemList{Count:0}"
Created "CCharArray", "CharArray{Text:}"
Created "CObjectSet", "ObjectSet{Count:0}"
Created "CEnumeratorSet", "VariableEnumeratorSet{Count:0}"
Created "CBitEnumeratorSet", "VariableBitEnumeratorSet{Count:0}"

On Error Resume Next
Dim nothingMade
Set nothingMade = CreateObject(Lib & "CNoSuchClass")
Check "CreateObject of an unknown name", Err.Number, 429
Err.Clear
On Error GoTo 0

' ---- Members of every kind -----------------------------------------------------
Dim d, v, c, l, s, size, x
Set d = Definition("pressure", 0)                       ' method
Check "get", d.Name, "pressure"
d.name = "Flow"                                         ' let, names ignore case
Check "let", d.ToString(2), "Definition{Name:Flow, Kind:0}"
Check "optional argument left out", d.ToString, "Definition{Name:Flow}"
Set v = CreateObject(Lib & "CVariable")
Set v.Definition = d                                    ' set
Check "set stores the object itself", v.Definition Is d, True
Check "one identity per object", v.Definition Is v.Definition, True
Set c = CreateObject(Lib & "CCharArray")
c.Size = 4
c.text = "abcd"
x = c                                                   ' default member
Check "default member", x, "abcd"
Check "rendering of the default member", c.ToString(2), "CharArray{Text:abcd, Size:4}"

' A by-reference argument comes back with the member's value.
v.TypeInfo.Kind = 7
v.TypeInfo.Size = 8
size = -1
Check "IsString", v.IsString("abcdefgh", size), True
Check "by-reference write-back", size, 8

Set l = CreateObject(Lib & "CValueList")
l.Add "a"
l.Add Null
l.Add 2, , 1                                            ' Before left out, After 1
s = ""
For Each x In l
    s = s & TypeName(x) & ";"
Next
Check "For Each over values, optional argument in the middle", s, "String;Integer;Null;"

' ---- For Each over every container -----------------------------------------
Function Element(progId, n)
    Dim e, def
    Set e = CreateObject(Lib & progId)
    Select Case progId
        Case "CDefinition": e.Initialize "e" & n, 0
        Case "CObject": Set def = CreateObject(Lib & "CVariable"): Set def.Definition = Definition("e" & n, 0): Set e = def.MakeObject
        Case "CMember": e.Ident = "e" & n
        Case "COutputStatusClass": e.Range = n
        Case "CTransaction": e.TNo = n
        Case "CEnumerator", "CBitEnumerator", "CResponseCode": e.Value = n
    End Select
    Set Element = e
End Function

Sub Iterated(container, elementClass)
    Dim o, first, e, count, same
    Set o = CreateObject(Lib & container)
    If elementClass = "" Then
        o.Add 1
        o.Add 2
    Else
        Set first = Element(elementClass, 1)
        o.Add first
        o.Add Element(elementClass, 2)
    End If
    count = 0
    For Each e In o
        count = count + 1
    Next
    Check "For Each over " & container, count & " " & o.Count, "2 2"
End Sub

Iterated "CDefinitionList", "CDefinition"
Iterated "CValueSet", ""
Iterated "COutputStatusClassSet", "COutputStatusClass"
Iterated "CDataItemList", "CDataItem"
Iterated "CResponseCodeSet", "CResponseCode"
Iterated "CValueList", ""
Iterated "CTransactionSet", "CTransaction"
Iterated "CDefinitionSet", "CDefinition"
Iterated "CMenuItemList", "CMenuItem"
Iterated "CElementList", "CElement"
Iterated "CMemberSet", "CMember"
Iterated "CVariableDefinitionSet", "CDefinition"
Iterated "CEditDisplayItemList", "CEditDisplayItem"
Iterated "CVariableItemList", "CVariableItem"
Iterated "CObjectSet", "CObject"
Iterated "CEnumeratorSet", "CEnumerator"
Iterated "CBitEnumeratorSet", "CBitEnumerator"

' Lists hand out the stored element, sets a copy of it.
Dim list, set1
Set list = CreateObject(Lib & "CDefinitionList")
Set set1 = CreateObject(Lib & "CDefinitionSet")
list.Add d
set1.Add d
Check "list element identity", list.Item(1) Is d, True
Check "set element copy", (set1.Item(1) Is d) & " " & set1.Item(1).Compare(d), "False True"
For Each x In list
    Check "For Each hands out the stored element", x Is d, True
Next
Check "rendering of a filled list", list.ToString(2), "DefinitionList{Count:1, Items: { Definition{Name:Flow}}}"

' ---- Error records; a refused call leaves its object as it was -------------------
Dim target
Function Attempt(operation)
    On Error Resume Next
    Select Case operation
        Case "read an uninitialised name": Set target = CreateObject(Lib & "CDefinition"): x = target.Name
        Case "initialise twice": Set target = Definition("pressure", 0): target.Initialize "other", 2
        Case "assign the read-only Kind": Set target = Definition("pressure", 0): target.Kind = 1
        Case "leave out a required argument": Set target = Definition("pressure", 0): target.Initialize "other"
        Case "read past the end": Set target = CreateObject(Lib & "CValueList"): x = target.Item(3)
        Case "add a duplicate key": Set target = CreateObject(Lib & "CDefinitionSet"): target.Add d: target.Add d
        Case "add a definition of another kind": Set target = CreateObject(Lib & "CVariableDefinitionSet"): target.Add Definition("m", 2)
        Case "pass a foreign object": Set target = CreateObject(Lib & "CValueList"): target.Add CreateObject("Scripting.Dictionary")
    End Select
    Attempt = Record()
End Function

Sub Refused(operation, expected, after)
    Check operation, Attempt(operation), expected
    Check operation & ", object unchanged", target.ToString(2), after
End Sub

Refused "read an uninitialised name", InvalidArgument & "|CDefinition.DefName|Object not yet initialized!", "Definition{Name:unknown, Kind:-1}"
Refused "initialise twice", InvalidArgument & "|CDefinition.Initialize|Once a Kind is initialized, it must not be changed anymore!", "Definition{Name:pressure, Kind:0}"
Refused "assign the read-only Kind", Runtime(438, "Object doesn't support this property or method"), "Definition{Name:pressure, Kind:0}"
Refused "leave out a required argument", Runtime(449, "Argument not optional"), "Definition{Name:pressure, Kind:0}"
Refused "read past the end", Runtime(9, "Subscript out of range"), "ValueList{Count:0, Items: {}}"
Refused "add a duplicate key", Runtime(457, "This key is already associated with an element of this collection"), "DefinitionSet{Count:1, Items: { Definition{Name:Flow}}}"
Refused "add a definition of another kind", InvalidArgument & "|CDefinitionSet.Add|The Object has the wrong kind for that action!", "VariableDefinitionSet{Count:0, Items: {}}"
Refused "pass a foreign object", Runtime(13, "Type mismatch"), "ValueList{Count:0, Items: {}}"

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed
