; Installs the component for hosts of one width into Velmora's folder and registers it there, for
; the machine or for the present user, who needs no administrator then.
;   setup.exe [/S] [/AllUsers|/CurrentUser] [/D=FOLDER]
; Values from outside: VERSION, BITS (x86 or x64), DLL, OUTPUT, and SIGN, the command that signs a
; file, where there is one.
Unicode true
!if ${BITS} == x64
  Target amd64-unicode
!endif
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INIT_TEXT_ALLUSERSNOTPOSSIBLE "$(NotForAll)"
!include MultiUser.nsh
!include MUI2.nsh

Name "VLOUTSync ${VERSION} (${BITS})"
OutFile "${OUTPUT}"
!if ${BITS} == x64
  !define FOLDER "$PROGRAMFILES64\Velmora"
!else
  !define FOLDER "$PROGRAMFILES32\Velmora"
!endif
InstallDir "${FOLDER}"
SetCompressor /SOLID lzma
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"'
  !finalize '${SIGN} "%1"'
!endif

!define PRODUCT "Software\Velmora\VLOUTSync"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\VLOUTSync-${BITS}"
!define MUI_DIRECTORYPAGE_TEXT_TOP "$(WhichFolder)"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
; Which the Korean of NSIS lacks.
!define MULTIUSER_TEXT_INSTALLMODE_TITLE "사용자 선택"
!define MULTIUSER_TEXT_INSTALLMODE_SUBTITLE "누구를 위해 설치할지 선택하십시오."
!define MULTIUSER_INNERTEXT_INSTALLMODE_TOP "벨모라를 관리자 권한으로 실행한다면 모든 사용자를 위해 설치하십시오. $(^ClickNext)"
!define MULTIUSER_INNERTEXT_INSTALLMODE_ALLUSERS "이 컴퓨터의 모든 사용자"
!define MULTIUSER_INNERTEXT_INSTALLMODE_CURRENTUSER "현재 사용자"
!insertmacro MUI_LANGUAGE "Korean"
!insertmacro MUI_LANGUAGE "English"

!macro Text name korean english
  LangString ${name} ${LANG_KOREAN} "${korean}"
  LangString ${name} ${LANG_ENGLISH} "${english}"
!macroend
!insertmacro Text WhichFolder \
  "VelmoraDB.vdb가 있는 벨모라 폴더를 선택하십시오. 벨모라와 아웃룩을 먼저 닫아 주십시오." \
  "Choose Velmora's folder, which holds VelmoraDB.vdb. Please close Velmora and Outlook first."
!insertmacro Text InUse \
  "VLOUTSync.dll을 바꿀 수 없습니다. 벨모라를 닫거나 이 폴더에 쓸 수 있는 사용자로 다시 실행하십시오." \
  "VLOUTSync.dll cannot be replaced. Close Velmora, or run this again as a user who may write to the folder."
!insertmacro Text NotRegistered "VLOUTSync.dll을 등록할 수 없습니다." "VLOUTSync.dll cannot be registered."
!insertmacro Text NotForAll \
  "모든 사용자를 위해 설치하려면 관리자 권한이 필요합니다." \
  "To install for all users you need to be an administrator."

VIProductVersion "${VERSION}.0"
!macro Version language description
  VIAddVersionKey /LANG=${language} "ProductName" "VLOUTSync"
  VIAddVersionKey /LANG=${language} "FileDescription" "${description}"
  VIAddVersionKey /LANG=${language} "FileVersion" "${VERSION}"
  VIAddVersionKey /LANG=${language} "LegalCopyright" ""
!macroend
!insertmacro Version ${LANG_KOREAN} "벨모라 - 아웃룩 연락처 교환 설치"
!insertmacro Version ${LANG_ENGLISH} "Velmora - Outlook contact exchange setup"

; What the registry knows is kept apart by width and scope, as the system keeps components. Leaves in
; $1 what regsvr32 is to be told of the scope.
!macro EnterScope
  !if ${BITS} == x64
    SetRegView 64
  !endif
  StrCpy $1 ""
  ${If} $MultiUser.InstallMode == "CurrentUser"
    StrCpy $1 "/n /i:user"
  ${EndIf}
!macroend

Function .onInit
  StrCpy $R0 $INSTDIR ; which the command line or the default names
  !insertmacro MULTIUSER_INIT
  !insertmacro EnterScope
  StrCpy $INSTDIR $R0
  ReadRegStr $R1 SHCTX "${PRODUCT}" "Folder"
  ${If} $R0 == "${FOLDER}"
  ${AndIf} $R1 != ""
    StrCpy $INSTDIR $R1
  ${EndIf}
FunctionEnd

Function un.onInit
  !insertmacro MULTIUSER_UNINIT
FunctionEnd

!macro Fail level text
  SetErrorLevel ${level}
  MessageBox MB_OK|MB_ICONEXCLAMATION "${text}" /SD IDOK
  Abort "${text}"
!macroend

; A host that runs holds the DLL: told before anything is changed.
!macro RequireFree
  ${If} ${FileExists} "$INSTDIR\VLOUTSync.dll"
    ClearErrors
    FileOpen $0 "$INSTDIR\VLOUTSync.dll" a
    ${If} ${Errors}
      !insertmacro Fail 2 "$(InUse)"
    ${EndIf}
    FileClose $0
  ${EndIf}
!macroend

Section
  !insertmacro EnterScope
  !insertmacro RequireFree
  SetOverwrite try
  SetOutPath "$INSTDIR"
  ClearErrors
  File "/oname=VLOUTSync.dll" "${DLL}"
  ${If} ${Errors}
    !insertmacro Fail 2 "$(InUse)"
  ${EndIf}
  ExecWait '"$SYSDIR\regsvr32.exe" /s $1 "$INSTDIR\VLOUTSync.dll"' $0
  ${If} $0 <> 0
    !insertmacro Fail 3 "$(NotRegistered)"
  ${EndIf}
  WriteUninstaller "$INSTDIR\VLOUTSync-uninstall.exe"
  WriteRegStr SHCTX "${PRODUCT}" "Folder" "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL}" "DisplayName" "VLOUTSync (${BITS})"
  WriteRegStr SHCTX "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL}" "UninstallString" \
    '"$INSTDIR\VLOUTSync-uninstall.exe" /$MultiUser.InstallMode'
  WriteRegDWORD SHCTX "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD SHCTX "${UNINSTALL}" "NoRepair" 1
SectionEnd

; Takes away what was installed and nothing else: the database and the settings stay.
Section Uninstall
  !insertmacro EnterScope
  !insertmacro RequireFree
  ExecWait '"$SYSDIR\regsvr32.exe" /s /u $1 "$INSTDIR\VLOUTSync.dll"' $0
  Delete "$INSTDIR\VLOUTSync.dll"
  Delete "$INSTDIR\VLOUTSync-uninstall.exe"
  DeleteRegKey SHCTX "${UNINSTALL}"
  DeleteRegKey SHCTX "${PRODUCT}"
  DeleteRegKey /ifempty SHCTX "Software\Velmora"
  RMDir "$INSTDIR"
SectionEnd
