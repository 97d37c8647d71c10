# velk_add_type_library(TARGET NAME.idl ROOT): compiles a type library to NAME.tlb with its call plans, NAME.plans, to NAME.h and to
# NAME_i.c, the identifiers for clients in C, which users get, and each
# fragment below ROOT, say containers/stack.idl, to a header of its own, containers/stack.idl.h, so that a change reaches only
# the sources that use it. Whoever links to the interface library TARGET can include them.

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

# velk_compile_interfaces(OUTPUT FILE FLAG...): its dependencies are what the file includes. VELK_HELP_TEXTS are those of the constants
# in a type library.
function(velk_compile_interfaces output file)
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${out} OUTPUT_VARIABLE source)
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${CMAKE_CXX_COMPILER} -M -MT ${output} -MF ${output}.d -I${root} -x c ${source}
        # The compiler writes the time into the library unless told another one.
        COMMAND ${CMAKE_COMMAND} -E env WIDL_TIME_OVERRIDE=0 HELP_TEXTS=${VELK_HELP_TEXTS} ${PROJECT_SOURCE_DIR}/cmake/compile_interfaces ${output}
            ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-widl ${VELK_IDL_FLAGS} -I${root} ${ARGN} ${file}
        WORKING_DIRECTORY ${out}
        DEPENDS ${source} ${PROJECT_SOURCE_DIR}/cmake/compile_interfaces ${PROJECT_SOURCE_DIR}/tools/typelib/help_texts.py
            ${VELK_HELP_TEXTS}
        DEPFILE ${output}.d
        COMMENT "Interfaces ${output}"
        VERBATIM)
endfunction()

function(velk_add_type_library target idl root)
    velk_find_interface_files()
    set(out ${CMAKE_CURRENT_BINARY_DIR}/${target})
    file(MAKE_DIRECTORY ${out})
    get_filename_component(name ${idl} NAME_WE)
    set(VELK_HELP_TEXTS ${root}/${name}_constants.txt)
    if(NOT EXISTS ${VELK_HELP_TEXTS})  # a library that nobody reads in an editor
        unset(VELK_HELP_TEXTS)
    endif()
    velk_compile_interfaces(${out}/${name}.tlb ${idl} -t)
    unset(VELK_HELP_TEXTS)
    velk_compile_interfaces(${out}/${name}.h ${idl} -h -DVELK_CPP_HEADER)
    velk_compile_interfaces(${out}/${name}_i.c ${idl} -u)
    set(outputs ${out}/${name}.tlb ${out}/${name}.h ${out}/${name}_i.c)
    file(GLOB_RECURSE fragments RELATIVE ${root} CONFIGURE_DEPENDS ${root}/*.idl)
    cmake_path(RELATIVE_PATH idl BASE_DIRECTORY ${root} OUTPUT_VARIABLE library)
    list(REMOVE_ITEM fragments ${library})
    foreach(fragment IN LISTS fragments)
        # A whole file for the compiler; its relative name keeps the folder's name out of the header.
        file(CONFIGURE OUTPUT ${out}/${fragment} CONTENT
            "import \"oaidl.idl\";\nimport \"ocidl.idl\";\n#include <${fragment}>\n")
        velk_compile_interfaces(${out}/${fragment}.h ${fragment} -h -DVELK_CPP_HEADER)
        list(APPEND outputs ${out}/${fragment}.h)
    endforeach()
    # The call plans, by a program of the library's own. They are the same for both widths: where there is no Wine of this one,
    # VELK_PLANS_OF names the finished build to take them from.
    set(make_plans ${PROJECT_SOURCE_DIR}/tools/wine_run $<TARGET_FILE:call_plans> write ${name}.tlb ${name}.plans)
    if(VELK_PLANS_OF)
        cmake_path(RELATIVE_PATH out BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE folder)
        set(make_plans ${CMAKE_COMMAND} -E copy ${VELK_PLANS_OF}/${folder}/${name}.plans ${name}.plans)
    endif()
    add_custom_command(
        OUTPUT ${out}/${name}.plans
        COMMAND ${CMAKE_COMMAND} -E chdir ${out} ${make_plans}
        DEPENDS ${out}/${name}.tlb call_plans
        COMMENT "Call plans ${name}.plans"
        VERBATIM)
    add_custom_target(${target}_files DEPENDS ${outputs})
    add_dependencies(generated_headers ${target}_files)
    add_library(${target} INTERFACE)
    add_dependencies(${target} ${target}_files)
    target_include_directories(${target} SYSTEM INTERFACE ${out})
    set(${target}_EMBEDDED ${out}/${name}.tlb ${out}/${name}.plans PARENT_SCOPE)
endfunction()
