// SPDX-License-Identifier: Apache-2.0
// One exchange opens the device and closes it: nothing is shared with other threads or forked
// children, and an answer that comes too late finds nobody.
#include "kernel_device.h"

#include <fcntl.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <system_error>

#include "timeout.h"

namespace pwrmgt::ipmi {
namespace {

using Clock = std::chrono::steady_clock;

constexpr long kMessage = 1;

class Device {
public:
    explicit Device(const std::string& path)
        : fd_(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)) {}
    ~Device() {
        if (fd_ >= 0) close(fd_);
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    bool is_open() const { return fd_ >= 0; }
    Send send(const Request& request) const;
    bool readable_before(Clock::time_point until) const;
    // Whether what there is to read was the answer.
    bool take_answer(Response& response) const;

private:
    int fd_;
};

Send Device::send(const Request& request) const {
    ipmi_system_interface_addr controller{};
    controller.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    controller.channel = IPMI_BMC_CHANNEL;
    controller.lun = request.lun();
    // The driver reads from it only, through pointers that are not const.
    std::array<std::uint8_t, kMaxPayloadBytes> payload{};
    std::ranges::copy(request.payload(), payload.begin());
    ipmi_req message{};
    message.addr = reinterpret_cast<unsigned char*>(&controller);
    message.addr_len = sizeof controller;
    message.msgid = kMessage;
    message.msg.netfn = request.netfn();
    message.msg.cmd = request.command();
    message.msg.data = payload.data();
    message.msg.data_len = static_cast<unsigned short>(request.payload().size());
    if (ioctl(fd_, IPMICTL_SEND_COMMAND, &message) == 0) return Send::done;
    switch (errno) {
        case ENOMEM:
            return Send::out_of_resources;
        case ENOTTY:
            return Send::unreachable;  // some other device
        default:
            return Send::no_answer;
    }
}

bool Device::readable_before(Clock::time_point until) const {
    pollfd waiting{fd_, POLLIN, 0};
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        const int found =
            poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (found > 0) return (waiting.revents & POLLIN) != 0;
        if (found == 0 || errno != EINTR) return false;
    }
}

bool Device::take_answer(Response& response) const {
    std::array<std::uint8_t, IPMI_MAX_MSG_LENGTH> data{};
    ipmi_addr from{};
    ipmi_recv received{};
    received.addr = reinterpret_cast<unsigned char*>(&from);
    received.addr_len = sizeof from;
    received.msg.data = data.data();
    received.msg.data_len = data.size();
    // What does not fit is cut off, and would be beyond a caller's room anyway.
    if (ioctl(fd_, IPMICTL_RECEIVE_MSG_TRUNC, &received) != 0 && errno != EMSGSIZE) return false;
    if (received.recv_type != IPMI_RESPONSE_RECV_TYPE || received.msgid != kMessage) return false;
    response.bytes(
        std::span(data).first(std::min<std::size_t>(received.msg.data_len, data.size())));
    return true;
}

}  // namespace

Send ask_kernel(const std::string& setting, const Request& request, Response& response,
                std::string& reason) {
    if (!can_be_sent(request)) return Send::no_request;
    if (request.responder() != kController) return Send::no_answer;
    const auto until = Clock::now() + exchange_timeout();
    const Device device(setting);
    const Send sent = device.is_open() ? device.send(request) : Send::unreachable;
    if (sent == Send::unreachable) {
        reason = device.is_open() ? "not an IPMI device" : std::generic_category().message(errno);
        reason += ", nothing is sent";
    }
    if (sent != Send::done) return sent;
    while (device.readable_before(until)) {
        if (device.take_answer(response)) {
            return response.length() > 0 ? Send::done : Send::no_answer;
        }
        if (Clock::now() >= until) break;
    }
    return Send::timed_out;
}

}  // namespace pwrmgt::ipmi
