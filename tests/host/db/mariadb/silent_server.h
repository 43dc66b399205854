// SPDX-License-Identifier: Apache-2.0
// A socket that lets callers in and never says anything.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "support/temp_file.h"

class SilentServer {
public:
    SilentServer() : listener_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)} {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, socket().c_str(), sizeof address.sun_path - 1);
        if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            listen(listener_, 4) != 0) {
            ADD_FAILURE() << "no socket";
        }
    }
    ~SilentServer() { close(listener_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    std::string socket() const { return place_.directory() + "/socket"; }

private:
    TempFile place_;
    int listener_;
};
