// SPDX-License-Identifier: Apache-2.0
// The server's and the connector's error numbers in the client's terms.
#pragma once

#include "../backend.h"

namespace pwrmgt::vekdb::mariadb {

Outcome outcome_of(unsigned error) noexcept;

// Whether nothing can be said in a session any more after an error.
bool ends_session(unsigned error) noexcept;

}  // namespace pwrmgt::vekdb::mariadb
