; The installer for Windows: for one user, without an administrator's rights, or with /AllUsers for the
; machine. For that it starts itself again as an administrator. It needs
;   VERSION       of the program
;   SIZE          of what it installs, in KiB
;   SOURCE        the folder of this file
;   FILES         names what it installs, as the macros InstallFiles, CheckUnused and DeleteFiles
;   OUTPUT        the installer to be made
;   SIGN          the command that signs a file
; /S installs or removes silently, /D=FOLDER (last, unquoted) chooses the folder.
; Exit status: 0 done, 1 cancelled, 2 a program is in use, 3 an administrator is needed.
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
RequestExecutionLevel user

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include "${FILES}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\KORVEX"

Var Whom ; "you alone" or "all users of this computer"

Name "KORVEX"
Caption "KORVEX ${VERSION}"
UninstallCaption "Remove KORVEX"
BrandingText "KORVEX ${VERSION}"
OutFile "${OUTPUT}"
!finalize '"${SIGN}" "%1"'
!uninstfinalize '"${SIGN}" "%1"'

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "KORVEX"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileDescription "Installs KORVEX"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey LegalCopyright ""

!define MUI_ICON "${SOURCE}/../../icons/korvex.ico"
!define MUI_UNICON "${SOURCE}/../../icons/korvex.ico"
!define MUI_ABORTWARNING
!define MUI_DIRECTORYPAGE_TEXT_TOP "KORVEX will be installed for $Whom in the following folder."
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

!define OPEN_WITH "Software\Classes\Directory\shell\KORVEX"

; For all users: the start menu, and the registry under SHCTX, become those of the machine. What is
; started here needs an administrator; where this user is none (yet), PROGRAM is started as one with
; PARAMETERS, and its exit status is ours. "/Elevated" in them keeps it from asking for ever.
!macro ForAllUsers PROGRAM PARAMETERS
  SetShellVarContext all
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/Elevated" $2
    ${If} ${Errors}
      ; A SHELLEXECUTEINFOW of 64 bits: pointers stand at multiples of 8, hence the second of "i 1, i"
      ; and of "i 0, i". The process is wanted back (0x40), no box of its own (0x400).
      System::Call '*(&l4, i 0x440, p $HWNDPARENT, w "runas", w "${PROGRAM}", w `${PARAMETERS}`, \
        p 0, i 1, i, p 0, p 0, p 0, p 0, i 0, i, p 0, p 0) p .r3'
      System::Call 'shell32::ShellExecuteExW(p r3) i .r4'
      System::Call '*$3(i, i, p, p, p, p, p, i, i, p, p, p, p, i, i, p, p .r5)'
      System::Free $3
      ${If} $4 <> 0
        System::Call 'kernel32::WaitForSingleObject(p r5, i -1)'
        System::Call 'kernel32::GetExitCodeProcess(p r5, *i .r6)'
        System::Call 'kernel32::CloseHandle(p r5)'
        SetErrorLevel $6
        Quit
      ${EndIf}
    ${EndIf}
    MessageBox MB_OK|MB_ICONEXCLAMATION "Only an administrator can do this for all users." /SD IDOK
    SetErrorLevel 3
    Quit
  ${EndIf}
!macroend

; $INSTDIR is empty but for /D.
Function .onInit
  StrCpy $Whom "you alone"
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/AllUsers" $2
  ${IfNot} ${Errors}
    StrCpy $Whom "all users of this computer"
    StrCpy $7 "/AllUsers /Elevated"
    ${If} ${Silent}
      StrCpy $7 "$7 /S"
    ${EndIf}
    ${If} $INSTDIR != ""
      StrCpy $7 "$7 /D=$INSTDIR"
    ${EndIf}
    !insertmacro ForAllUsers "$EXEPATH" "$7"
  ${EndIf}
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR SHCTX "${UNINSTALL_KEY}" InstallLocation
  ${EndIf}
  ${If} $INSTDIR == ""
    ${If} $Whom == "you alone"
      StrCpy $INSTDIR "$LOCALAPPDATA\Programs\KORVEX"
    ${Else}
      StrCpy $INSTDIR "$PROGRAMFILES64\KORVEX"
    ${EndIf}
  ${EndIf}
FunctionEnd

Function un.onInit
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" InstallLocation
  ${If} $0 == $INSTDIR
    StrCpy $7 "/Elevated"
    ${If} ${Silent}
      StrCpy $7 "$7 /S"
    ${EndIf}
    ; Not the copy that runs: it lies where this user can change it.
    !insertmacro ForAllUsers "$INSTDIR\uninstall.exe" "$7"
  ${EndIf}
FunctionEnd

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
  ReadRegStr $R0 SHCTX "${UNINSTALL_KEY}" InstallLocation
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

  WriteRegStr SHCTX "${OPEN_WITH}" "" "Open with KORVEX"
  WriteRegStr SHCTX "${OPEN_WITH}" Icon "$INSTDIR\bin\korvex.exe"
  WriteRegStr SHCTX "${OPEN_WITH}\command" "" '"$INSTDIR\bin\korvex.exe" "%1"'

  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "KORVEX"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\bin\korvex.exe"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "KORVEX"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize ${SIZE}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
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
  DeleteRegKey SHCTX "${OPEN_WITH}"
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
SectionEnd
