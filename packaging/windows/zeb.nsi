; The installer for Windows: zeb, zebd, zebctl, their DLLs, the examples and the manual; either the publisher as a service or zeb
; when somebody logs on; rights for users; a firewall rule for the control link's ports. scripts/windows/installer gives VERSION,
; FILES (what is installed) and OUT.
;
;   zeb-setup.exe [/S] [/NOSERVICE] [/LOGON] [/D=C:\folder]     /S asks nothing; upgrades in place
;                      /NOSERVICE: no service; /LOGON: zeb starts when somebody logs on, and there is no service
;   uninstall.exe [/S] [/SETTINGS]                     keeps settings, history and pages unless /SETTINGS
Target amd64-unicode
Unicode true
Name "ZEB"
OutFile "${OUT}"
InstallDir "$PROGRAMFILES64\ZEB"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
ShowInstDetails show
ShowUninstDetails show
!include "FileFunc.nsh"
!include "LogicLib.nsh"
!include "Sections.nsh"
!include "x64.nsh"

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZEB"
!define RUN "Software\Microsoft\Windows\CurrentVersion\Run"
!define RULE "ZEB control link"

Page components
Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

; Files that are in use cannot be replaced. The service ends within five seconds, and its program a moment later.
!macro StopService
  nsExec::ExecToLog 'net stop ZEB'
  Pop $0
  ${If} ${FileExists} "$INSTDIR\zebd.exe"
    StrCpy $0 0
    ${Do}
      ClearErrors
      FileOpen $1 "$INSTDIR\zebd.exe" a
      ${IfNot} ${Errors}
        FileClose $1
        ${ExitDo}
      ${EndIf}
      Sleep 200
      IntOp $0 $0 + 1
    ${LoopUntil} $0 > 75
  ${EndIf}
!macroend

!macro LetIn program
  nsExec::ExecToLog 'netsh advfirewall firewall add rule name="${RULE}" dir=in action=allow protocol=TCP localport=6901-6920 program="$INSTDIR\${program}"'
  Pop $0
!macroend

Section "!ZEB"
  SectionIn RO
  SetRegView 64
  !insertmacro StopService
  SetOutPath "$INSTDIR"
  ClearErrors
  File /r "${FILES}/*.*"
  ${If} ${Errors}
    ; What is on air goes on.
    nsExec::ExecToLog 'net start ZEB'
    Pop $0
    SetErrorLevel 2
    Abort "Some files could not be written: close ZEB, zebctl and whatever else runs in $INSTDIR, and start the installer again."
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "ZEB now playing"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
  ; One rule for each, whatever was there before.
  nsExec::ExecToLog 'netsh advfirewall firewall delete rule name="${RULE}"'
  Pop $0
  !insertmacro LetIn "zebd.exe"
!ifdef DESKTOP
  !insertmacro LetIn "zeb.exe"
!endif
  nsExec::ExecToLog '"$INSTDIR\zebd.exe" --open-to-users'
  Pop $0
SectionEnd

!ifdef DESKTOP
Section "Shortcuts" SHORTCUTS
  SetShellVarContext all
  SetOutPath "$INSTDIR"
  CreateDirectory "$SMPROGRAMS\ZEB"
  CreateShortcut "$SMPROGRAMS\ZEB\ZEB.lnk" "$INSTDIR\zeb.exe"
  CreateShortcut "$SMPROGRAMS\ZEB\Remove ZEB.lnk" "$INSTDIR\uninstall.exe"
  CreateShortcut "$DESKTOP\ZEB.lnk" "$INSTDIR\zeb.exe"
SectionEnd

Section /o "Start ZEB with its windows when somebody logs on" LOGON
  SetRegView 64
  WriteRegStr HKLM "${RUN}" "ZEB" '"$INSTDIR\zeb.exe" /SCHEDULE'
  nsExec::ExecToLog '"$INSTDIR\zebd.exe" --remove-service'
  Pop $0
SectionEnd
!endif

Section "Service: publish from the start of the machine on" SERVICE
  SetRegView 64
  DeleteRegValue HKLM "${RUN}" "ZEB"
  nsExec::ExecToLog '"$INSTDIR\zebd.exe" --install-service'
  Pop $0
SectionEnd

; One that was there before goes on, whatever was chosen this time.
Section -Start
  nsExec::ExecToLog 'net start ZEB'
  Pop $0
SectionEnd

; Both would publish from the same settings: the second one could only edit them.
Function .onSelChange
!ifdef DESKTOP
  ${If} $0 == ${LOGON}
  ${AndIf} ${SectionIsSelected} ${LOGON}
    !insertmacro UnselectSection ${SERVICE}
  ${ElseIf} $0 == ${SERVICE}
  ${AndIf} ${SectionIsSelected} ${SERVICE}
    !insertmacro UnselectSection ${LOGON}
  ${EndIf}
!endif
FunctionEnd

Function .onInit
  ${IfNot} ${RunningX64}
    MessageBox MB_OK|MB_ICONSTOP "ZEB needs a 64-bit Windows." /SD IDOK
    Abort
  ${EndIf}
  SetRegView 64
  ; An upgrade goes where the version before is, and publishes the way that was chosen then.
  ReadRegStr $0 HKLM "${UNINSTALL}" "InstallLocation"
  ${If} $0 != ""
    StrCpy $INSTDIR $0
    ReadRegStr $1 HKLM "SYSTEM\CurrentControlSet\Services\ZEB" "ImagePath"
    ${If} $1 == ""
      !insertmacro UnselectSection ${SERVICE}
    ${EndIf}
!ifdef DESKTOP
    ReadRegStr $1 HKLM "${RUN}" "ZEB"
    ${If} $1 != ""
      !insertmacro SelectSection ${LOGON}
    ${EndIf}
!endif
  ${EndIf}
  ${GetParameters} $2
  ClearErrors
  ${GetOptions} $2 "/NOSERVICE" $3
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${SERVICE}
  ${EndIf}
!ifdef DESKTOP
  ClearErrors
  ${GetOptions} $2 "/LOGON" $3
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${SERVICE}
    !insertmacro SelectSection ${LOGON}
  ${EndIf}
!endif
FunctionEnd

Section "Uninstall"
  SetRegView 64
  !insertmacro StopService
  nsExec::ExecToLog '"$INSTDIR\zebd.exe" --remove-service'
  Pop $0
  nsExec::ExecToLog 'netsh advfirewall firewall delete rule name="${RULE}"'
  Pop $0
  !include "${FILES}.list.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL}"
  DeleteRegValue HKLM "${RUN}" "ZEB"
  SetShellVarContext all
  Delete "$DESKTOP\ZEB.lnk"
  Delete "$SMPROGRAMS\ZEB\ZEB.lnk"
  Delete "$SMPROGRAMS\ZEB\Remove ZEB.lnk"
  RMDir "$SMPROGRAMS\ZEB"
  ${GetParameters} $2
  ClearErrors
  ${GetOptions} $2 "/SETTINGS" $3
  ${IfNot} ${Errors}
    ReadEnvStr $0 ProgramData
    ${If} $0 != ""
      RMDir /r "$0\ZEB"
    ${EndIf}
    SetRegView 32
    DeleteRegKey HKLM "Software\Hexmoor\ZEB v3"
    DeleteRegKey /ifempty HKLM "Software\Hexmoor"
  ${EndIf}
SectionEnd
