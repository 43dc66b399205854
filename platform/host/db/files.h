// SPDX-License-Identifier: Apache-2.0
// The directories and files of the database on the file system: made private or shared, told apart,
// locked while they are made, and moved aside when they are damaged.
#pragma once

#include <sys/types.h>

#include <string>

namespace pwrmgt::vekdb {

// Which file a path leads to. A file that went away and came back is another one.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(const FileIdentity&) const = default;
};

// False when there is no such file.
bool identify(const std::string& path, FileIdentity& identity) noexcept;

// Creates the directory where it is missing, and refuses one that others may write to or that
// belongs to another user. The empty text, or the reason why it cannot be used.
std::string prepare_directory(const std::string& directory);

// Creates an empty file where it is missing, private or shared as its directory is. The empty text,
// or the reason.
std::string create_file(const std::string& path);

bool writable(const std::string& path) noexcept;

// Renames a damaged database to the first free `<path>.corrupt-<n>`, its log with it; logs where
// to. The caller holds the file's lock.
std::string move_aside(const std::string& path);

// Keeps other processes from making or moving the same file, while it lives.
class FileLock {
public:
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    bool held() const noexcept { return descriptor_ >= 0; }

private:
    int descriptor_ = -1;
};

}  // namespace pwrmgt::vekdb
