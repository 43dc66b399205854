// SPDX-License-Identifier: Apache-2.0
// A MariaDB server of the test's own: on a socket only, its data in a directory that goes with it.
#pragma once

#include <sys/types.h>

#include <string>

#include "support/temp_file.h"

class MariadbServer {
public:
    MariadbServer() = default;
    ~MariadbServer() { end(); }
    MariadbServer(const MariadbServer&) = delete;
    MariadbServer& operator=(const MariadbServer&) = delete;

    // False, told to the test, when it does not come up. Data of an earlier start is still there.
    bool start();

    // At once, as a power cut would.
    void end();

    std::string socket() const { return place_.directory() + "/socket"; }
    std::string log() const;

    // What $VEKDB_SERVER is for one of its databases, which the first to open it makes.
    std::string address(const std::string& database) const { return address("root", database); }
    std::string address(const std::string& user, const std::string& database) const;

private:
    bool make_data();
    bool await_readiness();

    TempFile place_;
    pid_t process_ = 0;
    bool has_data_ = false;
};

// The one that all tests of this program share, each with a database of its own.
MariadbServer& shared_server();
