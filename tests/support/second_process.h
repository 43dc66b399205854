// SPDX-License-Identifier: Apache-2.0
// A second process that answers a question each time it is asked, with what it sees at that moment.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

class SecondProcess {
public:
    // `answer` runs in the other process, once for every ask().
    template <class Answer>
    explicit SecondProcess(Answer answer) {
        int to_child[2] = {-1, -1};
        int to_parent[2] = {-1, -1};
        if (pipe(to_child) != 0 || pipe(to_parent) != 0) {
            ADD_FAILURE() << "no pipes";
            return;
        }
        pid_ = fork();
        if (pid_ == 0) {
            close(to_child[1]);
            close(to_parent[0]);
            char question = 0;
            while (read(to_child[0], &question, 1) == 1) {
                const std::int64_t value = answer();
                if (write(to_parent[1], &value, sizeof value) != sizeof value) break;
            }
            _exit(0);
        }
        close(to_child[0]);
        close(to_parent[1]);
        ask_ = to_child[1];
        answer_ = to_parent[0];
    }
    ~SecondProcess() {
        close(ask_);
        close(answer_);
        if (pid_ > 0) waitpid(pid_, nullptr, 0);
    }
    SecondProcess(const SecondProcess&) = delete;
    SecondProcess& operator=(const SecondProcess&) = delete;

    std::int64_t ask() {
        std::int64_t value = -1;
        if (write(ask_, "?", 1) != 1 || read(answer_, &value, sizeof value) != sizeof value) {
            ADD_FAILURE() << "the second process did not answer";
        }
        return value;
    }

private:
    pid_t pid_ = -1;
    int ask_ = -1;
    int answer_ = -1;
};
