// SPDX-License-Identifier: Apache-2.0
// What a program writes to standard output or standard error, taken over at the descriptor, so that
// it does not matter through which call it is written.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace pwrmgt::test {

// Captures one stream from here to text() or to the end of its life. At most one of a stream at a
// time.
class CapturedStream {
public:
    explicit CapturedStream(FILE* stream) : stream_(stream) {
        std::fflush(stream_);
        own_ = dup(fileno(stream_));
        file_ = memfd_create("captured", MFD_CLOEXEC);
        if (own_ < 0 || file_ < 0 || dup2(file_, fileno(stream_)) < 0) {
            ADD_FAILURE() << "a standard stream cannot be captured";
        }
    }
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;
    ~CapturedStream() {
        give_back();
        close(file_);
    }

    // Everything written since; the stream is the program's own again.
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
        std::fflush(stream_);
        dup2(own_, fileno(stream_));
        close(own_);
        own_ = -1;
    }

    FILE* stream_;
    int own_ = -1;
    int file_ = -1;
};

class CapturedOutput : public CapturedStream {
public:
    CapturedOutput() : CapturedStream(stdout) {}
};

class CapturedError : public CapturedStream {
public:
    CapturedError() : CapturedStream(stderr) {}
};

}  // namespace pwrmgt::test
