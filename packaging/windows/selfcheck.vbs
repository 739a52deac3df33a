' Asks this machine's Jet and Outlook what the component counts on, and prints the answers. It works
' on a copy of the database, and on one contact that it makes and removes again.
'   cscript //nologo selfcheck.vbs FOLDER
Option Explicit
On Error Resume Next
Const kKey = 32001
Dim folder, files, copy, connection, rows, outlook, space, contacts, item, other, picture, id, before, table, answer

If WScript.Arguments.Count < 1 Then
  WScript.Echo "cscript //nologo selfcheck.vbs ""C:\Program Files (x86)\Velmora"""
  WScript.Quit 2
End If
folder = WScript.Arguments(0)
Set files = CreateObject("Scripting.FileSystemObject")

' The answer, or the failure of what was done to get it: a statement that fails leaves the answer as it was.
Sub Report(name)
  If Err.Number <> 0 Then answer = "failed, " & Hex(Err.Number) & " " & Err.Description & State()
  WScript.Echo name & ": " & answer
  Err.Clear
  answer = "done"
End Sub
answer = "done"

' The number that Jet gives its failure; nothing for one of Outlook's.
Function State
  On Error Resume Next
  State = " (" & connection.Errors.Item(0).SQLState & ")"
End Function

Function Run(sql)
  Dim affected
  connection.Execute sql, affected, -1
  Run = affected
End Function

Function Read(column)
  Set rows = CreateObject("ADODB.Recordset")
  rows.CursorLocation = 3
  rows.Open "SELECT * from tbl_namecard where [i_idx] = " & kKey, connection, 0, -1, -1
  Set Read = rows.Fields.Item(column)
End Function

Function Shown(value)
  If IsNull(value) Then
    Shown = "Null"
  Else
    Shown = "'" & value & "'"
  End If
End Function

' --- Jet --------------------------------------------------------------------------------------------

If Not files.FolderExists(folder & "\temp") Then files.CreateFolder folder & "\temp"
copy = folder & "\temp\selfcheck.vdb"
files.CopyFile folder & "\VelmoraDB.vdb", copy, True
Report "copy of the database"
Set connection = CreateObject("ADODB.Connection")
connection.ConnectionTimeout = 30
connection.Open "provider=Microsoft.Jet.OLEDB.4.0;Data Source=" & copy & _
  ";Jet OLEDB:Database Password=pinewood930417;Persist Security Info=True;User ID=admin", "", "", -1
answer = "open " & connection.State
Report "Jet"
Run "INSERT INTO tbl_namecard(i_idx,f_idx,p_idx,FullName) VALUES(" & kKey & ",2,0,'selfcheck')"
Report "row"
Run "UPDATE tbl_namecard SET Memo_='a'&Chr(124)&'b' where [i_idx]=" & kKey
answer = Shown(Read("Memo_").Value)
Report "bar by Chr"
Run "UPDATE tbl_namecard SET Memo_='c|d' where [i_idx]=" & kKey
answer = Shown(Read("Memo_").Value)
Report "bar as it is"
Run "UPDATE tbl_namecard SET Memo_='" & Replace(String(300, "|"), "|", "'&Chr(124)&'") & "' where [i_idx]=" & kKey
answer = Len(Read("Memo_").Value)
Report "300 bars"
Run "UPDATE tbl_namecard SET Memo_='" & String(60000, "m") & "' where [i_idx]=" & kKey
answer = Len(Read("Memo_").Value)
Report "memo of 60000"
Run "UPDATE tbl_namecard SET Memo_='" & String(70000, "m") & "' where [i_idx]=" & kKey
answer = Len(Read("Memo_").Value)
Report "memo of 70000"
Run "UPDATE tbl_namecard SET JobTitle='' where [i_idx]=" & kKey
answer = Shown(Read("JobTitle").Value)
Report "zero-length text"
answer = Read("Last_moddate").Type
Report "type of Last_moddate"
answer = Read("Birthday").Type
Report "type of Birthday"
answer = Read("Thumbnail").ActualSize
Report "size of Thumbnail"
Set rows = Nothing
Set connection = Nothing
files.DeleteFile copy
Report "copy of the database"

' --- Outlook ----------------------------------------------------------------------------------------

Set outlook = CreateObject("Outlook.Application")
answer = outlook.Version
Report "Outlook"
Set space = outlook.GetNamespace("MAPI")
Set contacts = space.GetDefaultFolder(10)
answer = contacts.Items.Count
Report "contacts"
picture = folder & "\temp\selfcheck.jpg"
files.CreateTextFile(picture, True).Write "JFIF"
Set item = outlook.CreateItem(2)
item.LastName = "selfcheck"
item.Body = "memo"
item.UserProperties.Add("VLID", 1).Value = CStr(kKey)
item.Attachments.Add(picture).DisplayName = "Card.jpg"
item.Save
answer = TypeName(item)
Report "type name"
answer = item.Class
Report "class"
answer = item.LastModificationTime
Report "time after the first save"
id = item.EntryID
before = item.LastModificationTime
item.JobTitle = "again"
item.Save
answer = CStr(item.LastModificationTime <> before)
Report "time moved by a save"
Set item = Nothing

Set other = space.GetItemFromID(id)
answer = other.LastName
Report "entry id alone"
Set other = Nothing
Set other = space.GetItemFromID(id, contacts.StoreID)
answer = other.LastName
Report "entry id and store id"
answer = CStr(other.LastModificationTime <> before)
Report "time in the item opened anew"
before = Timer
answer = Len(other.Body) & " of 4"
answer = answer & ", " & Int(Timer - before) & " s"
Report "memo read back"
answer = other.Attachments.Item(1).DisplayName
Report "attachment"
answer = other.UserProperties.Item(1).Value
Report "key"
Set table = contacts.GetTable()
table.Columns.RemoveAll
table.Columns.Add "EntryID"
table.Columns.Add "MessageClass"
table.Columns.Add _
  "http://schemas.microsoft.com/mapi/string/{00020329-0000-0000-C000-000000000046}/VLID/0x0000001f"
answer = UBound(table.GetNextRow().GetValues()) + 1 & " columns"
Report "table with keys"
If other Is Nothing Then Set other = space.GetItemFromID(id)
other.Delete
Report "contact"
files.DeleteFile picture

' --- the rest ---------------------------------------------------------------------------------------

Set other = CreateObject("Codejock.SkinFramework")
Report "skin framework"
