// SPDX-License-Identifier: Apache-2.0
// The one open session with a controller, kept from exchange to exchange. To be used by one thread
// at a time, with InLibrary.
#pragma once

#include <cstdint>
#include <optional>

#include "../frame.h"
#include "../transport.h"
#include "loop.h"
#include "target.h"

extern "C" {
#include <OpenIPMI/ipmi_conn.h>
}

namespace pwrmgt::ipmi::openipmi {

// How long a call may take, and when that is over.
struct Deadline {
    std::chrono::milliseconds timeout;
    Clock::time_point until;
};

class Session {
public:
    bool is_open() const { return connection_ != nullptr; }
    // Whether the controller may have forgotten it, so long was it idle.
    bool stale() const;

    Send open(const Target& target, const Deadline& deadline);
    Send exchange(const Request& request, const Deadline& deadline, Response& response);
    void close();
    // In a forked child: takes it apart without a word to the controller, whose session is the
    // parent's.
    void abandon();

private:
    enum class State { opening, up, down };

    Send connect(const Target& target, const Deadline& deadline);
    static void changed(ipmi_con_t*, int error, unsigned int, int any_port_up, void* session);
    static int answered(ipmi_con_t*, ipmi_msgi_t* item);

    ipmi_con_t* connection_ = nullptr;
    State state_ = State::down;
    int error_ = 0;
    Clock::time_point last_used_;
    std::uintptr_t exchange_ = 0;  // the number of the exchange that is waited for
    Response* response_ = nullptr;
    bool done_ = false;
};

}  // namespace pwrmgt::ipmi::openipmi
