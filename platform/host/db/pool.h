// SPDX-License-Identifier: Apache-2.0
// The connections of the process: those that callers hold, and a few idle ones kept for the next
// open.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "backend.h"

namespace pwrmgt::vekdb {

// A connection that a caller holds. Threads that share its handle take turns.
struct Lease {
    std::unique_ptr<BackendConnection> connection;
    std::mutex turn;

    Lease() = default;
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    // Goes back to the pool with the last thread that uses it.
    ~Lease();
};

// A handle on a connection, idle or new; 0 with the reason in `why`.
std::uint32_t lease_connection(std::string& why);

// The connection behind a handle, kept while the caller looks at it; null for any other handle.
std::shared_ptr<Lease> find_connection(std::uint32_t handle);

void return_connection(std::uint32_t handle) noexcept;

// Closes what is kept for the next open. The end of the process does, where it is not too late for
// an engine.
void close_idle_connections() noexcept;

}  // namespace pwrmgt::vekdb
