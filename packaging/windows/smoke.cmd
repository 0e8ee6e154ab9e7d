@echo off
rem smoke.cmd FOLDER: tries the component on a real Windows machine and writes what it saw to report.txt beside this
rem file, with a picture of the dialog, dialog.png. FOLDER holds ORVICPartkeepRead.DLL, pick_parts.exe and partkeep.vbs of
rem one width. To be run as administrator, by the cmd.exe of that width: it registers the library and, where no host product
rem is installed, a folder to stand for it, and takes both back at the end.
setlocal
set folder=%~f1
set here=%~dp0
set report=%here%report.txt
set work=%TEMP%\PartkeepSmoke
set failed=0
if not exist "%folder%\ORVICPartkeepRead.DLL" (
    echo usage: smoke.cmd FOLDER, with ORVICPartkeepRead.DLL, pick_parts.exe and partkeep.vbs in it
    exit /b 2
)
if not exist "%work%" mkdir "%work%"
ver > "%report%"
echo processor %PROCESSOR_ARCHITECTURE%, library in %folder% >> "%report%"

rem Without an installation no dialog opens, and nothing says so.
set made=
reg query HKLM\software\Velmar >nul 2>&1 || set made=HKLM\software\Velmar
if defined made reg add %made%\ORVIC /v installpath /d "%work%" /f >nul
call :step 0 "installation" reg query HKLM\software\Velmar\ORVIC /v installpath
call :step 0 "register" regsvr32 /s "%folder%\ORVICPartkeepRead.DLL"
call :step 0 "program id" reg query HKCR\ORVICPartkeepRead.PartkeepReadImpl /s
rem There is no such part, so that the script ends with a number of its own: that of the system would tell nothing.
echo Answer messages by OK, and close the dialog by Cancel when its picture has been taken: that takes some seconds.
call :step 3 "script host" cscript //nologo "%folder%\partkeep.vbs" read "%work%" SERVER FOLDER PART

rem The dialog stays until somebody closes it; meanwhile the screen is taken.
start "" /b cmd /c ping -n 6 127.0.0.1 ^>nul ^& powershell -NoProfile -Command "Add-Type -AssemblyName System.Windows.Forms,System.Drawing; $s=[System.Windows.Forms.SystemInformation]::VirtualScreen; $b=New-Object System.Drawing.Bitmap $s.Width,$s.Height; [System.Drawing.Graphics]::FromImage($b).CopyFromScreen($s.Location,[System.Drawing.Point]::Empty,$s.Size); $b.Save('%here%dialog.png')" ^>nul 2^>^&1
call :step 0 "C++ host" "%folder%\pick_parts.exe" "%work%"
if exist "%here%dialog.png" (echo picture: dialog.png >> "%report%") else (echo picture: none was taken >> "%report%")

call :step 0 "unregister" regsvr32 /u /s "%folder%\ORVICPartkeepRead.DLL"
reg query HKCR\ORVICPartkeepRead.PartkeepReadImpl >nul 2>&1
if %ERRORLEVEL%==0 (echo FAILED: the program id is still there >> "%report%" & set failed=1)
if defined made reg delete %made% /f >nul
rmdir /s /q "%work%"
type "%report%"
if %failed%==0 (echo All steps ended well. Send report.txt and dialog.png.) else (echo Some steps failed. Send report.txt and dialog.png.)
exit /b %failed%

:step
set wanted=%1
set label=%~2
shift
shift
echo == %label% >> "%report%"
%1 %2 %3 %4 %5 %6 %7 %8 >> "%report%" 2>&1
set code=%ERRORLEVEL%
echo ends with %code% >> "%report%"
if not %code%==%wanted% (echo FAILED: %label% >> "%report%" & set failed=1)
exit /b 0
