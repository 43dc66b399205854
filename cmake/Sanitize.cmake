# SPDX-License-Identifier: Apache-2.0
# The sanitizers go into every object, the library's included.
if(PWRMGT_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=address,undefined)
endif()
