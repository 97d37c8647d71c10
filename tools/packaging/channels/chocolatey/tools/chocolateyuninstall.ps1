$$ErrorActionPreference = 'Stop'
foreach ($$key in Get-UninstallRegistryKey -SoftwareName 'VelkSupport') {
    Uninstall-ChocolateyPackage -PackageName 'velksupport' -FileType 'exe' -SilentArgs '/S /AllUsers' -ValidExitCodes @(0) `
        -File ($$key.UninstallString -replace '^"([^"]+)".*', '$$1')
}
