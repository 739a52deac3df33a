' Creates the class and calls its method as the host application does, late bound; as often as the
' argument says. With a second argument it waits for that file, which an Outlook that COM has started
' leaves when it ends: nothing may keep it once the window has closed. Says when the class is there.
Set component = CreateObject("VLOUTSync.ORUN")
WScript.Echo "created"
For call_ = 1 To CInt(WScript.Arguments(0))
  result = component.OUTSYNCRUN()
  If Not IsEmpty(result) Then WScript.Quit 3
Next
If WScript.Arguments.Count > 1 Then
  Set files = CreateObject("Scripting.FileSystemObject")
  start = Timer
  Do Until files.FileExists(WScript.Arguments(1))
    If Timer - start > 10 Then WScript.Quit 4
  Loop
End If
WScript.Quit 0
