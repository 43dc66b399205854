// SPDX-License-Identifier: Apache-2.0
// A directory of the process's own that goes with it, and a file in it that holds one input.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace pwrmgt::fuzz {

class ScratchPlace {
public:
    ScratchPlace() {
        // In memory where that is possible: a file is written for each input.
        const bool memory = access("/dev/shm", W_OK) == 0;
        const std::filesystem::path above =
            memory ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path();
        std::string name = (above / "pwrmgt-fuzz-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) std::abort();
        directory_ = name;
    }
    ~ScratchPlace() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    ScratchPlace(const ScratchPlace&) = delete;
    ScratchPlace& operator=(const ScratchPlace&) = delete;

    // Lives until the process ends.
    static ScratchPlace& only() {
        static ScratchPlace place;
        return place;
    }

    const std::string& directory() const { return directory_; }
    // The file, which holds this now.
    std::string holding(const std::uint8_t* data, std::size_t size) const {
        const std::string path = directory_ + "/input";
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) {
            std::abort();
        }
        return path;
    }

private:
    std::string directory_;
};

}  // namespace pwrmgt::fuzz
