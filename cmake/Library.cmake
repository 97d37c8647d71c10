# velk_finish_library(TARGET TYPES BASE): what both DLLs have in common. BASE is the preferred address: identical bytes from
# every folder need a fixed one; the loader still randomises the address.
function(velk_finish_library target types base)
    set_target_properties(${target} PROPERTIES PREFIX "" RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
    target_link_libraries(${target} PRIVATE ${types})
    target_include_directories(${target} PRIVATE $<TARGET_PROPERTY:${types},INTERFACE_INCLUDE_DIRECTORIES>)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_link_options(${target} PRIVATE -Wl,--enable-stdcall-fixup -Wl,--image-base=${base})
    else()
        # Above 4 GiB: the digits after the leading 2 are those of the 32-bit library.
        string(REPLACE 0x 0x2 base ${base})
        target_link_options(${target} PRIVATE -Wl,--image-base=${base} -Wl,--high-entropy-va)
    endif()
    target_link_options(${target} PRIVATE
        -Wl,--no-insert-timestamp -Wl,--exclude-all-symbols -Wl,--dynamicbase -Wl,--nxcompat
        -Wl,--gc-sections
        -Wl,--file-alignment=4096  # the loader maps the sections instead of copying them
        $<$<CONFIG:Release>:-s>)
endfunction()
