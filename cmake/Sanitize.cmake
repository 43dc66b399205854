# SPDX-License-Identifier: Apache-2.0
# The sanitizers go into every object, the library's included.
set(PWRMGT_SANITIZERS "address,undefined" CACHE STRING "Sanitizers of PWRMGT_SANITIZE, as -fsanitize takes them")
if(PWRMGT_SANITIZE)
    add_compile_options(-fsanitize=${PWRMGT_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${PWRMGT_SANITIZERS})
endif()
