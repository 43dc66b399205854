// SPDX-License-Identifier: Apache-2.0
#include "live_trace.h"

#include <sys/stat.h>
#include <syslog.h>

#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>

namespace pwrmgt::ipmi::sim {
namespace {

// What tells one state of a file from another without reading it.
struct Version {
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    off_t bytes = -1;
    time_t changed_s = 0;
    long changed_ns = 0;

    bool operator==(const Version&) const = default;
};

Version version_of(const char* path) {
    Version version;
    version.path = path;
    struct stat status {};
    if (stat(path, &status) == 0) {
        version.device = status.st_dev;
        version.inode = status.st_ino;
        version.bytes = status.st_size;
        version.changed_s = status.st_mtim.tv_sec;
        version.changed_ns = status.st_mtim.tv_nsec;
    }
    return version;
}

std::shared_ptr<const trace::Trace> loaded(const std::string& path) {
    trace::LoadResult result = trace::load(path);
    if (!result.trace) {
        syslog(LOG_ERR, "VEKDB_SIM_TRACE: %s", result.error.c_str());
        return nullptr;
    }
    return std::make_shared<const trace::Trace>(*std::move(result.trace));
}

}  // namespace

std::shared_ptr<const trace::Trace> live_trace() {
    static std::mutex mutex;
    static Version held;
    static std::shared_ptr<const trace::Trace> trace;

    const char* path = secure_getenv("VEKDB_SIM_TRACE");
    if (path == nullptr || *path == '\0') return nullptr;
    Version version = version_of(path);
    const std::lock_guard lock(mutex);
    if (version != held) {
        trace = loaded(version.path);
        held = std::move(version);
    }
    return trace;
}

}  // namespace pwrmgt::ipmi::sim
