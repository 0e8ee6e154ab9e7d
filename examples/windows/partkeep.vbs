' A host in a script: picks parts with the selection dialog, or fetches one part without it.
'
'   cscript //nologo partkeep.vbs pick WORKFOLDER [LANGUAGE]
'   cscript //nologo partkeep.vbs read WORKFOLDER SERVER FOLDER PART
'
' LANGUAGE: 1 English, 2 Japanese, 3 simplified Chinese. Parts are printed one to a line, fields between tabs.
Option Explicit

Dim arguments, host
Set arguments = WScript.Arguments
If arguments.Count < 2 Then
    WScript.Echo "usage: partkeep.vbs pick WORKFOLDER [LANGUAGE] | read WORKFOLDER SERVER FOLDER PART"
    WScript.Quit 2
End If

Set host = CreateObject("ORVICPartkeepRead.PartkeepReadImpl")
host.SetWorkingFolder arguments(1) & "\" ' the separator is the host's business
If arguments(0) = "read" Then
    ReadPart arguments(2), arguments(3), arguments(4)
Else
    PickParts
End If

Sub PickParts
    Dim count, index
    If arguments.Count > 2 Then host.SetLanguageID CLng(arguments(2))
    host.InvokePartkeepMultiSelection 1
    host.NumberOfPartsSelected count ' none after a cancel
    WScript.Echo count & " parts"
    For index = 0 To count - 1
        PrintPart index
    Next
End Sub

Sub PrintPart(index)
    Dim server, folder, path, sy, nc, name, comment, material, machine, machineType, thickness, quantity
    host.GetPartInfo index, server, folder, path, sy, nc, name, comment, material, machine, machineType, thickness, _
        quantity
    WScript.Echo name & vbTab & quantity & vbTab & material & vbTab & thickness & vbTab & path
End Sub

' A part that was not read leaves everything empty; with the part's own data thickness is in 1/10000.
Sub ReadPart(server, folder, part)
    Dim path, name, comment, material, thickness, quantity
    host.ReadCADDataForTessara server, folder, part, "", path, name, comment, material, thickness, quantity
    WScript.Echo name & vbTab & quantity & vbTab & material & vbTab & thickness & vbTab & path
    If name = "" Then WScript.Quit 3 ' a number that no trouble of the script host's own has
End Sub
