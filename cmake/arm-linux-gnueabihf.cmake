# SPDX-License-Identifier: Apache-2.0
# Debian's cross compiler for the controller's 32-bit ARM; tests run under qemu's user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

# scripts/sysroot makes it: what the host platform and the tools need beside the compiler's own libraries.
set(PWRMGT_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/armhf" CACHE PATH "Libraries of the controller")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PWRMGT_SYSROOT)
cmake_path(NORMAL_PATH PWRMGT_SYSROOT)
set(CMAKE_FIND_ROOT_PATH ${PWRMGT_SYSROOT} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(PWRMGT_QEMU_ARM NAMES qemu-arm qemu-arm-static)
if(PWRMGT_QEMU_ARM)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${PWRMGT_QEMU_ARM} -L /usr/arm-linux-gnueabihf)
endif()
