// SPDX-License-Identifier: Apache-2.0
// What a program writes to standard output, taken over at the descriptor, so that it does not
// matter through which call it is written.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace pwrmgt::test {

// Captures from here to text() or to the end of its life. At most one at a time.
class CapturedOutput {
public:
    CapturedOutput() {
        std::fflush(stdout);
        own_ = dup(STDOUT_FILENO);
        file_ = memfd_create("captured", MFD_CLOEXEC);
        if (own_ < 0 || file_ < 0 || dup2(file_, STDOUT_FILENO) < 0) {
            ADD_FAILURE() << "standard output cannot be captured";
        }
    }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput() {
        give_back();
        close(file_);
    }

    // Everything written since; standard output is the program's own again.
    std::string text() {
        give_back();
        std::string all;
        char piece[4096];
        for (ssize_t got = 0;
             (got = pread(file_, piece, sizeof piece, static_cast<off_t>(all.size()))) > 0;) {
            all.append(piece, static_cast<size_t>(got));
        }
        return all;
    }

private:
    void give_back() {
        if (own_ < 0) return;
        std::fflush(stdout);
        dup2(own_, STDOUT_FILENO);
        close(own_);
        own_ = -1;
    }

    int own_ = -1;
    int file_ = -1;
};

}  // namespace pwrmgt::test
