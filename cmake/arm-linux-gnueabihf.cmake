# SPDX-License-Identifier: Apache-2.0
# Debian's cross compiler for the controller's 32-bit ARM; tests run under qemu's user-mode emulation.
if(NOT PWRMGT_ARM)
    set(PWRMGT_ARM arm-linux-gnueabihf)
    set(PWRMGT_ARM_DEBIAN armhf)
endif()
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER ${PWRMGT_ARM}-gcc)
set(CMAKE_CXX_COMPILER ${PWRMGT_ARM}-g++)

# scripts/sysroot makes it: what the host platform and the tools need beside the compiler's own libraries.
set(PWRMGT_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/${PWRMGT_ARM_DEBIAN}" CACHE PATH "Libraries of the controller")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PWRMGT_SYSROOT)
cmake_path(NORMAL_PATH PWRMGT_SYSROOT)
set(CMAKE_FIND_ROOT_PATH ${PWRMGT_SYSROOT} /usr/${PWRMGT_ARM})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(PWRMGT_QEMU_ARM NAMES qemu-arm qemu-arm-static)
if(PWRMGT_QEMU_ARM)
    # Programs that need more than the compiler's own libraries run in the sysroot.
    set(PWRMGT_EMULATED_ROOT /usr/${PWRMGT_ARM} CACHE PATH "Where an emulated program finds its libraries")
    list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PWRMGT_EMULATED_ROOT)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${PWRMGT_QEMU_ARM} -L ${PWRMGT_EMULATED_ROOT})
endif()
