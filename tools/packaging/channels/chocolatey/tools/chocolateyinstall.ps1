$$ErrorActionPreference = 'Stop'
Install-ChocolateyPackage -PackageName 'velksupport' -FileType 'exe' -SilentArgs '/S /AllUsers' `
    -Url '$releases/$setup' -Checksum '$setup_sha256' -ChecksumType 'sha256' -ValidExitCodes @(0)
