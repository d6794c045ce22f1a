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

!macro RemoveFile Name
  !if "${Name}" == "Server.ini"
    ${If} $KeepServers == 0
      Delete "$INSTDIR\${Name}"
    ${EndIf}
  !else
    Delete "$INSTDIR\${Name}"
  !endif
!macroend

; What the program writes, beside itself or, where that is not possible, into the user's folder for it.
Function un.RemoveSettings
  Delete "$INSTDIR\Settings.ini"
  Delete "$APPDATA\orvanta-usbtool\Settings.ini"
  RMDir "$APPDATA\orvanta-usbtool"
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
  ClearErrors
  Delete "$INSTDIR\${PROGRAM}"
  ${If} ${Errors}
    !insertmacro Fail "Die Datei „$INSTDIR\${PROGRAM}“ konnte nicht gelöscht werden."
    Abort
  ${EndIf}
  StrCpy $KeepServers 0
  ${If} $KeepSettings == 1
    Call un.LookAtServers
  ${EndIf}
  !insertmacro EachFile RemoveFile
  ${If} $KeepSettings == 0
    Call un.RemoveSettings
  ${EndIf}
  RMDir /r "$INSTDIR\~neu" ; of an installation that was interrupted
  Call un.RemoveUninstaller
  Call un.RemoveFolders
  Delete "${SHORTCUT}"
  DeleteRegKey HKCU "${KEY}"
SectionEnd
