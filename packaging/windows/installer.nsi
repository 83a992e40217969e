; SPDX-License-Identifier: BSD-3-Clause

; The installer: for one user, without an administrator.
; Run by package.sh, which gives: STAGE (directory with the files to install), OUTPUT, ICON,
; UNINSTALL_FILES (the lines that delete pages, schemas and licence texts), VERSION (1.2.0.1941).
; Silent: setup.exe /S [/D=C:\directory], uninstall.exe /S.

Unicode true
Target amd64-unicode
RequestExecutionLevel user
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10

!include MUI2.nsh
!include FileFunc.nsh
!include x64.nsh

!define NAME "Veltrosyn Stalwick"
!define FILE_TYPE "Veltrosyn.Stalwick.ord"
!define CLASSES "Software\Classes"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Veltrosyn Stalwick"

Name "${NAME}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "${NAME} ${VERSION}"

VIProductVersion "${VERSION}"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "FileDescription" "${NAME} setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Provided as is, without warranty of any kind."

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN "$INSTDIR\stalwick.exe"
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

!macro TellShellOfFileTypes
    ; SHCNE_ASSOCCHANGED
    System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

Function .onInit
    ${IfNot} ${RunningX64}
        MessageBox MB_ICONSTOP|MB_OK "${NAME} needs a 64-bit Windows." /SD IDOK
        SetErrorLevel 2
        Abort
    ${EndIf}
FunctionEnd

Section "Programs"
    SetOutPath "$INSTDIR"
    File "${STAGE}/stalwick.exe"
    File "${STAGE}/stalwick-convert.exe"
    File "${STAGE}/stalwick-inspect.exe"
    File "${STAGE}/*.html"
    File "${STAGE}/*.json"
    File "${STAGE}/*.txt"
    SetOutPath "$INSTDIR\licenses"
    File "${STAGE}/licenses/*"
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"

    CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\stalwick.exe"

    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\stalwick.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
SectionEnd

Section ".ord recordings"
    ; The program that opened recordings before is stored; the uninstaller restores it.
    ReadRegStr $0 HKCU "${CLASSES}\.ord" ""
    ${If} $0 != "${FILE_TYPE}"
    ${AndIf} $0 != ""
        WriteRegStr HKCU "${UNINSTALL_KEY}" "PreviousFileType" $0
    ${EndIf}
    WriteRegStr HKCU "${CLASSES}\.ord" "" "${FILE_TYPE}"
    WriteRegStr HKCU "${CLASSES}\.ord" "Content Type" "application/x-veltrosyn-ord"
    WriteRegStr HKCU "${CLASSES}\.ord\OpenWithProgids" "${FILE_TYPE}" ""
    WriteRegStr HKCU "${CLASSES}\${FILE_TYPE}" "" "Veltrosyn wireless raw data"
    WriteRegStr HKCU "${CLASSES}\${FILE_TYPE}\DefaultIcon" "" "$INSTDIR\stalwick.exe,0"
    WriteRegStr HKCU "${CLASSES}\${FILE_TYPE}\shell\open\command" "" \
        '"$INSTDIR\stalwick.exe" "%1"'
    !insertmacro TellShellOfFileTypes
SectionEnd

Section "Uninstall"
    ReadRegStr $0 HKCU "${CLASSES}\.ord" ""
    ReadRegStr $1 HKCU "${UNINSTALL_KEY}" "PreviousFileType"
    ${If} $0 == "${FILE_TYPE}"
        ${If} $1 == ""
            DeleteRegValue HKCU "${CLASSES}\.ord" ""
            DeleteRegValue HKCU "${CLASSES}\.ord" "Content Type"
        ${Else}
            WriteRegStr HKCU "${CLASSES}\.ord" "" $1
        ${EndIf}
    ${EndIf}
    DeleteRegValue HKCU "${CLASSES}\.ord\OpenWithProgids" "${FILE_TYPE}"
    DeleteRegKey /ifempty HKCU "${CLASSES}\.ord\OpenWithProgids"
    ; /ifempty checks only subkeys, but a type that another program has set since must be kept.
    ReadRegStr $0 HKCU "${CLASSES}\.ord" ""
    ${If} $0 == ""
        DeleteRegKey /ifempty HKCU "${CLASSES}\.ord"
    ${EndIf}
    DeleteRegKey HKCU "${CLASSES}\${FILE_TYPE}"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    !insertmacro TellShellOfFileTypes

    Delete "$SMPROGRAMS\${NAME}.lnk"
    ; Only what was installed is removed; recordings that a user put here stay.
    Delete "$INSTDIR\stalwick.exe"
    Delete "$INSTDIR\stalwick-convert.exe"
    Delete "$INSTDIR\stalwick-inspect.exe"
    !include "${UNINSTALL_FILES}"
    RMDir "$INSTDIR\licenses"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
SectionEnd
