; Removing

Function un.onInit
  SetShellVarContext current
  !insertmacro TakeTurn "un." "Das Programm wird gerade installiert oder entfernt."
  StrCpy $IsRemoved 0
  Call un.FindEntry
  ${GetParameters} $0
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

; Those of the version before, after an interruption of the one that was to take its place.
Function un.RemoveInstalled
  StrCpy $1 0
  ${Do}
    Call un.NextInstalled
    ${If} $0 == ""
      ${ExitDo}
    ${ElseIf} $0 != "Server.ini" ; which may be to stay
      !insertmacro Remove "$INSTDIR\$0"
      ${GetParent} "$INSTDIR\$0" $2
      RMDir $2 ; an empty folder
    ${EndIf}
  ${Loop}
FunctionEnd

; Nobody can delete a program that runs: Windows' own command line does that after its end, for as long as
; REMOVAL_SECONDS, and removes the folders when they are empty then. The names are put in only after the commands have
; been told apart: whatever they hold, it is no part of them.
Function un.DeleteAtEnd
  Call un.FindFolderAbove
  ${If} $EXEDIR != "$INSTDIR"
    StrCpy $0 $EXEDIR
  ${EndIf}
  System::Call 'kernel32::SetEnvironmentVariableW(w "ORVANTA_FILE", w "$EXEPATH")'
  System::Call 'kernel32::SetEnvironmentVariableW(w "ORVANTA_FOLDER", w "$EXEDIR")'
  System::Call 'kernel32::SetEnvironmentVariableW(w "ORVANTA_ABOVE", w r0)'
  SetOutPath $SYSDIR ; no folder that is to go
  ExecShell "" "$SYSDIR\cmd.exe" '/d /e:on /v:on /c for /l %i in (1,1,${REMOVAL_SECONDS}) do (\
del /f /q "!ORVANTA_FILE!" & rmdir "!ORVANTA_FOLDER!" & rmdir "!ORVANTA_ABOVE!" & \
if exist "!ORVANTA_FILE!" ("$SYSDIR\ping.exe" -n 2 127.0.0.1) else exit)' SW_HIDE
FunctionEnd

; Who waits for it has it run from its own place, everybody else from a copy.
Function un.RemoveUninstaller
  ${If} $EXEFILE == "${UNINSTALLER}"
    StrCpy $IsRemoved 1
    Return
  ${EndIf}
  ${For} $0 1 50 ; what has started the copy may not have ended yet
    ClearErrors
    Delete "$INSTDIR\${UNINSTALLER}"
    ${IfNot} ${Errors}
      Return
    ${EndIf}
    Sleep 100
  ${Next}
  StrCpy $Left "$INSTDIR\${UNINSTALLER}"
FunctionEnd

; At the very end, as a page may stay open for long. The copy goes however it ends, the uninstaller itself only with
; all the rest.
Function un.RemoveCopy
  ${If} $EXEFILE != "${UNINSTALLER}"
  ${OrIf} $IsRemoved == 1
    Call un.DeleteAtEnd
  ${EndIf}
FunctionEnd

Function un.RemoveCopySilent
  ${If} ${Silent}
    Call un.RemoveCopy
  ${EndIf}
FunctionEnd

Function un.onGUIEnd
  Call un.RemoveCopy
FunctionEnd

Function un.onUninstSuccess
  Call un.RemoveCopySilent
FunctionEnd

Function un.onUninstFailed
  Call un.RemoveCopySilent
FunctionEnd

Section Uninstall
  SetOutPath $TEMP
  StrCpy $Left ""
  !insertmacro Remove "$INSTDIR\${PROGRAM}"
  Call un.ExpectNothingLeft
  ${If} $Entry == "here" ; otherwise it is that of the installation in the other folder
    !insertmacro Remove "${SHORTCUT}"
  ${EndIf}
  StrCpy $KeepServers 0
  ${If} $KeepSettings == 1
    Call un.LookAtServers
  ${EndIf}
  !insertmacro EachFile RemoveFile
  ${If} $Entry == "here"
    Call un.RemoveInstalled
  ${EndIf}
  RMDir /r "$INSTDIR\~neu" ; of an installation that was interrupted
  Call un.ExpectNothingLeft
  ${If} $KeepSettings == 0
    !insertmacro Remove "$INSTDIR\Settings.ini"
    Call un.ExpectNothingLeft
  ${EndIf}
  Call un.RemoveUninstaller
  Call un.ExpectNothingLeft
  Call un.RemoveFolders
  ${If} $Entry == "here"
    DeleteRegKey HKCU "${KEY}"
  ${EndIf}
SectionEnd
