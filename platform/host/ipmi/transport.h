// SPDX-License-Identifier: Apache-2.0
// Where requests go: the transport that $VEKDB_IPMI names, asked for at each exchange.
#pragma once

namespace pwrmgt::ipmi {

// What send_ipmi_cmd() returns; only `done` means that there is a completion code.
enum class Send : int {
    done = 0,
    null_argument = 1,
    no_request = 2,         // not even a header, or nothing that IPMI could carry
    not_built = 3,          // the transport's module, or what that needs, is not installed
    unknown_transport = 4,  // $VEKDB_IPMI names none
    no_answer = 5,          // nobody has that responder address, or it kept silent
    out_of_resources = 6,
    timed_out = 7,    // given up before the answer came
    refused = 8,      // the controller does not take the log-in
    unreachable = 9,  // no such device, or a host without an address
};

}  // namespace pwrmgt::ipmi
