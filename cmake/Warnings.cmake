# SPDX-License-Identifier: Apache-2.0
# An interface target that every target of ours links: the warnings, and whether they are errors.
add_library(pwrmgt_warnings INTERFACE)
target_compile_options(pwrmgt_warnings INTERFACE -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow
                                                 $<$<BOOL:${PWRMGT_WERROR}>:-Werror>)
