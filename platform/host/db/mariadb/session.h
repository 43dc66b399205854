// SPDX-License-Identifier: Apache-2.0
// A session with the server: connected within bounded time, set to behave as the client promises,
// and with the tables in its database.
#pragma once

#include <mysql.h>

#include <memory>
#include <string>

#include "address.h"

namespace pwrmgt::vekdb::mariadb {

struct CloseSession {
    void operator()(MYSQL* session) const noexcept;
};
using Session = std::unique_ptr<MYSQL, CloseSession>;

// Null with the reason in `why`.
Session open_session(const Address& address, std::string& why);

// A table was not there: the next session makes those that are missing.
void suspect_missing_table() noexcept;

}  // namespace pwrmgt::vekdb::mariadb
