# SPDX-License-Identifier: Apache-2.0
# Protection of what is shipped, against faults that get past the tests: for the directories added after this. Tests are
# built without it. Symbols stay shared between program and library: nothing is bound to the library itself.
option(PWRMGT_HARDENING "Stack protector, fortified C library calls, position-independent programs, read-only relocations" ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)

if(PWRMGT_HARDENING)
    add_compile_options(-fstack-protector-strong)
    # The C library checks lengths in optimised code only; the sanitizers do it better.
    if(NOT PWRMGT_SANITIZE)
        set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
        add_compile_options($<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
    endif()
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
