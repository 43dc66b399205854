// SPDX-License-Identifier: Apache-2.0
// The server's and the connector's error numbers in the client's terms.
#pragma once

#include "../backend.h"

namespace pwrmgt::vekdb::mariadb {

Outcome outcome_of(unsigned error) noexcept;

}  // namespace pwrmgt::vekdb::mariadb
