// SPDX-License-Identifier: Apache-2.0
// What $VEKDB_SERVER says: which server, who asks, and which of its databases.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pwrmgt::vekdb::mariadb {

struct Address {
    std::optional<std::string> user;  // not given: the option files' or the process's own
    std::optional<std::string> password;
    std::string host;    // a name or an address; empty with a socket
    std::string socket;  // path; empty with a host
    unsigned port = 0;   // 0: the server's usual one
    std::string database;

    bool operator==(const Address&) const = default;
};

// The path of a socket, or mariadb://[user[:password]@]host[:port][/database], each part with %XX
// for the characters that separate parts; a host that starts with %2F is the path of a socket.
// Nothing, with the reason in `why`, when it is neither.
std::optional<Address> parse_address(std::string_view setting, std::string& why);

}  // namespace pwrmgt::vekdb::mariadb
