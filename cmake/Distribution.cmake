# velk_ship(TARGET TYPES IDL VERSION): one line for each library that is delivered. The diagnosis program, the packages and the
# installer are made from this list; TYPES is the name given to velk_add_type_library, IDL its file's name without extension.
function(velk_ship target types idl version)
    set_property(GLOBAL APPEND PROPERTY VELK_SHIPPED_TARGETS ${target})
    set_property(GLOBAL APPEND PROPERTY VELK_SHIPPED_LIBRARIES $<TARGET_FILE:${target}>)
    set_property(GLOBAL APPEND PROPERTY VELK_SHIPPED_TYPES ${CMAKE_CURRENT_BINARY_DIR}/${types}/${idl})
    set_property(GLOBAL APPEND PROPERTY VELK_SHIPPED_VERSIONS ${version})
endfunction()

# velk_write_shipped(): what the list means to the diagnosis program: a header, and each type library as a resource.
function(velk_write_shipped)
    get_property(targets GLOBAL PROPERTY VELK_SHIPPED_TARGETS)
    get_property(types GLOBAL PROPERTY VELK_SHIPPED_TYPES)
    get_property(versions GLOBAL PROPERTY VELK_SHIPPED_VERSIONS)
    set(number 0)
    foreach(target type version IN ZIP_LISTS targets types versions)
        math(EXPR number "${number} + 1")
        string(APPEND entries "    {L\"${target}.dll\", L\"${version}\"},\n")
        string(APPEND resources "${number} TYPELIB \"${type}.tlb\"\n")
    endforeach()
    file(CONFIGURE OUTPUT shipped.h CONTENT
        "struct Shipped {\n    const wchar_t* file;\n    const wchar_t* version;\n};\n\ninline constexpr Shipped kShipped[] = {\n${entries}};\n")
    file(CONFIGURE OUTPUT shipped.rc CONTENT "${resources}")
    list(TRANSFORM types APPEND .tlb)
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/shipped.rc PROPERTIES OBJECT_DEPENDS "${types}")
    # What the packages take from this build folder, one file a line.
    get_property(libraries GLOBAL PROPERTY VELK_SHIPPED_LIBRARIES)
    set(headers ${types})
    list(TRANSFORM headers REPLACE "\\.tlb$" ".h")
    list(JOIN libraries "\n" lines)
    list(JOIN types "\n" type_lines)
    list(JOIN headers "\n" header_lines)
    file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/shipped.txt
        CONTENT "${lines}\n${type_lines}\n${header_lines}\n$<TARGET_FILE:velkdoctor>\n")
    add_custom_target(shipped DEPENDS ${targets} velkdoctor)
endfunction()
