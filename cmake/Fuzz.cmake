# SPDX-License-Identifier: Apache-2.0
# Everything is compiled so that libFuzzer sees which branches an input takes; the sanitizers look on.
if(PWRMGT_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" OR NOT PWRMGT_SANITIZE OR NOT PWRMGT_HOST_PLATFORM)
        message(FATAL_ERROR "PWRMGT_FUZZ needs clang++, which has libFuzzer, PWRMGT_SANITIZE and the host platform")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
