// SPDX-License-Identifier: Apache-2.0
#include "sim_state_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

#include "files.h"
#include "state_dir.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr const char* kFile = "ipmi-sim.json";
constexpr std::size_t kMaxBytes = 1 << 20;

// Another process holds the lock for the time of one small file; one that was stopped while it
// did must not stop everybody else.
constexpr int kLockTries = 500;
constexpr timespec kLockPause{0, 2'000'000};

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool open() const { return number_ >= 0; }
    int number() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

Access failed(Usable usable, const std::string& path, std::string_view what) {
    return {usable, path + ": " + std::string{what}};
}

Access failed_call(const std::string& path, std::string_view what) {
    const char* error = strerrordesc_np(errno);
    return failed(Usable::no, path, std::string{what} + ": " + (error != nullptr ? error : "?"));
}

bool read_whole(int file, std::string& text) {
    char piece[4096];
    for (;;) {
        const ssize_t got = read(file, piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        text.append(piece, static_cast<std::size_t>(got));
        if (text.size() <= kMaxBytes) continue;
        text.clear();  // no text of ours is as long
        return true;
    }
}

bool write_whole(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t put = write(file, text.data(), text.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

Access decoded(const std::string& path, const std::string& text, State& state) {
    switch (decode(text, state)) {
        case Text::whole:
            return {};
        case Text::newer:
            return failed(Usable::no, path, "made by a newer version");
        case Text::damaged:
            break;
    }
    return failed(Usable::damaged, path, "damaged or no state of the firmware simulator");
}

Access read_file(const std::string& path, State& state) {
    if (path.front() != '/') return failed(Usable::no, path, "not an absolute path");
    // Not waiting for the other end of a FIFO.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.open()) {
        if (errno == ENOENT) return {};
        if (errno == ELOOP || errno == ENXIO) return failed(Usable::damaged, path, "no file");
        return failed_call(path, "cannot be opened");
    }
    struct stat status {};
    if (fstat(file.number(), &status) != 0) return failed_call(path, "cannot be read");
    if (!S_ISREG(status.st_mode)) return failed(Usable::damaged, path, "no file");
    std::string text;
    if (!read_whole(file.number(), text)) return failed_call(path, "cannot be read");
    return decoded(path, text, state);
}

Access write_file(const std::string& path, const std::string& text) {
    const std::string fresh = path + ".new";
    unlink(fresh.c_str());  // what a killed writer left
    if (std::string reason = vekdb::create_file(fresh); !reason.empty()) {
        return {Usable::no, std::move(reason)};
    }
    const Descriptor file(open(fresh.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    if (file.open() && write_whole(file.number(), text) &&
        rename(fresh.c_str(), path.c_str()) == 0) {
        return {};
    }
    Access access = failed_call(path, "cannot be written");
    unlink(fresh.c_str());
    return access;
}

// The lock lies in a file of its own, because the state's file is another one after each change.
Access take_lock(const std::string& path, int& lock) {
    const std::string name = path + ".lock";
    if (std::string reason = vekdb::create_file(name); !reason.empty()) {
        return {Usable::no, std::move(reason)};
    }
    Descriptor file(open(name.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    if (!file.open()) return failed_call(name, "cannot be opened");
    for (int tried = 0; flock(file.number(), LOCK_EX | LOCK_NB) != 0; ++tried) {
        if (errno != EWOULDBLOCK && errno != EINTR) return failed_call(name, "cannot be locked");
        if (tried == kLockTries) return failed(Usable::busy, name, "held by another process");
        nanosleep(&kLockPause, nullptr);
    }
    lock = file.release();
    return {};
}

Access set_aside(const std::string& path, const std::string& reason) {
    const std::string aside = path + ".corrupt";
    if (rename(path.c_str(), aside.c_str()) != 0) return failed_call(path, "cannot be set aside");
    syslog(LOG_ERR, "firmware simulator: %s, moved to %s", reason.c_str(), aside.c_str());
    return {};
}

}  // namespace

std::string state_path() {
    return vekdb::choose_directories().runtime + '/' + kFile;
}

Access read_state(State& state) {
    return read_file(state_path(), state);
}

Transaction::Transaction() {
    const std::string directory = path_.substr(0, path_.rfind('/'));
    if (std::string reason = vekdb::prepare_directory(directory); !reason.empty()) {
        access_ = {Usable::no, std::move(reason)};
        return;
    }
    access_ = take_lock(path_, lock_);
    if (access_.usable != Usable::yes) return;
    access_ = read_file(path_, state_);
    if (access_.usable == Usable::damaged) access_ = set_aside(path_, access_.reason);
    before_ = state_;
}

Transaction::~Transaction() {
    unlock();
}

Access Transaction::commit() {
    Access access = access_;
    if (access.usable == Usable::yes && state_ != before_) {
        access = write_file(path_, encoded(state_));
    }
    unlock();
    return access;
}

void Transaction::unlock() {
    if (lock_ >= 0) close(std::exchange(lock_, -1));
}

}  // namespace pwrmgt::ipmi::sim
