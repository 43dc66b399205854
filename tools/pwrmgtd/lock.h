// SPDX-License-Identifier: Apache-2.0
// One daemon per database.
#pragma once

#include <string>

namespace pwrmgt::pwrmgtd {

// A lock file that ends with the process, however that ends; the file itself stays.
class InstanceLock {
public:
    enum class Outcome { taken, held_by_another, failed };

    InstanceLock() = default;
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    // `reason` says why it was not taken.
    Outcome take(const std::string& path, std::string& reason);

private:
    int descriptor_ = -1;
};

}  // namespace pwrmgt::pwrmgtd
