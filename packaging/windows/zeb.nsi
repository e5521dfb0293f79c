; The installer for Windows: zebd, zebctl, their DLLs and the examples; the publisher as a service, a firewall rule
; for the control link's ports. scripts/windows/installer gives VERSION, FILES (what is installed) and OUT.
;
;   zeb-setup.exe [/S] [/NOSERVICE] [/D=C:\folder]     /S asks nothing; upgrades in place
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
!include "x64.nsh"

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZEB"
!define RULE "ZEB control link"

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Function .onInit
  ${IfNot} ${RunningX64}
    MessageBox MB_OK|MB_ICONSTOP "ZEB needs a 64-bit Windows." /SD IDOK
    Abort
  ${EndIf}
  SetRegView 64
  ; An upgrade goes where the version before is.
  ReadRegStr $0 HKLM "${UNINSTALL}" "InstallLocation"
  ${If} $0 != ""
    StrCpy $INSTDIR $0
  ${EndIf}
FunctionEnd

; Files that are in use cannot be replaced. The service ends within five seconds.
!macro StopService
  nsExec::ExecToLog 'net stop ZEB'
  Pop $0
!macroend

Section "ZEB"
  SetRegView 64
  !insertmacro StopService
  StrCpy $1 $0 ; 0: it ran
  SetOutPath "$INSTDIR"
  ClearErrors
  File /r "${FILES}/*.*"
  ${If} ${Errors}
    SetErrorLevel 2
    Abort "Some files could not be written: close zebctl and whatever else runs in $INSTDIR, and start the installer again."
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "ZEB now playing"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
  ; One rule, whatever was there before.
  nsExec::ExecToLog 'netsh advfirewall firewall delete rule name="${RULE}"'
  Pop $0
  nsExec::ExecToLog 'netsh advfirewall firewall add rule name="${RULE}" dir=in action=allow protocol=TCP localport=6901-6920 program="$INSTDIR\zebd.exe"'
  Pop $0
  ${GetParameters} $2
  ClearErrors
  ${GetOptions} $2 "/NOSERVICE" $3
  ${If} ${Errors}
    nsExec::ExecToLog '"$INSTDIR\zebd.exe" --install-service'
    Pop $0
    nsExec::ExecToLog 'net start ZEB'
    Pop $0
  ${ElseIf} $1 == 0
    nsExec::ExecToLog 'net start ZEB'
    Pop $0
  ${EndIf}
SectionEnd

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
