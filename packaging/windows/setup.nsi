; The installer for Windows: for one user, who needs no administrator's rights for it. make_setup.py compiles it.
;
;   setup.exe [/S] [/D=FOLDER]                          /S: silent; /D, the last argument, is never quoted
;   Deinstallieren.exe [/S] [/KEEPSETTINGS] [_?=FOLDER]  with _?= it is waited for, and its exit code is its own
;
; Exit codes: 0 done, 1 cancelled, 2 not possible, 3 the program is open.

Target amd64-unicode ; the default one is for 32 bits
SetCompressor /SOLID lzma
SetDateSave on

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include WinVer.nsh
!include "${LISTING}"

!define TITLE "Orvanta USB-Stick Internetupdate Tool"
!define PROGRAM "orvanta-usbtool.exe"
!define UNINSTALLER "Deinstallieren.exe"
!define PROGRAMS "$LOCALAPPDATA\Programs"
!define SHORTCUT "$SMPROGRAMS\${TITLE}.lnk"
!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\orvanta-usbtool"
!define NOT_POSSIBLE 2
!define IS_OPEN 3
!define REMOVAL_SECONDS 10
!define PLACE_TIMES 20 ; tries, for about three seconds

Name "${TITLE}"
Caption "${TITLE} ${VERSION}"
UninstallCaption "${TITLE} entfernen"
BrandingText "Version ${VERSION}"
SetFont /LANG=1031 "Tahoma" 9 ; as in the program
OutFile "${TARGET}"
InstallDir "${PROGRAMS}\Orvanta USB-Tool"
InstallDirRegKey HKCU "${KEY}" "InstallLocation"
RequestExecutionLevel user
AllowSkipFiles off
ShowInstDetails nevershow
ShowUninstDetails nevershow

ManifestSupportedOS Win10
ManifestDPIAware true
ManifestDPIAwareness System
ManifestLongPathAware true

VIProductVersion "${FOUR_NUMBERS}"
VIFileVersion "${FOUR_NUMBERS}"
VIAddVersionKey /LANG=1031 "CompanyName" "Orvanta"
VIAddVersionKey /LANG=1031 "FileDescription" "Installiert das ${TITLE}"
VIAddVersionKey /LANG=1031 "FileVersion" "${FOUR_NUMBERS}"
VIAddVersionKey /LANG=1031 "LegalCopyright" "© 2026 die Autoren des Orvanta USB-Tools"
VIAddVersionKey /LANG=1031 "ProductName" "${TITLE}"
VIAddVersionKey /LANG=1031 "ProductVersion" "${FOUR_NUMBERS}"

!ifdef SIGN
  !finalize '${SIGN} "%1"' = 0
  !uninstfinalize '${SIGN} "%1"' = 0
!endif

Var New          ; folder beside the program where the new files are written before they take the old ones' places
Var Obsolete     ; number of files of the former version, on the stack, that this one does not have
Var Placed       ; number of files of a first version, on the stack, whose places were free
Var Entry        ; in the list of programs: "" for none, "here" for this folder, "elsewhere" for another one
Var KeepServers  ; 1: the user has changed Server.ini
Var KeepSettings ; 1: the settings stay when the program goes
Var IsRemoved    ; 1: of the program nothing is left but the uninstaller that runs
Var Left         ; a file that could not be removed
Var Greeting
Var Found        ; where the program is, for the last page
Var KeepBox

; Pages

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${PICTURES}\setup.bmp"
!define MUI_WELCOMEFINISHPAGE_BITMAP_STRETCH AspectFitHeight ; how wide its place is depends on the letters

!define MUI_WELCOMEPAGE_TITLE "${TITLE}"
!define MUI_WELCOMEPAGE_TEXT "$Greeting"
!define MUI_PAGE_CUSTOMFUNCTION_PRE FittingPicture
!define MUI_PAGE_CUSTOMFUNCTION_SHOW NameInstall
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE ExpectClosed
!insertmacro MUI_PAGE_WELCOME

!define MUI_PAGE_HEADER_TEXT "Wird installiert"
!define MUI_PAGE_HEADER_SUBTEXT "Das dauert nur einen Augenblick."
!define MUI_INSTFILESPAGE_ABORTHEADER_TEXT "Nicht installiert"
!define MUI_INSTFILESPAGE_ABORTHEADER_SUBTEXT "Das Programm wurde nicht installiert."
!insertmacro MUI_PAGE_INSTFILES

!define MUI_FINISHPAGE_TITLE "Das Programm ist installiert"
!define MUI_FINISHPAGE_TEXT "$Found"
!define MUI_FINISHPAGE_RUN "$INSTDIR\${PROGRAM}"
!define MUI_FINISHPAGE_RUN_TEXT "Programm jetzt &starten"
!define MUI_FINISHPAGE_BUTTON "&Fertig"
!define MUI_FINISHPAGE_NOREBOOTSUPPORT
!define MUI_PAGE_CUSTOMFUNCTION_SHOW HideOtherButtons
!insertmacro MUI_PAGE_FINISH

UninstPage custom un.AskSettings un.TakeSettings
!define MUI_PAGE_HEADER_TEXT "Wird entfernt"
!define MUI_PAGE_HEADER_SUBTEXT "Das dauert nur einen Augenblick."
!define MUI_INSTFILESPAGE_FINISHHEADER_TEXT "Entfernt"
!define MUI_INSTFILESPAGE_FINISHHEADER_SUBTEXT "Das Programm ist nicht mehr auf diesem Computer."
!undef MUI_INSTFILESPAGE_ABORTHEADER_TEXT
!undef MUI_INSTFILESPAGE_ABORTHEADER_SUBTEXT
!define MUI_INSTFILESPAGE_ABORTHEADER_TEXT "Nicht entfernt"
!define MUI_INSTFILESPAGE_ABORTHEADER_SUBTEXT "Das Programm wurde nicht entfernt."
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "German"

!include both.nsh
!include remove.nsh

; Installing

Function .onInit
  SetShellVarContext current
  ${IfNot} ${AtLeastWin10}
    !insertmacro Fail "Das Programm braucht Windows 10 oder 11."
    Quit
  ${EndIf}
  !insertmacro TakeTurn "" "Die Installation läuft bereits."
  StrCpy $Greeting "Version ${VERSION}$\r$\n$\r$\n\
Das Programm bereitet USB-Sticks für Orvanta-Receiver vor.$\r$\n$\r$\n\
Es wird nur für Sie installiert, Administratorrechte sind dafür nicht nötig. Der Ordner:$\r$\n$INSTDIR"
  StrCpy $Placed 0
  Call FindEntry
  ReadRegStr $0 HKCU "${KEY}" "DisplayVersion"
  ${If} $Entry == "here"
    StrCpy $Greeting "Die Version $0 ist installiert. Sie wird durch die Version ${VERSION} ersetzt.$\r$\n$\r$\n\
Ihre Einstellungen bleiben erhalten. Der Ordner:$\r$\n$INSTDIR"
    ${If} $0 == "${VERSION}"
      StrCpy $Greeting "Die Version ${VERSION} ist schon installiert. Sie wird erneuert.$\r$\n$\r$\n\
Ihre Einstellungen bleiben erhalten. Der Ordner:$\r$\n$INSTDIR"
    ${EndIf}
  ${EndIf}
  ${If} ${Silent}
    Call ExpectClosedSilent
  ${EndIf}
FunctionEnd

; The large one, where the picture is shown large.
Function FittingPicture
  System::Call 'user32::GetDpiForSystem() i .r0'
  ${If} $0 > 120
    File "/oname=$PLUGINSDIR\modern-wizard.bmp" "${PICTURES}\setup-large.bmp"
  ${EndIf}
FunctionEnd

Function NameInstall
  GetDlgItem $0 $HWNDPARENT 1
  SendMessage $0 ${WM_SETTEXT} 0 "STR:&Installieren"
FunctionEnd

; There is no way back from the last page, and nothing to cancel.
Function HideOtherButtons
  GetDlgItem $0 $HWNDPARENT 3
  ShowWindow $0 ${SW_HIDE}
  GetDlgItem $0 $HWNDPARENT 2
  ShowWindow $0 ${SW_HIDE}
FunctionEnd

Function ExpectClosed
  Call AskToClose
  ${If} $0 != 0
    Abort ; the page stays
  ${EndIf}
FunctionEnd

; Nothing stays of what could not be installed. What has taken an older file's place does: that of the version before,
; or of a copy of the program that the user has put there.
Function GiveUp
  SetOutPath $TEMP
  ${While} $Placed > 0
    Pop $0
    Delete "$INSTDIR\$0"
    IntOp $Placed $Placed - 1
  ${EndWhile}
  ${If} $Entry == ""
    DeleteRegKey HKCU "${KEY}"
  ${EndIf}
  RMDir /r "$New"
  Call RemoveFolders
FunctionEnd

!macro FailToInstall Text
  !insertmacro Fail "${Text}"
  Call GiveUp
  Abort
!macroend

!macro Extract Name
  File "/oname=$New\${Name}" "${FILES}\${Name}"
!macroend

!macro MakeFolders Name
  CreateDirectory "$New\${Name}"
  CreateDirectory "$INSTDIR\${Name}"
!macroend

; Moves the file named $1, one step for the system: there is never a moment without it, nor one with half of it. Who
; guards against viruses may be reading it just now, but not for long.
Function TakePlace
  StrCpy $3 0
  ${IfNot} ${FileExists} "$INSTDIR\$1"
    StrCpy $3 1
  ${EndIf}
  ${For} $4 1 ${PLACE_TIMES}
    ; MOVEFILE_REPLACE_EXISTING and MOVEFILE_WRITE_THROUGH
    System::Call 'kernel32::MoveFileExW(w "$New\$1", w "$INSTDIR\$1", i 9) i .r0 ?e'
    Pop $2
    ${If} $0 != 0
      ${ExitFor}
    ${ElseIf} $2 != 5 ; ERROR_ACCESS_DENIED
    ${AndIf} $2 != 32 ; ERROR_SHARING_VIOLATION
      ${ExitFor}
    ${EndIf}
    Sleep 150
  ${Next}
  ${If} $0 == 0
    !insertmacro FailToInstall "Die Datei „$INSTDIR\$1“ konnte nicht ersetzt werden.$\r$\n$\r$\nStarten Sie die \
Installation noch einmal."
  ${EndIf}
  ${If} $Entry != "here"
  ${AndIf} $3 == 1
    Push $1
    IntOp $Placed $Placed + 1
  ${EndIf}
FunctionEnd

!macro TakePlace Name
  !if "${Name}" == "Server.ini"
    ${If} $KeepServers == 0
  !endif
  StrCpy $1 "${Name}"
  Call TakePlace
  !if "${Name}" == "Server.ini"
    ${EndIf}
  !endif
!macroend

; Before the file takes its place: an interruption leaves the old one or the new one, and both are known.
Function NoteServers
  GetFileTime "$New\Server.ini" $1 $2
  WriteRegStr HKCU "${KEY}\ServerTimes" "$1 $2" "${VERSION}"
FunctionEnd

; An uninstaller with neither entry nor program is one that has just ended: it is not to be deleted when it is the new
; one.
Function AwaitRemoval
  ${If} $Entry != "here"
  ${AndIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    ${For} $0 1 100 ; somewhat longer than REMOVAL_SECONDS
      ${IfNot} ${FileExists} "$INSTDIR\${UNINSTALLER}"
        ${ExitFor}
      ${EndIf}
      Sleep 150
    ${Next}
  ${EndIf}
FunctionEnd

!macro NoteName Name
  WriteRegStr HKCU "${KEY}\Files" "${Name}" ""
!macroend

; Pushes what the former version installed and this one has not.
Function FindObsolete
  StrCpy $Obsolete 0
  ${If} $Entry != "here"
    Return
  ${EndIf}
  StrCpy $1 0
  ${Do}
    Call NextInstalled
    ${If} $0 == ""
      ${ExitDo}
    ${EndIf}
    ${IfNot} ${FileExists} "$New\$0"
      Push $0
      IntOp $Obsolete $Obsolete + 1
    ${EndIf}
  ${Loop}
FunctionEnd

Function RemoveObsolete
  ${While} $Obsolete > 0
    Pop $0
    Delete "$INSTDIR\$0"
    ${GetParent} "$INSTDIR\$0" $1
    RMDir $1 ; an empty folder
    IntOp $Obsolete $Obsolete - 1
  ${EndWhile}
FunctionEnd

Function WriteEntry
  WriteRegStr HKCU "${KEY}" "DisplayName" "${TITLE}"
  WriteRegStr HKCU "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${KEY}" "Publisher" "Orvanta"
  WriteRegStr HKCU "${KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
  WriteRegStr HKCU "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr HKCU "${KEY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S _?=$INSTDIR'
  WriteRegDWORD HKCU "${KEY}" "EstimatedSize" ${KILOBYTES}
  WriteRegDWORD HKCU "${KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${KEY}" "NoRepair" 1
FunctionEnd

; Without a place in the lists it is installed all the same.
Function TellWindows
  StrCpy $Found "Sie finden es im Startmenü unter „${TITLE}“.$\r$\n$\r$\n\
Entfernen können Sie es in den Einstellungen von Windows unter „Apps“."
  DeleteRegKey HKCU "${KEY}\Files"
  ClearErrors
  Call WriteEntry
  !insertmacro EachFile NoteName
  CreateShortcut "${SHORTCUT}" "$INSTDIR\${PROGRAM}" "" "" "" SW_SHOWNORMAL "" \
    "Bereitet USB-Sticks für Orvanta-Receiver vor"
  ${If} ${Errors}
    StrCpy $Found "Sie finden es in diesem Ordner:$\r$\n$INSTDIR$\r$\n$\r$\n\
Entfernen können Sie es dort mit „${UNINSTALLER}“."
    MessageBox MB_OK|MB_ICONEXCLAMATION \
"Das Programm ist installiert, steht aber nicht im Startmenü oder nicht unter „Apps“.$\r$\n$\r$\n\
Sie finden es im Ordner „$INSTDIR“." /SD IDOK
  ${EndIf}
FunctionEnd

Section
  Call AwaitRemoval
  StrCpy $New "$INSTDIR\~neu"
  RMDir /r "$New" ; of one that was interrupted
  ClearErrors
  CreateDirectory "$New"
  ${If} ${Errors}
    !insertmacro FailToInstall "In den Ordner „$INSTDIR“ kann nicht geschrieben werden."
  ${EndIf}
  SetOutPath "$New"
  !insertmacro EachFolder MakeFolders
  ClearErrors
  !insertmacro EachFile Extract
  WriteUninstaller "$New\${UNINSTALLER}"
  ${If} ${Errors}
    !insertmacro FailToInstall "Die Dateien konnten nicht in den Ordner „$INSTDIR“ geschrieben werden."
  ${EndIf}

  Call FindObsolete
  Call LookAtServers
  Call NoteServers
  !insertmacro TakePlace "${UNINSTALLER}"
  ${If} $Entry == "" ; from now on it can be removed, whatever happens; an entry of another folder waits for the end
    Call WriteEntry
  ${EndIf}
  !insertmacro EachFile TakePlace
  Call RemoveObsolete
  SetOutPath "$INSTDIR"
  RMDir /r "$New"
  Call TellWindows
SectionEnd

; Whatever could not be done: a file that cannot be extracted ends the section by itself.
Function .onInstFailed
  Call GiveUp
FunctionEnd
