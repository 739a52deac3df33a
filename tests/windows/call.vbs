' Creates the class and calls its method as the host application does, late bound; as often as the
' argument says.
Set component = CreateObject("VLOUTSync.ORUN")
For call_ = 1 To CInt(WScript.Arguments(0))
  result = component.OUTSYNCRUN()
  If Not IsEmpty(result) Then WScript.Quit 3
Next
WScript.Quit 0
