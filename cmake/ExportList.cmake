# SPDX-License-Identifier: Apache-2.0
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
