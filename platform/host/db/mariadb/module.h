// SPDX-License-Identifier: Apache-2.0
// The door of the module that reaches a MariaDB server. libvekdb_client loads it when it is told to
// use one, so that programs run where the connector's library is not installed.
#pragma once

#include <string>

#include "../backend.h"

extern "C" {

// A connection to the server that `setting` names, the caller's to delete; null with the reason in
// `why`. The number in the name goes up with every change of backend.h.
pwrmgt::vekdb::BackendConnection* vekdb_mariadb_connect_1(const std::string& setting,
                                                          std::string& why);
}

namespace pwrmgt::vekdb {

inline constexpr const char* kModuleFile = "libvekdb_mariadb.so";
inline constexpr const char* kModuleDoor = "vekdb_mariadb_connect_1";
using ModuleDoor = decltype(&vekdb_mariadb_connect_1);

}  // namespace pwrmgt::vekdb
