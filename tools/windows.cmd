@echo off
rem windows.cmd WIDTH BUILD RESULTS [SETUP]: what has to pass on Windows, from an administrator's prompt: every test program, a script
rem in each language while registered, and with SETUP the installer. WIDTH is x86 or x64. Ends with the failures' number.
setlocal
set VELKSPRT_REPORTS=debugger
set OANOCACHE=1
set failures=0
set system=%windir%\System32
if %1==x86 if exist %windir%\SysWOW64 set system=%windir%\SysWOW64
set uninstall=Software\Microsoft\Windows\CurrentVersion\Uninstall\VelkSupport
set class=Software\Classes\VelkSupport.CStack\CLSID

for %%p in (%2\tests\*_tests.exe) do call :passes %%p --gtest_brief=1 --gtest_output=xml:%3\%%~np.xml

for %%l in (VelkSprt VelkSub) do call :passes %system%\regsvr32.exe /s %2\%%l.dll
call :passes %2\velkdoctor.exe
call :prints unexpected %system% %~dp0..\samples\stack.vbs
call :prints 309.375 %system% %~dp0..\samples\stack.js
for %%l in (VelkSprt VelkSub) do call :passes %system%\regsvr32.exe /s /u %2\%%l.dll
call :fails reg query HKLM\%class%

if not "%~4"=="" call :installs %4 /AllUsers HKLM
if not "%~4"=="" call :installs %4 /CurrentUser HKCU
echo %failures% failures
exit /b %failures%

:passes
%*
if not %errorlevel%==0 call :failure %*
exit /b 0

:fails
%* >nul 2>&1
if %errorlevel%==0 call :failure %*
exit /b 0

:failure
echo FAILED: %*
set /a failures+=1
exit /b 0

rem prints WORD SYSTEM_FOLDER SCRIPT
:prints
%2\cscript.exe //nologo %3 >%TEMP%\velk_script.txt
find "%1" %TEMP%\velk_script.txt >nul
if not %errorlevel%==0 call :failure %3 in %2
exit /b 0

rem installs SETUP FOR_WHOM HIVE: installed, used by scripts of each width, gone again. The uninstaller copies itself away and
rem goes on after its end; its key goes last.
:installs
call :passes start /wait "" %1 /S %2
call :passes reg query %3\%class%
set folder=
for /f "tokens=2*" %%a in ('reg query %3\%uninstall% /v InstallLocation /reg:32') do set folder=%%b
if %2==/AllUsers for %%s in (System32 SysWOW64) do (
    if exist %windir%\%%s\cscript.exe call :prints unexpected %windir%\%%s "%folder%\samples\stack.vbs"
)
call :passes start /wait "" "%folder%\uninstall.exe" /S %2
for /l %%i in (1,1,60) do call :waits %3
call :fails reg query %3\%uninstall% /reg:32
call :fails reg query %3\%class%
exit /b 0

:waits
reg query %1\%uninstall% /reg:32 >nul 2>&1
if %errorlevel%==0 ping -n 2 127.0.0.1 >nul
exit /b 0
