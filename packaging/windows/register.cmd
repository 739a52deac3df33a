@echo off
rem Copies the component into Velmora's folder and registers it there.
rem   register.cmd FOLDER [x86|x64]
setlocal
set "FOLDER=%~1"
set "BITS=%~2"
if "%BITS%"=="" set BITS=x86
if "%FOLDER%"=="" goto usage
if not exist "%FOLDER%\" goto usage
set REGSVR=%SystemRoot%\System32\regsvr32.exe
if "%BITS%"=="x86" if exist "%SystemRoot%\SysWOW64\regsvr32.exe" set REGSVR=%SystemRoot%\SysWOW64\regsvr32.exe
copy /y "%~dp0%BITS%\VLOUTSync.dll" "%FOLDER%\VLOUTSync.dll" >nul
if errorlevel 1 exit /b 1
"%REGSVR%" /s "%FOLDER%\VLOUTSync.dll"
if errorlevel 1 exit /b 2
echo VLOUTSync: %FOLDER%
exit /b 0
:usage
echo register.cmd "C:\Program Files (x86)\Velmora" [x86^|x64]
exit /b 3
