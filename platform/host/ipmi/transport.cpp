// SPDX-License-Identifier: Apache-2.0
#include "transport.h"

#include <syslog.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <string_view>

#include "firmware_sim.h"
#include "frame.h"
#include "ipmiraw.h"
#include "kernel_device.h"
#include "remote.h"

namespace pwrmgt::ipmi {
namespace {

// What fails is told once for a setting, not at every exchange of a daemon that asks each second.
// The line never quotes the setting: a lan setting holds a password.
void log_once(const std::string& setting, const std::string& reason) {
    static std::mutex mutex;
    static std::string told;
    const std::lock_guard lock(mutex);
    if (told == setting + reason) return;
    told = setting + reason;
    syslog(LOG_ERR, "VEKDB_IPMI: %s", reason.c_str());
}

bool names_simulator(std::string_view setting) {
    return setting.empty() || setting == "sim";
}

bool names_device(std::string_view setting) {
    constexpr std::string_view kDevice = "/dev/ipmi";
    if (!setting.starts_with(kDevice)) return false;
    setting.remove_prefix(kDevice.size());
    return !setting.empty() &&
           std::all_of(setting.begin(), setting.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool names_remote(std::string_view setting) {
    constexpr std::string_view kRemote = "lan://";
    return setting.starts_with(kRemote) && setting.size() > kRemote.size();
}

Send simulate(const std::string&, const Request& request, Response& response, std::string&) {
    return sim::answer(request, std::time(nullptr), response);
}

struct Transport {
    bool (*named_by)(std::string_view setting);
    Send (*send)(const std::string& setting, const Request& request, Response& response,
                 std::string& reason);
};

constexpr Transport kTransports[] = {
    {names_simulator, simulate},
    {names_device, ask_kernel},
    {names_remote, ask_remote},
};

Send send(const Request& request, Response& response) {
    const char* text = secure_getenv("VEKDB_IPMI");
    const std::string setting = text != nullptr ? text : "";
    for (const Transport& transport : kTransports) {
        if (!transport.named_by(setting)) continue;
        std::string reason;
        const Send result = transport.send(setting, request, response, reason);
        if (!reason.empty()) log_once(setting, reason);
        return result;
    }
    log_once(setting, "neither sim, /dev/ipmiN nor lan://..., nothing is sent");
    return Send::unknown_transport;
}

Send exchange(const std::uint8_t* request, const std::uint32_t* request_length,
              std::uint8_t* response, std::uint32_t* response_length) {
    if (request == nullptr || request_length == nullptr || response == nullptr ||
        response_length == nullptr) {
        return Send::null_argument;
    }
    if (*request_length < kHeaderBytes) return Send::no_request;

    Response answer;
    const Send result = send(Request({request, *request_length}), answer);
    if (result != Send::done) return result;
    const auto bytes = answer.bytes();
    std::copy(bytes.begin(), bytes.end(), response);
    *response_length = static_cast<std::uint32_t>(bytes.size());
    return result;
}

}  // namespace
}  // namespace pwrmgt::ipmi

extern "C" [[gnu::visibility("default")]] int send_ipmi_cmd(const uint8_t* request,
                                                            uint32_t* request_length,
                                                            uint8_t* response,
                                                            uint32_t* response_length) {
    using namespace pwrmgt::ipmi;
    try {
        return static_cast<int>(exchange(request, request_length, response, response_length));
    } catch (...) {  // a C caller cannot take an exception
        return static_cast<int>(Send::out_of_resources);
    }
}
