// SPDX-License-Identifier: Apache-2.0
// Moves the real standard output away from descriptor 1, and writes the document to it at the end.
#include "stdout_guard.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

namespace pwrmgt::common {
namespace {

int real = STDOUT_FILENO;

// A caller may close any of 0, 1 and 2; a database file opened there would then receive traces and
// messages.
void fill_standard_descriptors() {
    int opened = open("/dev/null", O_RDWR);
    while (opened >= 0 && opened <= STDERR_FILENO) {
        opened = open("/dev/null", O_RDWR);
    }
    if (opened > STDERR_FILENO) close(opened);
}

}  // namespace

StdoutGuard::StdoutGuard() : document_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
    real = document_;
    // A reader that leaves early is an error of one write, not the end of the process inside the
    // library.
    std::signal(SIGPIPE, SIG_IGN);
    fill_standard_descriptors();
    const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink < 0) return;
    dup2(sink, STDOUT_FILENO);
    close(sink);
}

StdoutGuard::~StdoutGuard() {
    real = STDOUT_FILENO;
    if (document_ >= 0) close(document_);
}

int StdoutGuard::add(std::string_view text) {
    if (document_ < 0) return EBADF;
    while (!text.empty()) {
        const ssize_t written = ::write(document_, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        text.remove_prefix(static_cast<size_t>(written));
    }
    return 0;
}

int StdoutGuard::write(std::string_view text) {
    if (const int error = add(text); error != 0) return error;
    // Some file systems tell of a full disk only here.
    return close(std::exchange(document_, -1)) == 0 ? 0 : errno;
}

bool StdoutGuard::is_terminal() const {
    return isatty(document_) == 1;
}

int StdoutGuard::real_output() {
    return real;
}

}  // namespace pwrmgt::common
