// SPDX-License-Identifier: Apache-2.0
#include "plot_program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <vector>

extern char** environ;

namespace pwrmgt::pwrmgtctl {
namespace {

constexpr const char* kProgram = "gnuplot";

// Both ends of a pipe; an end that was handed on or closed is -1.
struct Pipe {
    std::array<int, 2> ends{-1, -1};

    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) ends = {-1, -1};
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close_end(0);
        close_end(1);
    }
    [[nodiscard]] bool made() const { return ends[0] >= 0; }
    void close_end(size_t end) {
        if (ends.at(end) >= 0) close(ends.at(end));
        ends.at(end) = -1;
    }
};

// The caller's environment with one locale for all, so that a picture looks the same everywhere;
// the user's start-up settings of the program are left out.
std::vector<std::string> plain_environment() {
    std::vector<std::string> variables{"LC_ALL=C.UTF-8"};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (!text.starts_with("LC_ALL=") && !text.starts_with("GNUPLOT") &&
            !text.starts_with("GNUTERM"))
            variables.emplace_back(text);
    }
    return variables;
}

int spawn(pid_t& child, const Pipe& script, const Pipe& picture, const Pipe& complaints) {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&files, script.ends[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, picture.ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, complaints.ends[1], STDERR_FILENO);
    sigset_t by_default;
    sigemptyset(&by_default);
    sigaddset(&by_default, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &by_default);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    std::string program = kProgram;
    std::string no_settings = "-d";
    const std::array<char*, 3> arguments{program.data(), no_settings.data(), nullptr};
    std::vector<std::string> variables = plain_environment();
    std::vector<char*> environment;
    for (std::string& variable : variables) {
        environment.push_back(variable.data());
    }
    environment.push_back(nullptr);
    const int error =
        posix_spawnp(&child, kProgram, &files, &attributes, arguments.data(), environment.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return error;
}

// Reads what is there; false at the end.
bool collect(int descriptor, std::string& text) {
    std::array<char, 16384> bytes{};
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count < 0) return errno == EINTR || errno == EAGAIN;
    text.append(bytes.data(), static_cast<size_t>(count));
    return count > 0;
}

// Writes what the pipe takes; false once everything is written or nobody reads any more.
bool feed(int descriptor, std::string_view& rest) {
    const ssize_t count = write(descriptor, rest.data(), rest.size());
    if (count < 0) return errno == EINTR || errno == EAGAIN;
    rest.remove_prefix(static_cast<size_t>(count));
    return !rest.empty();
}

struct Talk {
    std::string picture;
    std::string complaints;
    bool silent = false;  // given up
};

Talk talk(std::string_view rest, Pipe& script, Pipe& picture, Pipe& complaints, int silence_ms) {
    Talk said;
    fcntl(script.ends[1], F_SETFL, O_NONBLOCK);
    while (picture.ends[0] >= 0 || complaints.ends[0] >= 0) {
        std::array<pollfd, 3> waits{{{script.ends[1], POLLOUT, 0},
                                     {picture.ends[0], POLLIN, 0},
                                     {complaints.ends[0], POLLIN, 0}}};
        const int ready = poll(waits.data(), waits.size(), silence_ms);
        if (ready < 0 && errno == EINTR) continue;
        said.silent = ready <= 0;
        if (said.silent) return said;
        if (waits[0].revents != 0 && !feed(script.ends[1], rest)) script.close_end(1);
        if (waits[1].revents != 0 && !collect(picture.ends[0], said.picture)) picture.close_end(0);
        if (waits[2].revents != 0 && !collect(complaints.ends[0], said.complaints)) {
            complaints.close_end(0);
        }
    }
    return said;
}

constexpr int kNotStarted = 127;  // a child's exit status, where posix_spawnp() itself cannot tell

Drawn missing() {
    return {
        {}, Exit::unsupported, "gnuplot is not installed, or not on $PATH (package gnuplot-nox)"};
}

Drawn failed(const std::string& words) {
    return {{}, Exit::failure, std::string(kProgram) + ": " + words};
}

// The last line that says something.
std::string last_line(const std::string& text) {
    const size_t end = text.find_last_not_of(" \n");
    if (end == std::string::npos) return {};
    const size_t start = text.rfind('\n', end) + 1;
    const size_t first = text.find_first_not_of(' ', start);
    return text.substr(first, end + 1 - first);
}

Drawn conclude(pid_t child, Talk& said) {
    if (said.silent) kill(child, SIGKILL);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (said.silent) return failed("gave no answer; ended");
    const bool well = WIFEXITED(status) && WEXITSTATUS(status) == 0 && !said.picture.empty();
    if (well) return {std::move(said.picture), Exit::ok, {}};
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotStarted) return missing();
    const std::string why = last_line(said.complaints);
    return failed(why.empty() ? "drew nothing" : why);
}

}  // namespace

Drawn draw(const std::string& script, int silence_ms) {
    Pipe input;
    Pipe picture;
    Pipe complaints;
    if (!input.made() || !picture.made() || !complaints.made()) return failed(std::strerror(errno));
    pid_t child = -1;
    const int error = spawn(child, input, picture, complaints);
    if (error == ENOENT) return missing();
    if (error != 0) return failed(std::strerror(error));
    input.close_end(0);
    picture.close_end(1);
    complaints.close_end(1);
    Talk said = talk(script, input, picture, complaints, silence_ms);
    return conclude(child, said);
}

}  // namespace pwrmgt::pwrmgtctl
