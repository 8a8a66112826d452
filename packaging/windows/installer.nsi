; The installer for Windows: for one user, without an administrator's rights. It needs
;   VERSION       of the program
;   SIZE          of what it installs, in KiB
;   SOURCE        the folder of this file
;   FILES         names what it installs, as the macros InstallFiles, CheckUnused and DeleteFiles
;   OUTPUT        the installer to be made
; /S installs or removes silently, /D=FOLDER (last, unquoted) chooses the folder.
; Exit status: 0 done, 1 cancelled, 2 a program is in use.
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
RequestExecutionLevel user

!include MUI2.nsh
!include LogicLib.nsh
!include "${FILES}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\KORVEX"

Name "KORVEX"
Caption "KORVEX ${VERSION}"
UninstallCaption "Remove KORVEX"
BrandingText "KORVEX ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\KORVEX"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" InstallLocation

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "KORVEX"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileDescription "Installs KORVEX"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey LegalCopyright ""

!define MUI_ICON "${SOURCE}/../../icons/korvex.ico"
!define MUI_UNICON "${SOURCE}/../../icons/korvex.ico"
!define MUI_ABORTWARNING
!define MUI_DIRECTORYPAGE_TEXT_TOP "KORVEX will be installed for you alone, in the following folder."
!define MUI_WELCOMEFINISHPAGE_BITMAP "${SOURCE}/finish.bmp"
!define MUI_FINISHPAGE_NOAUTOCLOSE
!define MUI_UNCONFIRMPAGE_TEXT_TOP "KORVEX will be removed from the following folder. What was not \
  installed stays: error logs, output workbooks and your settings."
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\bin\korvex.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; Windows refuses to write into a program that runs.
!macro RefuseInUse NAME
  !define IN_USE "$INSTDIR\${NAME} is in use. Close it, then try again."
  ${If} ${FileExists} "$INSTDIR\${NAME}"
    ${Do}
      ClearErrors
      FileOpen $0 "$INSTDIR\${NAME}" a
      ${IfNot} ${Errors}
        FileClose $0
        ${Break}
      ${EndIf}
      ${If} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "${IN_USE}" /SD IDCANCEL IDCANCEL`
        SetErrorLevel 2
        Quit
      ${EndIf}
    ${Loop}
  ${EndIf}
  !undef IN_USE
!macroend

!macro DeleteEmpty FILE
  ${If} ${FileExists} "${FILE}"
    FileOpen $0 "${FILE}" r
    FileSeek $0 0 END $1
    FileClose $0
    ${If} $1 == 0
      Delete "${FILE}"
    ${EndIf}
  ${EndIf}
!macroend

; An earlier version removes what it had installed, wherever that was.
Function RemoveEarlier
  ReadRegStr $R0 HKCU "${UNINSTALL_KEY}" InstallLocation
  ${If} $R0 == ""
  ${OrIfNot} ${FileExists} "$R0\uninstall.exe"
    Return
  ${EndIf}
  ExecWait '"$R0\uninstall.exe" /S _?=$R0' $0
  ${If} $0 <> 0
    MessageBox MB_OK|MB_ICONEXCLAMATION "KORVEX in $R0 is in use." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  Delete "$R0\uninstall.exe"
  RMDir "$R0"
FunctionEnd

Section
  !insertmacro CheckUnused
  Call RemoveEarlier
  !insertmacro InstallFiles
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  CreateDirectory "$SMPROGRAMS\KORVEX"
  CreateShortCut "$SMPROGRAMS\KORVEX\KORVEX.lnk" "$INSTDIR\bin\korvex.exe"
  CreateShortCut "$SMPROGRAMS\KORVEX\KORVEX manual.lnk" "$INSTDIR\bin\Help\korvex.html"
  CreateShortCut "$SMPROGRAMS\KORVEX\KORVEX samples.lnk" "$INSTDIR\samples"

  WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayName "KORVEX"
  WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\bin\korvex.exe"
  WriteRegStr HKCU "${UNINSTALL_KEY}" Publisher "KORVEX"
  WriteRegStr HKCU "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" EstimatedSize ${SIZE}
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

; Only what was installed goes; folders stay where anything else is in them: error logs, outputs.
Section Uninstall
  !insertmacro CheckUnused
  !insertmacro DeleteFiles
  !insertmacro DeleteEmpty "$INSTDIR\AppErr\KORVEX.LOG" ; it is there before anything is logged
  RMDir "$INSTDIR\AppErr"
  Delete "$INSTDIR\uninstall.exe"
  SetOutPath "$TEMP"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\KORVEX\KORVEX.lnk"
  Delete "$SMPROGRAMS\KORVEX\KORVEX manual.lnk"
  Delete "$SMPROGRAMS\KORVEX\KORVEX samples.lnk"
  RMDir "$SMPROGRAMS\KORVEX"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd
