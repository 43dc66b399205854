// SPDX-License-Identifier: Apache-2.0
// The door of the module that speaks to remote controllers. libipmiraw loads it when it is asked
// for one, so that programs run where OpenIPMI is not installed.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// One exchange with the controller that `setting` names, lan://..., given up after
// `timeout_ms`. Returns a pwrmgt::ipmi::Send; with `done` up to 256 bytes of `response` are
// written, otherwise `reason` may name what is wrong with the setting, in a text that lasts.
int ipmiraw_openipmi_exchange(const char* setting, std::uint32_t timeout_ms,
                              const std::uint8_t* request, std::size_t request_length,
                              std::uint8_t* response, std::size_t* response_length,
                              const char** reason);
}

namespace pwrmgt::ipmi {

inline constexpr const char* kModuleFile = "libipmiraw_openipmi.so";
inline constexpr const char* kModuleDoor = "ipmiraw_openipmi_exchange";
using ModuleDoor = decltype(&ipmiraw_openipmi_exchange);

}  // namespace pwrmgt::ipmi
