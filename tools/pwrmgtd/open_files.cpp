// SPDX-License-Identifier: Apache-2.0
#include "open_files.h"

#include <sys/stat.h>

#include <cerrno>

namespace pwrmgt::pwrmgtd {

OpenFiles::Files OpenFiles::with_log(const std::string& path) {
    Files files;
    for (const std::string& name : {path, path + "-wal"}) {
        struct stat found {};
        if (stat(name.c_str(), &found) == 0) files.push_back({name, found.st_dev, found.st_ino});
    }
    return files;
}

// A disk that does not answer is no reason to let go of what is open.
std::string OpenFiles::displaced_of(const Files& files) {
    for (const File& file : files) {
        struct stat now {};
        if (stat(file.path.c_str(), &now) == 0) {
            if (now.st_dev == file.device && now.st_ino == file.inode) continue;
            return file.path + " is another file by now";
        }
        if (errno == ENOENT || errno == ENOTDIR) return file.path + " is gone";
    }
    return {};
}

void OpenFiles::note(const std::string& persistent, const std::string& working) {
    persistent_ = with_log(persistent);
    working_ = with_log(working);
}

std::string OpenFiles::displaced_persistent() const {
    return displaced_of(persistent_);
}

std::string OpenFiles::displaced() const {
    const std::string working = displaced_of(working_);
    return working.empty() ? displaced_of(persistent_) : working;
}

}  // namespace pwrmgt::pwrmgtd
