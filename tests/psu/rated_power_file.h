// SPDX-License-Identifier: Apache-2.0
// The rated-power file at its real path, for the few tests that need it: one program at a time, and
// what was there comes back.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace pwrmgt::test {

// Holds a lock on the directory, so that it needs no file of its own, and takes the file there
// aside. Not free when somebody else's file cannot be moved.
class RatedPowerFile {
public:
    RatedPowerFile() : lock_(open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (lock_ < 0 || flock(lock_, LOCK_EX) != 0) {
            ADD_FAILURE() << "no lock on the rated-power file";
            return;
        }
        moved_ = std::rename(kPath, aside_.c_str()) == 0;
        free_ = moved_ || errno == ENOENT;
    }
    RatedPowerFile(const RatedPowerFile&) = delete;
    RatedPowerFile& operator=(const RatedPowerFile&) = delete;
    ~RatedPowerFile() {
        if (free_) unlink(kPath);
        if (moved_) std::rename(aside_.c_str(), kPath);
        if (lock_ >= 0) close(lock_);
    }

    bool free() const { return free_; }
    void write(std::string_view text) const { std::ofstream(kPath) << text; }

private:
    static constexpr const char* kPath = "/tmp/.ratedPowerData.log";

    int lock_;
    bool moved_ = false;
    bool free_ = false;
    std::string aside_ = std::string(kPath) + ".aside-" + std::to_string(getpid());
};

}  // namespace pwrmgt::test
