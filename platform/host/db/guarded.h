// SPDX-License-Identifier: Apache-2.0
// The C boundary: memory that runs out becomes a return value.
#pragma once

#include <exception>
#include <new>

#include "backend.h"

namespace pwrmgt::vekdb {

inline constexpr int code(Outcome outcome) noexcept {
    return static_cast<int>(outcome);
}

template <class Body>
int guarded(Body body) noexcept {
    try {
        return code(body());
    } catch (const std::bad_alloc&) {
        return code(Outcome::no_memory);
    } catch (const std::exception&) {
        return code(Outcome::failed);
    }
}

}  // namespace pwrmgt::vekdb
