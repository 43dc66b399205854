// SPDX-License-Identifier: Apache-2.0
// The choice of the engine, and the module of those that are not built in.
#include <dlfcn.h>

#include <cstdlib>
#include <mutex>

#include "backend.h"
#include "mariadb/module.h"
#include "pool.h"
#include "state_dir.h"

namespace pwrmgt::vekdb {

namespace {

// It lies beside this library, wherever that is, and is looked for nowhere else.
std::string module_path() {
    Dl_info here{};
    if (dladdr(reinterpret_cast<void*>(&connect_server), &here) == 0) return kModuleFile;
    const std::string library = here.dli_fname;
    return library.substr(0, library.rfind('/') + 1) + kModuleFile;
}

// Null as long as the module, or what it needs, is not installed. Never unloaded: connections are
// closed when the process ends.
ModuleDoor module_door(std::string& why) {
    static std::mutex mutex;
    static ModuleDoor door = nullptr;
    const std::lock_guard lock{mutex};
    if (door != nullptr) return door;
    void* const module = dlopen(module_path().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module != nullptr) door = reinterpret_cast<ModuleDoor>(dlsym(module, kModuleDoor));
    if (door == nullptr) {
        const char* const error = dlerror();
        why = error != nullptr ? error : kModuleFile;
    }
    return door;
}

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
    } else if (const ModuleDoor connect = module_door(why); connect != nullptr) {
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
