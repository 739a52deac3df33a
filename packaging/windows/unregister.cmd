@echo off
rem Unregisters the component and removes it from Velmora's folder; the data stays.
rem   unregister.cmd FOLDER [x86|x64]
setlocal
set "FOLDER=%~1"
set "BITS=%~2"
if "%BITS%"=="" set BITS=x86
if not exist "%FOLDER%\VLOUTSync.dll" goto usage
set REGSVR=%SystemRoot%\System32\regsvr32.exe
if "%BITS%"=="x86" if exist "%SystemRoot%\SysWOW64\regsvr32.exe" set REGSVR=%SystemRoot%\SysWOW64\regsvr32.exe
"%REGSVR%" /s /u "%FOLDER%\VLOUTSync.dll"
if errorlevel 1 exit /b 2
del "%FOLDER%\VLOUTSync.dll"
if exist "%FOLDER%\VLOUTSync.dll" exit /b 1
exit /b 0
:usage
echo unregister.cmd "C:\Program Files (x86)\Velmora" [x86^|x64]
exit /b 3
