# SPDX-License-Identifier: Apache-2.0
# An interface target that every target of ours links: the warnings, and whether they are errors.
add_library(pwrmgt_warnings INTERFACE)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    # Of a change in g++ 7 that no two of our objects can disagree about.
    target_compile_options(pwrmgt_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-psabi>)
endif()
target_compile_options(pwrmgt_warnings INTERFACE -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow
                                                 $<$<BOOL:${PWRMGT_WERROR}>:-Werror>)
