// SPDX-License-Identifier: Apache-2.0
// Owners of the client's 32-bit handles: each is handed back exactly once, on every path.
#pragma once

#include <cstdint>
#include <utility>

#include "vekdb_client.h"

namespace pwrmgt::db {

template <auto Release>
class Owned {
public:
    Owned() = default;
    explicit Owned(uint32_t handle) : handle_{handle} {}
    Owned(Owned&& other) noexcept : handle_{std::exchange(other.handle_, 0)} {}
    Owned& operator=(Owned&&) = delete;
    ~Owned() { reset(); }

    uint32_t get() const { return handle_; }
    explicit operator bool() const { return handle_ != 0; }

    // For an out-parameter of the client; the owner must be empty. own() takes a handle later than
    // its owner stands, where the order of release asks for that.
    uint32_t* out() { return &handle_; }
    void own(uint32_t handle) { handle_ = handle; }

    void reset() {
        if (handle_ != 0) Release(std::exchange(handle_, 0));
    }

private:
    uint32_t handle_ = 0;
};

using Connection = Owned<vek_db_close>;
using Result = Owned<vek_db_free_result>;
using Content = Owned<vek_db_free_content_values>;

}  // namespace pwrmgt::db
