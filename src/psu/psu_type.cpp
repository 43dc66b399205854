// SPDX-License-Identifier: Apache-2.0
// The installed supply type and configuration code: properties read once and cached in globals.
#include <atomic>

#include "platform_id.h"
#include "vekdb_prop.h"
#include "vekdb_pwrmgt.h"

uint32_t g_psu_installed = PWRMGT_PSU_UNKNOWN;
uint8_t g_psu_config_info = PWRMGT_PSU_CONFIG_UNREAD;

namespace {

constexpr uint32_t kCrps = 1;
constexpr const char* kTypeKey = "/ac/tavn/power/psu_installed";
constexpr const char* kConfigKey = "/ac/tavn/power/psu_config_info";

}  // namespace

extern "C" uint32_t pwrmgt_get_psu_type_installed() {
    if (is_quoril_platform() != 0) return PWRMGT_PSU_UNKNOWN;
    const std::atomic_ref cache{g_psu_installed};
    const uint32_t cached = cache.load(std::memory_order_relaxed);
    if (cached != PWRMGT_PSU_UNKNOWN) return cached & 0xFF;
    uint8_t type = PWRMGT_PSU_UNKNOWN;
    if (propdb_get_byte(kTypeKey, &type) != 0) return PWRMGT_PSU_UNKNOWN;
    cache.store(type, std::memory_order_relaxed);
    return type;
}

extern "C" uint32_t pwrmgt_psu_type_installed() {
    return pwrmgt_get_psu_type_installed();
}

extern "C" uint32_t pwrmgt_psu_crps_installed() {
    return pwrmgt_get_psu_type_installed() == kCrps ? 1 : 0;
}

extern "C" uint32_t pwrmgt_get_psu_config_info() {
    const std::atomic_ref cache{g_psu_config_info};
    const uint8_t cached = cache.load(std::memory_order_relaxed);
    if (cached != PWRMGT_PSU_CONFIG_UNREAD) return cached;
    uint8_t config = PWRMGT_PSU_CONFIG_UNREAD;
    if (propdb_get_byte(kConfigKey, &config) != 0) return PWRMGT_PSU_CONFIG_UNREAD;
    cache.store(config, std::memory_order_relaxed);
    return config;
}
