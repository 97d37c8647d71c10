# velk_add_type_library(TARGET file.idl): compiles an interface file to TARGET.tlb and TARGET.h and offers them to
# whoever links to the interface library TARGET. Fragments are found from the source folder given as the include root.

# The compiler's base interfaces come with Wine's development files; where they lie is the package's affair.
function(velk_find_interface_files)
    execute_process(COMMAND dpkg -L libwine-dev OUTPUT_VARIABLE dev_files COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND dpkg -L libwine:i386 OUTPUT_VARIABLE wine_files COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCH "[^\n]*/oaidl\\.idl" oaidl "${dev_files}")
    string(REGEX MATCH "[^\n]*/stdole2\\.tlb" stdole "${wine_files}")
    if(NOT oaidl OR NOT stdole)
        message(FATAL_ERROR "oaidl.idl or stdole2.tlb not found: run ./dev setup")
    endif()
    cmake_path(GET oaidl PARENT_PATH include)
    cmake_path(GET stdole PARENT_PATH libraries)
    set(VELK_IDL_FLAGS -I${include} -L${libraries} PARENT_SCOPE)
endfunction()

function(velk_add_type_library target idl root)
    velk_find_interface_files()
    set(out ${CMAKE_CURRENT_BINARY_DIR}/${target})
    file(MAKE_DIRECTORY ${out})
    get_filename_component(name ${idl} NAME_WE)
    file(GLOB_RECURSE fragments CONFIGURE_DEPENDS ${root}/*.idl)
    # The compiler writes the time into the library unless told another one.
    set(widl ${CMAKE_COMMAND} -E env WIDL_TIME_OVERRIDE=0 ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-widl ${VELK_IDL_FLAGS} -I${root})
    add_custom_command(
        OUTPUT ${out}/${name}.tlb ${out}/${name}.h
        COMMAND ${widl} -t -o ${name}.tlb ${idl}
        COMMAND ${widl} -DVELK_CPP_HEADER -h -o ${name}.h ${idl}
        WORKING_DIRECTORY ${out}
        DEPENDS ${idl} ${fragments}
        COMMENT "Type library ${name}.tlb"
        VERBATIM)
    add_custom_target(${target}_files DEPENDS ${out}/${name}.tlb ${out}/${name}.h)
    add_library(${target} INTERFACE)
    add_dependencies(${target} ${target}_files)
    target_include_directories(${target} SYSTEM INTERFACE ${out})
    set(${target}_TLB ${out}/${name}.tlb PARENT_SCOPE)
endfunction()
