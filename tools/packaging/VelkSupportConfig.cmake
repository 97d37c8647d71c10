# The package for CMake, in the folder into which it was unpacked or installed:
#
#     find_package(VelkSupport REQUIRED)                      with -DCMAKE_PREFIX_PATH=C:/VelkSupport
#     target_link_libraries(program PRIVATE VelkSupport::VelkSupport)
#     velksupport_beside(program)
#
# VelkSupport::VelkSupport brings the headers and the platform's libraries that a client links; nothing links to the DLLs.
# For C: target_sources(program PRIVATE ${VelkSupport_IDENTIFIERS}).
get_filename_component(VelkSupport_FOLDER "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
set(VelkSupport_IDENTIFIERS "${VelkSupport_FOLDER}/include/velksprt_i.c")
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(VelkSupport_WIDTH x64)
else()
    set(VelkSupport_WIDTH x86)
endif()

if(NOT TARGET VelkSupport::VelkSupport)
    add_library(VelkSupport::VelkSupport INTERFACE IMPORTED)
    set_target_properties(VelkSupport::VelkSupport PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${VelkSupport_FOLDER}/include"
        INTERFACE_LINK_LIBRARIES "ole32;oleaut32;uuid")
endif()

# velksupport_beside(TARGET): the program finds the libraries beside it, without registration. The manifest that is linked into it
# names them.
function(velksupport_beside target)
    set(files)
    set(dependencies)
    foreach(pair VelkSupport:VelkSprt VelkHooks:VelkSub)
        string(REPLACE ":" ";" pair ${pair})
        list(GET pair 0 assembly)
        list(GET pair 1 library)
        set(folder ${VelkSupport_FOLDER}/${VelkSupport_WIDTH})
        file(STRINGS ${folder}/${assembly}.manifest identity REGEX "name=\"${assembly}\"")
        string(REGEX MATCH " version=\"[0-9.]+\"" version "${identity}")
        string(APPEND dependencies "  <dependency><dependentAssembly><assemblyIdentity type=\"win32\" name=\"${assembly}\"${version}"
            " processorArchitecture=\"*\"/></dependentAssembly></dependency>\n")
        list(APPEND files ${folder}/${library}.dll ${folder}/${assembly}.manifest)
    endforeach()
    set(manifest ${CMAKE_CURRENT_BINARY_DIR}/${target}.exe.manifest)
    file(WRITE ${manifest}
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">\n${dependencies}</assembly>\n")
    if(MSVC)
        target_sources(${target} PRIVATE ${manifest})
    else()  # beside the program it would be passed over where the toolchain links one of its own
        file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest.rc "1 24 \"${manifest}\"\n")
        target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest.rc)
    endif()
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${files} $<TARGET_FILE_DIR:${target}>)
endfunction()
