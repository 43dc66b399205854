# SPDX-License-Identifier: Apache-2.0
# 32-bit ARM without a floating-point unit (Debian's armel).
set(PWRMGT_ARM arm-linux-gnueabi)
set(PWRMGT_ARM_DEBIAN armel)
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-gnueabihf.cmake)
