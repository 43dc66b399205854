// SPDX-License-Identifier: Apache-2.0
#include "kernel.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <deque>
#include <string_view>
#include <utility>

Kernel kernel;

namespace {

struct Answered {
    int type;
    long message;
    std::uint8_t netfn;
    std::uint8_t command;
    std::vector<std::uint8_t> bytes;
};

// The library waits for one end to become readable; a byte from the other stands for an answer.
int device_end = -1;
int driver_end = -1;
std::deque<Answered> answers;

int open_device() {
    ++kernel.opened;
    device_end = -1;
    if (kernel.device == Kernel::Device::missing) return errno = ENOENT, -1;
    if (kernel.device == Kernel::Device::forbidden) return errno = EACCES, -1;
    if (kernel.device == Kernel::Device::fifo) {
        // A FIFO as one that was made in the device's place.
        int fifo[2];
        if (pipe(fifo) != 0) return -1;
        close(fifo[1]);
        return fifo[0];
    }
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return -1;
    if (driver_end >= 0) close(driver_end);
    answers.clear();
    driver_end = ends[0];
    return device_end = ends[1];
}

void queue(Answered answer) {
    answers.push_back(std::move(answer));
    if (write(driver_end, "!", 1) != 1) answers.pop_back();
}

int take_request(const ipmi_req& request) {
    if (kernel.device == Kernel::Device::refusing) return errno = EBUSY, -1;
    const auto& address = *reinterpret_cast<const ipmi_system_interface_addr*>(request.addr);
    const KernelRequest seen{request.msg.netfn,
                             address.lun,
                             request.msg.cmd,
                             {request.msg.data, request.msg.data + request.msg.data_len}};
    const auto answer =
        kernel.device == Kernel::Device::answering ? kernel.answer(seen) : std::nullopt;
    if (!answer) return 0;
    const auto netfn = static_cast<std::uint8_t>(seen.netfn | 1);
    if (kernel.noisy) {
        queue({IPMI_ASYNC_EVENT_RECV_TYPE, 0, 0x05, 0x02, {0, 1, 2, 3}});
        queue({IPMI_RESPONSE_RECV_TYPE, request.msgid + 1, netfn, seen.command, {0, 0xBA, 0xD0}});
    }
    queue({IPMI_RESPONSE_RECV_TYPE, request.msgid, netfn, seen.command, *answer});
    return 0;
}

int give_answer(ipmi_recv& received) {
    char note = 0;
    if (answers.empty() || read(device_end, &note, 1) != 1) return errno = EAGAIN, -1;
    const Answered answer = answers.front();
    answers.pop_front();
    received.recv_type = answer.type;
    received.msgid = answer.message;
    received.msg.netfn = answer.netfn;
    received.msg.cmd = answer.command;
    const std::size_t length = std::min<std::size_t>(answer.bytes.size(), received.msg.data_len);
    std::copy_n(answer.bytes.begin(), length, received.msg.data);
    received.msg.data_len = static_cast<unsigned short>(length);
    auto& address = *reinterpret_cast<ipmi_system_interface_addr*>(received.addr);
    address = {IPMI_SYSTEM_INTERFACE_ADDR_TYPE, IPMI_BMC_CHANNEL, 0};
    received.addr_len = sizeof address;
    return length < answer.bytes.size() ? (errno = EMSGSIZE, -1) : 0;
}

int open_path(const char* path, int flags, va_list arguments) {
    if (std::string_view(path).starts_with("/dev/ipmi")) {
        if (std::string_view(path) != "/dev/ipmi0") return errno = ENOENT, -1;
        return open_device();
    }
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

}  // namespace

// A program's open() is one of these two, as its settings for large files are.
extern "C" int stand_in_for_open(const char* path, int flags, ...) __asm__("open");
extern "C" int stand_in_for_open64(const char* path, int flags, ...) __asm__("open64");

extern "C" int stand_in_for_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int opened = open_path(path, flags, arguments);
    va_end(arguments);
    return opened;
}
extern "C" int stand_in_for_open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int opened = open_path(path, flags, arguments);
    va_end(arguments);
    return opened;
}

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (fd != device_end || fd < 0 || kernel.device == Kernel::Device::other_device) {
        const auto result = static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
        // An emulator says this of a request that it does not know, before any kernel sees it.
        if (result < 0 && errno == ENOSYS) errno = ENOTTY;
        return result;
    }
    switch (request) {
        case IPMICTL_SEND_COMMAND:
            return take_request(*static_cast<ipmi_req*>(argument));
        case IPMICTL_RECEIVE_MSG:
        case IPMICTL_RECEIVE_MSG_TRUNC:
            return give_answer(*static_cast<ipmi_recv*>(argument));
        default:
            return 0;
    }
}
