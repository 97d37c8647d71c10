# velk_ship(TARGET TYPES IDL VERSION ASSEMBLY): one line for each library that is delivered. The manifests, the diagnosis
# program, the packages and the installer are made from this list. TYPES is the name given to velk_add_type_library, IDL its
# file's name without extension, ASSEMBLY the name for use without registration: not that of a DLL, because the platform
# looks for an assembly's manifest inside a DLL of the assembly's name first.
function(velk_ship target types idl version assembly)
    set_property(GLOBAL APPEND PROPERTY VELK_SHIPPED ${target})
    set_property(GLOBAL PROPERTY VELK_SHIPPED_${target}_TYPES ${CMAKE_CURRENT_BINARY_DIR}/${types}/${idl})
    set_property(GLOBAL PROPERTY VELK_SHIPPED_${target}_VERSION ${version})
    set_property(GLOBAL PROPERTY VELK_SHIPPED_${target}_ASSEMBLY ${assembly})
endfunction()

# velk_for_shipped(): what the list means to the build: the manifests, what the diagnosis program embeds (shipped.h,
# shipped.rc), and shipped.txt in the build folder, from which the packages are made.
function(velk_for_shipped)
    get_property(targets GLOBAL PROPERTY VELK_SHIPPED)
    set(number 0)
    foreach(target IN LISTS targets)
        foreach(fact TYPES VERSION ASSEMBLY)
            get_property(${fact} GLOBAL PROPERTY VELK_SHIPPED_${target}_${fact})
        endforeach()
        math(EXPR number "${number} + 1")
        string(APPEND entries "    {L\"${target}.dll\", L\"${VERSION}\"},\n")
        string(APPEND resources "${number} TYPELIB \"${TYPES}.tlb\"\n")
        string(APPEND lines "library ${ASSEMBLY} $<TARGET_FILE:${target}>\ntypes - ${TYPES}.tlb\nheader - ${TYPES}.h\nheader - ${TYPES}_i.c\n")
        list(APPEND type_libraries ${TYPES}.tlb)
        list(APPEND manifests ${CMAKE_BINARY_DIR}/${ASSEMBLY}.manifest)
        add_custom_command(
            OUTPUT ${CMAKE_BINARY_DIR}/${ASSEMBLY}.manifest
            COMMAND ${CMAKE_COMMAND} -E chdir ${CMAKE_BINARY_DIR}
                ${PROJECT_SOURCE_DIR}/tools/wine_run $<TARGET_FILE:manifest> $<TARGET_FILE_NAME:${target}> ${ASSEMBLY}.manifest
            DEPENDS ${target} manifest
            WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
            COMMENT "Manifest ${ASSEMBLY}.manifest"
            VERBATIM)
    endforeach()
    add_custom_target(manifest_file ALL DEPENDS ${manifests})

    file(CONFIGURE OUTPUT shipped.h CONTENT
        "struct Shipped {\n    const wchar_t* file;\n    const wchar_t* version;\n};\n\ninline constexpr Shipped kShipped[] = {\n${entries}};\n")
    file(CONFIGURE OUTPUT shipped.rc CONTENT "${resources}")
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/shipped.rc PROPERTIES OBJECT_DEPENDS "${type_libraries}")
    file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/shipped.txt CONTENT "${lines}program - $<TARGET_FILE:velkdoctor>\n")
    add_custom_target(shipped DEPENDS ${targets} velkdoctor)
endfunction()
