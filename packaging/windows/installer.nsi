; Installs the 32-bit component into Velmora's folder and registers it there.
;   setup.exe [/S] [/D=FOLDER]
Unicode true
!include MUI2.nsh

Name "VLOUTSync ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES32\Velmora"
InstallDirRegKey HKLM "Software\Velmora\VLOUTSync" "Folder"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "VLOUTSync"
VIAddVersionKey "FileDescription" "VLOUTSync"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" ""

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\VLOUTSync"
!define MUI_DIRECTORYPAGE_TEXT_TOP "VelmoraDB.vdb가 있는 벨모라 폴더를 선택하십시오. 벨모라와 아웃룩을 먼저 닫아 주십시오."
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "Korean"

Section
  SetOutPath "$INSTDIR"
  ClearErrors
  File "${DLL}"
  IfErrors 0 +3
    SetErrorLevel 2
    Abort "VLOUTSync.dll을 쓸 수 없습니다. 벨모라를 닫고 다시 실행하십시오."
  ClearErrors
  ExecWait '"$SYSDIR\regsvr32.exe" /s "$INSTDIR\VLOUTSync.dll"' $0
  StrCmp $0 0 +3
    SetErrorLevel 3
    Abort "VLOUTSync.dll을 등록할 수 없습니다."
  WriteUninstaller "$INSTDIR\VLOUTSync-uninstall.exe"
  WriteRegStr HKLM "Software\Velmora\VLOUTSync" "Folder" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "VLOUTSync"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\VLOUTSync-uninstall.exe"'
  WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL}" "NoRepair" 1
SectionEnd

; Takes away what was installed and nothing else: the database and the settings stay.
Section Uninstall
  ExecWait '"$SYSDIR\regsvr32.exe" /s /u "$INSTDIR\VLOUTSync.dll"' $0
  Delete "$INSTDIR\VLOUTSync.dll"
  IfFileExists "$INSTDIR\VLOUTSync.dll" 0 +3
    SetErrorLevel 2
    Abort "VLOUTSync.dll을 지울 수 없습니다. 벨모라를 닫고 다시 실행하십시오."
  Delete "$INSTDIR\VLOUTSync-uninstall.exe"
  DeleteRegKey HKLM "${UNINSTALL}"
  DeleteRegKey HKLM "Software\Velmora\VLOUTSync"
  DeleteRegKey /ifempty HKLM "Software\Velmora"
  RMDir "$INSTDIR"
SectionEnd
