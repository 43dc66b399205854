// SPDX-License-Identifier: Apache-2.0
// The choice between the directories of the environment, the system and the user; the server.
#include "state_dir.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace pwrmgt::vekdb {

namespace {

constexpr const char* kSystemState = "/var/lib/vekdb";
constexpr const char* kSystemRuntime = "/run/vekdb";

std::string variable(const char* name) {
    const char* value = secure_getenv(name);
    return value == nullptr ? std::string{} : std::string{value};
}

// A relative path in one of these variables counts as not set.
std::string absolute_variable(const char* name) {
    std::string value = variable(name);
    if (!value.empty() && value.front() != '/') value.clear();
    return value;
}

bool may_write(const char* directory) {
    return faccessat(AT_FDCWD, directory, R_OK | W_OK | X_OK, AT_EACCESS) == 0;
}

std::string home() {
    std::string from_environment = absolute_variable("HOME");
    if (!from_environment.empty()) return from_environment;
    std::array<char, 4096> buffer;
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr) {
        return found->pw_dir;
    }
    return "/nonexistent";
}

std::string user_state() {
    const std::string base = absolute_variable("XDG_STATE_HOME");
    return (base.empty() ? home() + "/.local/state" : base) + "/vekdb";
}

std::string user_runtime() {
    const std::string base = absolute_variable("XDG_RUNTIME_DIR");
    return base.empty() ? "/dev/shm/vekdb-" + std::to_string(geteuid()) : base + "/vekdb";
}

}  // namespace

std::string choose_server() {
    return variable("VEKDB_SERVER");
}

std::string without_password(const std::string& server) {
    const std::size_t scheme = server.find("://");
    const std::size_t user = scheme == std::string::npos ? 0 : scheme + 3;
    // Up to the last at sign: a password that is not written as it should be is not shown either.
    const std::size_t at = server.rfind('@');
    const std::size_t colon = server.find(':', user);
    if (at == std::string::npos || colon > at) return server;
    return server.substr(0, colon) + server.substr(at);
}

bool check_wanted() {
    return variable("VEKDB_CHECK") == "1";
}

Directories choose_directories() {
    Directories chosen{variable("VEKDB_STATE_DIR"), variable("VEKDB_RUNTIME_DIR")};
    if (!chosen.state.empty() && !chosen.runtime.empty()) return chosen;
    // Both or none: working tables of one place never meet the persistent ones of another.
    const bool system = geteuid() == 0 || (may_write(kSystemState) && may_write(kSystemRuntime));
    if (chosen.state.empty()) chosen.state = system ? kSystemState : user_state();
    if (chosen.runtime.empty()) chosen.runtime = system ? kSystemRuntime : user_runtime();
    return chosen;
}

}  // namespace pwrmgt::vekdb
