; Removing

Function un.onInit
  SetShellVarContext current
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/LAST" $1
  ${IfNot} ${Errors}
    Call un.RemoveTheLast
    Quit
  ${EndIf}
  ClearErrors
  ${GetOptions} $0 "/KEEPSETTINGS" $1
  StrCpy $KeepSettings 1
  ${If} ${Errors}
    StrCpy $KeepSettings 0
  ${EndIf}
  ${If} ${Silent}
    Call un.ExpectClosedSilent
  ${EndIf}
FunctionEnd

Function un.AskSettings
  !insertmacro MUI_HEADER_TEXT "Programm entfernen" "${TITLE}"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 30u "Das Programm wird aus diesem Ordner entfernt:$\r$\n$INSTDIR"
  Pop $0
  ${NSD_CreateCheckbox} 0 42u 100% 12u "Meine &Einstellungen behalten"
  Pop $KeepBox
  ${NSD_SetState} $KeepBox $KeepSettings
  GetDlgItem $0 $HWNDPARENT 1
  SendMessage $0 ${WM_SETTEXT} 0 "STR:Ent&fernen"
  nsDialogs::Show
FunctionEnd

Function un.TakeSettings
  ${NSD_GetState} $KeepBox $KeepSettings
  Call un.AskToClose
  ${If} $0 != 0
    Abort ; the page stays
  ${EndIf}
FunctionEnd

!macro Remove Path
  ClearErrors
  Delete "${Path}"
  ${If} ${Errors}
    StrCpy $Left "${Path}"
  ${EndIf}
!macroend

!macro RemoveFile Name
  !if "${Name}" == "Server.ini"
    ${If} $KeepServers == 0
      !insertmacro Remove "$INSTDIR\${Name}"
    ${EndIf}
  !else
    !insertmacro Remove "$INSTDIR\${Name}"
  !endif
!macroend

; What could not be removed can be later: the uninstaller and its entry stay for that.
Function un.ExpectNothingLeft
  ${If} $Left != ""
    !insertmacro Fail "Die Datei „$Left“ konnte nicht gelöscht werden.$\r$\n$\r$\nVersuchen Sie es später noch einmal."
    Abort
  ${EndIf}
FunctionEnd

; What the program writes: beside itself or, only where that is not possible, into the user's folder for it. Those there
; are another copy's as long as this one has its own.
Function un.RemoveSettings
  ${If} ${FileExists} "$INSTDIR\Settings.ini"
    !insertmacro Remove "$INSTDIR\Settings.ini"
  ${Else}
    !insertmacro Remove "$APPDATA\orvanta-usbtool\Settings.ini"
    RMDir "$APPDATA\orvanta-usbtool"
  ${EndIf}
FunctionEnd

; It runs from its own place when it is waited for, and cannot be deleted then: a copy does that after its end.
Function un.RemoveUninstaller
  ClearErrors
  Delete "$INSTDIR\${UNINSTALLER}"
  ${If} ${Errors}
    CopyFiles /SILENT /FILESONLY "$INSTDIR\${UNINSTALLER}" "$TEMP\~orvanta-usbtool.exe"
    Exec '"$TEMP\~orvanta-usbtool.exe" /S /LAST _?=$INSTDIR'
  ${EndIf}
FunctionEnd

; What that copy does.
Function un.RemoveTheLast
  ${For} $0 1 600
    Delete "$INSTDIR\${UNINSTALLER}"
    ${IfNot} ${FileExists} "$INSTDIR\${UNINSTALLER}"
      ${ExitFor}
    ${EndIf}
    Sleep 50
  ${Next}
  Call un.RemoveFolders
FunctionEnd

Section Uninstall
  SetOutPath $TEMP
  StrCpy $Left ""
  !insertmacro Remove "$INSTDIR\${PROGRAM}"
  Call un.ExpectNothingLeft
  !insertmacro Remove "${SHORTCUT}"
  StrCpy $KeepServers 0
  ${If} $KeepSettings == 1
    Call un.LookAtServers
  ${EndIf}
  !insertmacro EachFile RemoveFile
  RMDir /r "$INSTDIR\~neu" ; of an installation that was interrupted
  Call un.ExpectNothingLeft
  ${If} $KeepSettings == 0
    Call un.RemoveSettings
    Call un.ExpectNothingLeft
  ${EndIf}
  Call un.RemoveUninstaller
  Call un.RemoveFolders
  DeleteRegKey HKCU "${KEY}"
SectionEnd
