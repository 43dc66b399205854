// SPDX-License-Identifier: Apache-2.0
// A program that asks its controller for its identity once and ends: as programs do, or at once
// when it is given an argument. Its exit status is what send_ipmi_cmd() returned.
#include <unistd.h>

#include <cstdint>

#include "ipmiraw.h"

int main(int argc, char**) {
    const std::uint8_t request[] = {0x20, 0x06, 0x00, 0x01};
    std::uint32_t request_length = sizeof request;
    std::uint8_t response[256];
    std::uint32_t length = 0;
    const int result = send_ipmi_cmd(request, &request_length, response, &length);
    if (argc > 1) _exit(result);
    return result;
}
