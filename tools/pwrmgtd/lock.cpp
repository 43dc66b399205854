// SPDX-License-Identifier: Apache-2.0
#include "lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace pwrmgt::pwrmgtd {
namespace {

// The directory decides who gets here; where a group shares it, any member may run the daemon.
constexpr mode_t kSharedMode = 0660;

std::string holder(int descriptor) {
    std::array<char, 32> text{};
    const ssize_t length = pread(descriptor, text.data(), text.size() - 1, 0);
    if (length <= 0) return "another pwrmgtd";
    std::string pid(text.data(), static_cast<std::size_t>(length));
    pid.resize(std::min(pid.find('\n'), pid.size()));
    return "another pwrmgtd, process " + pid + ",";
}

}  // namespace

InstanceLock::~InstanceLock() {
    if (descriptor_ >= 0) close(descriptor_);
}

InstanceLock::Outcome InstanceLock::take(const std::string& path, std::string& reason) {
    descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kSharedMode);
    if (descriptor_ < 0) {
        reason = path + ": " + std::strerror(errno);
        return Outcome::failed;
    }
    if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        const bool taken = errno == EWOULDBLOCK;
        reason = taken ? holder(descriptor_) + " works on this database; " + path + " is locked"
                       : path + ": " + std::strerror(errno);
        return taken ? Outcome::held_by_another : Outcome::failed;
    }
    // Only the owner may widen what the umask cut off; for anybody else it is done already.
    [[maybe_unused]] const int widened = fchmod(descriptor_, kSharedMode);
    const std::string pid = std::to_string(getpid()) + "\n";
    if (ftruncate(descriptor_, 0) != 0 ||
        pwrite(descriptor_, pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size())) {
        reason = path + ": " + std::strerror(errno);
        return Outcome::failed;
    }
    return Outcome::taken;
}

}  // namespace pwrmgt::pwrmgtd
