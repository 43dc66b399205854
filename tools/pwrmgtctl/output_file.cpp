// SPDX-License-Identifier: Apache-2.0
#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace pwrmgt::pwrmgtctl {
namespace {

// Removed again unless it was renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string pattern)
        : path_(std::move(pattern)), descriptor_(mkostemp(path_.data(), O_CLOEXEC)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ < 0) return;
        close(descriptor_);
        if (!renamed_) unlink(path_.c_str());
    }

    // 0 or an error number, as all below.
    [[nodiscard]] int made() const { return descriptor_ < 0 ? errno : 0; }

    int fill(std::string_view text) {
        while (!text.empty()) {
            const ssize_t written = write(descriptor_, text.data(), text.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return errno;
            text.remove_prefix(static_cast<size_t>(written));
        }
        return 0;
    }

    // On the disk before it takes the name: a power cut leaves one whole file.
    int rename_to(const std::string& path) {
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(descriptor_, 0666 & ~mask) != 0 || fsync(descriptor_) != 0) return errno;
        if (rename(path_.c_str(), path.c_str()) != 0) return errno;
        renamed_ = true;
        return 0;
    }

private:
    std::string path_;
    int descriptor_;
    bool renamed_ = false;
};

std::string in_words(const std::string& path, int error) {
    return error == 0 ? std::string() : path + ": " + std::strerror(error);
}

// Hidden, and not ending like the file: who collects files by their ending passes it over.
std::string beside(const std::string& path) {
    const size_t name = path.rfind('/') + 1;
    return path.substr(0, name) + '.' + path.substr(name) + ".XXXXXX";
}

}  // namespace

std::string write_file(const std::string& path, std::string_view contents) {
    struct stat there {};
    if (lstat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) {
        return path + ": is there and no regular file; left alone";
    }
    TemporaryFile file(beside(path));
    int error = file.made();
    if (error == 0) error = file.fill(contents);
    if (error == 0) error = file.rename_to(path);
    return in_words(path, error);
}

}  // namespace pwrmgt::pwrmgtctl
