// SPDX-License-Identifier: Apache-2.0
// The platform family of the host platform: chosen by the environment, so that both kinds of
// controller can be played on one machine.
#include "platform_id.h"

#include <cstdlib>
#include <string_view>

extern "C" [[gnu::visibility("default")]] int is_quoril_platform(void) {
    const char* family = secure_getenv("VEKDB_PLATFORM");
    return family != nullptr && std::string_view(family) == "quoril" ? 1 : 0;
}
