// SPDX-License-Identifier: Apache-2.0
// The choice of the engine; those that are not built in come in a module.
#include <cstdlib>
#include <mutex>

#include "backend.h"
#include "loaded_module.h"
#include "mariadb/module.h"
#include "pool.h"
#include "state_dir.h"

namespace pwrmgt::vekdb {

namespace {

constinit host::LoadedModule server_module{kModuleFile, kModuleDoor};

// What encrypts a session is taken down by what it left to do at the end of the process, before
// this library's own end: kept sessions are closed before that.
void close_at_exit() {
    static std::once_flag told;
    std::call_once(told, [] { std::atexit(close_idle_connections); });
}

}  // namespace

std::unique_ptr<BackendConnection> connect_server(const std::string& server, std::string& why) {
    std::unique_ptr<BackendConnection> connection;
    if (!server.starts_with("mariadb://") && server.front() != '/') {
        why = "neither mariadb://... nor the path of a socket";
    } else if (const auto connect = server_module.door<ModuleDoor>(why); connect != nullptr) {
        connection.reset(connect(server, why));
    }
    if (connection) close_at_exit();
    // The setting itself may hold a password.
    if (!connection) why.insert(0, "VEKDB_SERVER: ");
    return connection;
}

std::unique_ptr<BackendConnection> connect_backend(std::string& why) {
    const std::string server = choose_server();
    return server.empty() ? connect_sqlite(why) : connect_server(server, why);
}

}  // namespace pwrmgt::vekdb
