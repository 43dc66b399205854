// SPDX-License-Identifier: Apache-2.0
// A connection and a result of the database client, for what no function of the library hands out.
#pragma once

#include <cstdint>

#include "vekdb_client.h"

namespace pwrmgt::pwrmgtctl {

// What a step returns when there is a row.
inline constexpr int kRowReady = 9;

// Handed back in this order's reverse.
struct ClientHandles {
    uint32_t connection = 0;
    uint32_t result = 0;

    ClientHandles() = default;
    ClientHandles(const ClientHandles&) = delete;
    ClientHandles& operator=(const ClientHandles&) = delete;
    ~ClientHandles() {
        if (result != 0) vek_db_free_result(result);
        if (connection != 0) vek_db_close(connection);
    }
};

}  // namespace pwrmgt::pwrmgtctl
