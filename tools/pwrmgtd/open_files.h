// SPDX-License-Identifier: Apache-2.0
// Which database files are open, and whether a program that starts now would open the same ones.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace pwrmgt::pwrmgtd {

class OpenFiles {
public:
    // Takes note of the files of the persistent and of the working tables.
    void note(const std::string& persistent, const std::string& working);

    // A file that is gone, or another one by now; the empty text when all are in place.
    std::string displaced() const;

    // The same of the persistent tables alone.
    std::string displaced_persistent() const;

private:
    struct File {
        std::string path;
        dev_t device;
        ino_t inode;
    };
    using Files = std::vector<File>;

    static Files with_log(const std::string& path);
    static std::string displaced_of(const Files& files);

    Files persistent_;
    Files working_;
};

}  // namespace pwrmgt::pwrmgtd
