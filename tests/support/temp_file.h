// SPDX-License-Identifier: Apache-2.0
// A file that lives as long as its owner, in a directory of its own.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

class TempFile {
public:
    TempFile() {
        std::string name = (std::filesystem::temp_directory_path() / "pwrmgt-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary directory";
        directory_ = name;
        path_ = directory_ / "file";
    }
    explicit TempFile(std::string_view text) : TempFile() { write(text); }
    ~TempFile() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    void write(std::string_view text) const {
        std::ofstream(path_, std::ios::binary | std::ios::trunc) << text;
    }

    std::string path() const { return path_.string(); }
    std::string directory() const { return directory_.string(); }

private:
    std::filesystem::path directory_;
    std::filesystem::path path_;
};
