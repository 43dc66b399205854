# SPDX-License-Identifier: Apache-2.0
# What the five shared libraries have in common: the version of their interface, the list of what they export, and where
# they are installed.

# The number in the names that programs are linked to. abi/README.md says when it changes; it is not the project's version.
set(PWRMGT_INTERFACE_VERSION 1.0.0)
string(REGEX MATCH "^[0-9]+" PWRMGT_INTERFACE_MAJOR ${PWRMGT_INTERFACE_VERSION})

# An installed tree may be moved as a whole. Packages for the system's own directories set CMAKE_SKIP_INSTALL_RPATH.
file(RELATIVE_PATH libraries_from_programs "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
# A rule that names no component belongs to the programs.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME tools)

# Makes a linker version script from a sorted list of symbols: those are exported, all else is local.
# There is no version node, so the names stay plain.
function(pwrmgt_export_list target list)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
    file(STRINGS "${list}" symbols REGEX "^[^#]")
    set(lines "")
    foreach(symbol IN LISTS symbols)
        string(APPEND lines "        ${symbol};\n")
    endforeach()
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
    file(CONFIGURE OUTPUT "${script}" CONTENT "{\n    global:\n${lines}    local:\n        *;\n};\n" @ONLY)
    target_link_options(${target} PRIVATE "-Wl,--version-script=${script}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${script}" CXX_VISIBILITY_PRESET hidden
                                               C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# pwrmgt_shared_library(<target> <list of exports> <component>): the library itself is installed with the component, lib or
# host, the link that programs are linked through with the development files.
function(pwrmgt_shared_library target list component)
    set_target_properties(${target} PROPERTIES VERSION ${PWRMGT_INTERFACE_VERSION} SOVERSION ${PWRMGT_INTERFACE_MAJOR}
                                               INSTALL_RPATH $ORIGIN)
    pwrmgt_export_list(${target} ${list})
    set(headers ${CMAKE_INSTALL_INCLUDEDIR})
    if(component STREQUAL host)
        string(APPEND headers /vekdb_platform)
    endif()
    target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${headers}>)
    install(TARGETS ${target} EXPORT vekdb_pwrmgt-${component}
            LIBRARY COMPONENT ${component} NAMELINK_COMPONENT dev)
endfunction()

# pwrmgt_module(<target> <parts> <library> <component>): a shared object of the objects <parts>, with the exports that
# exports.txt lists, which <library> looks for beside itself and nowhere else. A component of its own holds it, so that it can
# be a package of its own: what it is linked to is not needed where it is not used.
function(pwrmgt_module target parts library component)
    add_library(${target} MODULE)
    target_link_libraries(${target} PRIVATE ${parts})
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX
                          LIBRARY_OUTPUT_DIRECTORY $<TARGET_FILE_DIR:${library}>)
    pwrmgt_export_list(${target} ${CMAKE_CURRENT_SOURCE_DIR}/exports.txt)
    install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component})
endfunction()
