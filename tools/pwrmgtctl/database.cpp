// SPDX-License-Identifier: Apache-2.0
#include "database.h"

#include "state_dir.h"

namespace pwrmgt::pwrmgtctl {

std::string working_database() {
    const std::string server = vekdb::choose_server();
    return server.empty() ? vekdb::choose_directories().memory_path()
                          : vekdb::without_password(server);
}

std::string persistent_database() {
    const std::string server = vekdb::choose_server();
    return server.empty() ? vekdb::choose_directories().persistent_path()
                          : vekdb::without_password(server);
}

}  // namespace pwrmgt::pwrmgtctl
