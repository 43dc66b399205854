// SPDX-License-Identifier: Apache-2.0
#include "remote.h"

#include <array>

#include "loaded_module.h"
#include "openipmi/module.h"
#include "timeout.h"

namespace pwrmgt::ipmi {
namespace {

constinit host::LoadedModule openipmi{kModuleFile, kModuleDoor};

}  // namespace

Send ask_remote(const std::string& setting, const Request& request, Response& response,
                std::string& reason) {
    const auto exchange = openipmi.door<ModuleDoor>(reason);
    if (exchange == nullptr) {
        reason += "; nothing is sent";
        return Send::not_built;
    }
    if (!can_be_sent(request)) return Send::no_request;
    if (request.responder() != kController) return Send::no_answer;
    const auto timeout_ms = static_cast<std::uint32_t>(exchange_timeout().count());
    const auto frame = request.frame();
    std::array<std::uint8_t, kMaxResponseBytes> answer{};
    std::size_t length = 0;
    const char* why = nullptr;
    const auto result = static_cast<Send>(exchange(setting.c_str(), timeout_ms, frame.data(),
                                                   frame.size(), answer.data(), &length, &why));
    if (why != nullptr) reason = why;
    if (result == Send::done) response.bytes(std::span(answer).first(length));
    return result;
}

}  // namespace pwrmgt::ipmi
