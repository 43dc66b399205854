// SPDX-License-Identifier: Apache-2.0
// File system work around the database files. None of it opens a database file that may be in use:
// closing such a descriptor would drop the engine's locks in this process.
#include "files.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "state_dir.h"

namespace pwrmgt::vekdb {

namespace {

constexpr const char* kSharedGroup = "vekdb";
constexpr int kMaxCorrupt = 1000;

std::string reason(const std::string& path, std::string_view what) {
    return path + ": " + std::string{what} + ": " + strerrordesc_np(errno);
}

bool shared_group(gid_t& group) {
    std::array<char, 4096> buffer;
    struct group entry {};
    struct group* found = nullptr;
    if (getgrnam_r(kSharedGroup, &entry, buffer.data(), buffer.size(), &found) != 0) return false;
    if (found == nullptr) return false;
    group = found->gr_gid;
    return true;
}

bool is_shared(const struct stat& directory) {
    gid_t group = 0;
    return (directory.st_mode & S_IWGRP) != 0 && shared_group(group) && directory.st_gid == group;
}

std::string parent_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

bool make_directories(const std::string& directory) {
    if (mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST) return true;
    if (errno != ENOENT || !make_directories(parent_of(directory))) return false;
    return mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST;
}

// Where a group of that name exists, the system's own directories are made for it.
void share_if_system(const std::string& directory) {
    gid_t group = 0;
    if (geteuid() != 0 || !shared_group(group)) return;
    if (directory != "/var/lib/vekdb" && directory != "/run/vekdb") return;
    if (chown(directory.c_str(), 0, group) == 0 && chmod(directory.c_str(), 02770) == 0) return;
    syslog(LOG_WARNING, "vekdb: %s: not shared with group %s: %m", directory.c_str(), kSharedGroup);
}

// A new file is private, or shared as its directory is, and of the directory's owner when root
// makes it.
int make_file(const std::string& path, int flags) {
    struct stat directory {};
    if (stat(parent_of(path).c_str(), &directory) != 0) return -1;
    const int made = open(path.c_str(), flags | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (made < 0) return made;
    const bool shared = is_shared(directory);
    const bool foreign = geteuid() == 0 && directory.st_uid != 0;
    bool fit = true;
    if (foreign) fit = fchown(made, directory.st_uid, directory.st_gid) == 0;
    if (shared) fit = fit && fchown(made, static_cast<uid_t>(-1), directory.st_gid) == 0;
    if (fit && fchmod(made, shared ? 0660 : 0600) == 0) return made;
    const int error = errno;
    close(made);
    unlink(path.c_str());
    errno = error;
    return -1;
}

}  // namespace

bool identify(const std::string& path, FileIdentity& identity) noexcept {
    struct stat found {};
    if (stat(path.c_str(), &found) != 0) return false;
    identity = {found.st_dev, found.st_ino};
    return true;
}

std::string prepare_directory(const std::string& directory) {
    if (directory.front() != '/') return directory + ": not an absolute path";
    struct stat found {};
    if (stat(directory.c_str(), &found) != 0) {
        if (errno != ENOENT || !make_directories(directory))
            return reason(directory, "cannot be made");
        share_if_system(directory);
        if (stat(directory.c_str(), &found) != 0) return reason(directory, "cannot be used");
    }
    if (!S_ISDIR(found.st_mode)) return directory + ": not a directory";
    if ((found.st_mode & S_IWOTH) != 0) return directory + ": others may write to it";
    const uid_t user = geteuid();
    if (user != 0 && found.st_uid != 0 && found.st_uid != user && !is_shared(found)) {
        return directory + ": belongs to another user";
    }
    return {};
}

std::string create_file(const std::string& path) {
    const int made = make_file(path, O_RDWR);
    if (made >= 0) {
        close(made);
        return {};
    }
    return errno == EEXIST ? std::string{} : reason(path, "cannot be made");
}

bool writable(const std::string& path) noexcept {
    return faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
}

std::string move_aside(const std::string& path) {
    for (int n = 1; n <= kMaxCorrupt; ++n) {
        const std::string aside = path + ".corrupt-" + std::to_string(n);
        // A link fails where the name is taken, a rename would replace what is there.
        if (link(path.c_str(), aside.c_str()) != 0) {
            if (errno == EEXIST) continue;
            return reason(path, "damaged, cannot be moved aside");
        }
        // The log belongs to the damaged file: a fresh one must not take it over.
        rename((path + "-wal").c_str(), (aside + "-wal").c_str());
        unlink((path + "-shm").c_str());
        unlink(path.c_str());
        syslog(LOG_ERR, "vekdb: %s is damaged or no database, moved to %s", path.c_str(),
               aside.c_str());
        return {};
    }
    return path + ": damaged, and too many damaged files are kept already";
}

FileLock::FileLock(const std::string& path) {
    const std::string name = path + ".lock";
    descriptor_ = make_file(name, O_RDWR);
    if (descriptor_ < 0) descriptor_ = open(name.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor_ < 0) return;
    int locked = 0;
    do {
        locked = flock(descriptor_, LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0) {
        close(descriptor_);
        descriptor_ = -1;
    }
}

FileLock::~FileLock() {
    if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace pwrmgt::vekdb
