// SPDX-License-Identifier: Apache-2.0
#include "module.h"

#include "address.h"
#include "connection.h"
#include "session.h"

using namespace pwrmgt::vekdb;
using namespace pwrmgt::vekdb::mariadb;

// The list of exports can only pick from what is not hidden.
#pragma GCC visibility push(default)
extern "C" BackendConnection* vekdb_mariadb_connect_1(const std::string& setting,
                                                      std::string& why) {
    const std::optional<Address> address = parse_address(setting, why);
    if (!address) return nullptr;
    Session session = open_session(*address, why);
    return session ? new MariadbConnection{std::move(session), setting} : nullptr;
}
#pragma GCC visibility pop
