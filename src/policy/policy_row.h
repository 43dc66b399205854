// SPDX-License-Identifier: Apache-2.0
// The one-row policy table and its record: fields as data, and the process's copy of `IsBlade`.
#pragma once

#include <cstdint>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::policy {

// The policy columns of a row, before its unstress columns.
inline constexpr int kPolicyFields = 12;

// Reads the twelve policy columns of the result's current row.
void read_policy(uint32_t result, pwrmgt_power_policy_t& policy);

// Puts `_id` 0 and the twelve policy columns in their order.
void put_policy(uint32_t content, const pwrmgt_power_policy_t& policy);

// The exported flag, in relaxed order: other threads may read it.
uint8_t cached_is_blade();
void cache_is_blade(uint8_t is_blade);

}  // namespace pwrmgt::policy
