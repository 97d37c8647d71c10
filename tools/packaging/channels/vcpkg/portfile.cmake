# The libraries are delivered as they were built and tested; nothing links to them.
set(VCPKG_POLICY_EMPTY_INCLUDE_FOLDER enabled)
vcpkg_download_distfile(archive URLS "$releases/$zip" FILENAME "$zip" SHA512 $zip_sha512)
vcpkg_extract_source_archive(folder ARCHIVE "$${archive}")
# The package for CMake finds its files by their place beside it.
set(share "$${CURRENT_PACKAGES_DIR}/share/velksupport")
foreach(part cmake include x86 x64)
    file(INSTALL "$${folder}/$${part}" DESTINATION "$${share}")
endforeach()
vcpkg_install_copyright(FILE_LIST "$${folder}/LICENSE")
