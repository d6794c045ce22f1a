; What installer and uninstaller share

!macro Fail Text
  DetailPrint "${Text}"
  MessageBox MB_OK|MB_ICONSTOP "${Text}" /SD IDOK
  SetErrorLevel ${NOT_POSSIBLE}
!macroend

; Only one that installs or removes at a time; the turn is over with the process. There is no handle when the other one
; runs with an administrator's rights.
!macro TakeTurn un Text
  System::Call 'kernel32::CreateMutexW(p 0, i 0, w "orvanta-usbtool-setup") p .r0 ?e'
  Pop $1
  ${If} $1 == 183 ; ERROR_ALREADY_EXISTS
  ${OrIf} $0 = 0
    !insertmacro Fail "${Text}"
    Call ${un}Leave
  ${EndIf}
!macroend

!macro RemoveFolder Name
  RMDir "$INSTDIR\${Name}"
!macroend

!macro ForBoth un
; $0: what tells the folder named $0 from all others, however it is written: with short names or by another drive.
Function ${un}IdentifyFolder
  ; only to ask, whatever others do with it; one that is there; FILE_FLAG_BACKUP_SEMANTICS, as for any folder
  System::Call 'kernel32::CreateFileW(w r0, i 0, i 7, p 0, i 3, i 0x02000000, p 0) p .r1'
  ${If} $1 = -1
    Return
  ${EndIf}
  System::Call '*(&i52) p .r2'
  System::Call 'kernel32::GetFileInformationByHandle(p r1, p r2) i .r3'
  System::Call '*$2(&i28, i .r4, &i12, i .r5, i .r6)'
  System::Free $2
  System::Call 'kernel32::CloseHandle(p r1)'
  ${If} $3 <> 0
    StrCpy $0 "$4 $5 $6" ; volume and number
  ${EndIf}
FunctionEnd

; $Entry: what the list of programs knows, which has place for one installation.
Function ${un}FindEntry
  StrCpy $Entry ""
  ReadRegStr $0 HKCU "${KEY}" "InstallLocation"
  ${If} $0 != ""
    Call ${un}IdentifyFolder
    StrCpy $7 $0
    StrCpy $0 "$INSTDIR"
    Call ${un}IdentifyFolder
    StrCpy $Entry "elsewhere"
    ${If} $0 == $7 ; whatever the case of the letters
      StrCpy $Entry "here"
    ${EndIf}
  ${EndIf}
FunctionEnd

; $0: the next name in the list of what was installed; empty at its end. Only that of a file that is in the folder, as
; plain as it was written: no other folder, and nothing that stands for several files. $1 counts them, from 0.
Function ${un}NextInstalled
  ${Do}
    EnumRegValue $0 HKCU "${KEY}\Files" $1
    ${If} $0 == ""
      Return
    ${EndIf}
    IntOp $1 $1 + 1
    GetFullPathName $2 "$INSTDIR\$0" ; ends in the name that is really there; empty without a file
  ${LoopUntil} $2 == "$INSTDIR\$0"
FunctionEnd

; $0: whether a window of the program is there, of whichever copy. It may be hidden, then its icon is beside the clock.
Function ${un}FindProgramWindow
  StrLen $2 "${TITLE}"
  StrCpy $0 0
  ${Do}
    FindWindow $0 "frmMain" "" 0 $0
    ${If} $0 == 0
      ${ExitDo}
    ${EndIf}
    System::Call 'user32::GetWindowTextW(p r0, w .r1, i ${NSIS_MAX_STRLEN})'
    StrCpy $1 $1 $2
  ${LoopUntil} $1 == "${TITLE}"
FunctionEnd

; $0: whether the file named $1 in the folder runs, as it does without that window, or for another user.
Function ${un}FindRunning
  StrCpy $0 0
  ; to write it, and whatever others do with it; only one that is there
  System::Call 'kernel32::CreateFileW(w "$INSTDIR\$1", i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r2 ?e'
  Pop $3
  ${If} $2 != -1
    System::Call 'kernel32::CloseHandle(p r2)'
  ${ElseIf} $3 == 32 ; ERROR_SHARING_VIOLATION
    StrCpy $0 1
  ${EndIf}
FunctionEnd

; $0: whether anything of the program is in use.
Function ${un}FindOpen
  Call ${un}FindProgramWindow
  ${If} $0 == 0
    StrCpy $1 "${PROGRAM}"
    Call ${un}FindRunning
  ${EndIf}
  ${If} $0 == 0
    StrCpy $1 "fat32format.exe"
    Call ${un}FindRunning
  ${EndIf}
FunctionEnd

; $0: whether it is still in use after the user was asked to close it.
Function ${un}AskToClose
  ${Do}
    Call ${un}FindOpen
    ${If} $0 == 0
      ${ExitDo}
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
"Das Programm ist noch geöffnet, vielleicht nur als Symbol neben der Uhr.$\r$\n$\r$\n\
Beenden Sie es, und versuchen Sie es dann noch einmal." /SD IDCANCEL IDRETRY +2
    ${Break}
  ${Loop}
FunctionEnd

; Before any page is there.
Function ${un}Leave
  !if "${un}" == "un."
    Call un.RemoveCopy
  !endif
  Quit
FunctionEnd

; Once more for who has no pages.
Function ${un}ExpectClosedSilent
  Call ${un}AskToClose
  ${If} $0 != 0
    SetErrorLevel ${IS_OPEN}
    Call ${un}Leave
  ${EndIf}
FunctionEnd

; $KeepServers: whether Server.ini has a time that none had which was installed.
Function ${un}LookAtServers
  StrCpy $KeepServers 0
  ${If} ${FileExists} "$INSTDIR\Server.ini"
    GetFileTime "$INSTDIR\Server.ini" $1 $2
    ReadRegStr $0 HKCU "${KEY}\ServerTimes" "$1 $2"
    ${If} $0 == ""
      StrCpy $KeepServers 1
    ${EndIf}
  ${EndIf}
FunctionEnd

; $0: the folder that holds those of a user's programs, which the installer makes; that of the program once more where
; the user has chosen a place of his own.
Function ${un}FindFolderAbove
  StrLen $1 "${PROGRAMS}\"
  StrCpy $2 "$INSTDIR" $1
  StrCpy $0 "$INSTDIR"
  ${If} $2 == "${PROGRAMS}\"
    StrCpy $0 "${PROGRAMS}"
  ${EndIf}
FunctionEnd

; Those that hold nothing else.
Function ${un}RemoveFolders
  !insertmacro EachFolder RemoveFolder
  RMDir "$INSTDIR"
  Call ${un}FindFolderAbove
  RMDir "$0"
FunctionEnd
!macroend

!insertmacro ForBoth ""
!insertmacro ForBoth "un."
