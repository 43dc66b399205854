// SPDX-License-Identifier: Apache-2.0
// ipmi_sim as a process of the test's own, with the OEM commands of peer_module.c, on a port that
// the system chose.
#pragma once

#include <sys/types.h>

#include <string>

#include "support/temp_file.h"

class Peer {
public:
    Peer();
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    int port() const { return port_; }
    // As when a controller loses its power.
    void die();

private:
    void wait_until_ready();

    TempFile place_;
    pid_t process_ = -1;
    int port_ = 0;
};

// The setting that names a controller on this machine.
std::string lan_setting(int port, const std::string& user, const std::string& password);
// The same, with the user and password that the peer knows.
std::string lan_setting(int port);
