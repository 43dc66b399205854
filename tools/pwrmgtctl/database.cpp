// SPDX-License-Identifier: Apache-2.0
#include "database.h"

#include "state_dir.h"

namespace pwrmgt::pwrmgtctl {

std::string working_database() {
    return vekdb::choose_directories().memory_path();
}

std::string persistent_database() {
    return vekdb::choose_directories().persistent_path();
}

}  // namespace pwrmgt::pwrmgtctl
