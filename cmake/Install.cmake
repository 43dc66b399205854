# SPDX-License-Identifier: Apache-2.0
# What programs are built with: headers, the CMake package vekdb_pwrmgt and vekdb_pwrmgt.pc. Both find the rest of the
# installed tree from where they lie in it.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb_pwrmgt)

install(FILES include/vekdb_pwrmgt.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
# A controller's own platform keeps its own headers.
if(NOT PWRMGT_PLATFORM_DIR)
    install(DIRECTORY platform/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vekdb_platform COMPONENT dev)
endif()

install(EXPORT vekdb_pwrmgt-lib NAMESPACE vekdb_pwrmgt:: DESTINATION ${package_dir} COMPONENT dev)
if(PWRMGT_HOST_PLATFORM)
    install(EXPORT vekdb_pwrmgt-host NAMESPACE vekdb_pwrmgt:: DESTINATION ${package_dir} COMPONENT dev)
endif()
configure_package_config_file(cmake/vekdb_pwrmgt-config.cmake.in vekdb_pwrmgt-config.cmake
                              INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(vekdb_pwrmgt-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vekdb_pwrmgt-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vekdb_pwrmgt-config-version.cmake
        DESTINATION ${package_dir} COMPONENT dev)

file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/vekdb_pwrmgt.pc.in vekdb_pwrmgt.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vekdb_pwrmgt.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# The daemon's unit, its user and its directories, where systemd looks for those of packages.
set(PWRMGT_UNIT_DIR lib/systemd/system CACHE STRING "Where systemd's units are installed")
if(PWRMGT_TOOLS)
    install(FILES systemd/pwrmgtd.service DESTINATION ${PWRMGT_UNIT_DIR})
    install(FILES systemd/pwrmgtd.conf DESTINATION ${CMAKE_INSTALL_SYSCONFDIR}/vekdb)
    install(FILES systemd/pwrmgtd.sysusers DESTINATION lib/sysusers.d RENAME pwrmgtd.conf)
    install(FILES systemd/pwrmgtd.tmpfiles DESTINATION lib/tmpfiles.d RENAME pwrmgtd.conf)
endif()
