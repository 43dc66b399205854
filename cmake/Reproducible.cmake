# SPDX-License-Identifier: Apache-2.0
# The same files come out wherever the tree and the build lie: their paths are left out, debug information included. Builds
# for debugging keep them.
set(shipped_config $<CONFIG:Release,RelWithDebInfo,MinSizeRel,None>)
add_compile_options($<${shipped_config}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
                    $<${shipped_config}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
