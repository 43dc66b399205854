// SPDX-License-Identifier: Apache-2.0
#include "log.h"

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace pwrmgt::pwrmgtd {
namespace {

int priority(Severity severity) {
    switch (severity) {
        case Severity::error:
            return LOG_ERR;
        case Severity::warning:
            return LOG_WARNING;
        case Severity::notice:
            return LOG_NOTICE;
        case Severity::detail:
            break;
    }
    return LOG_DEBUG;
}

// The service manager names what it has connected to the journal.
bool is_journal(int descriptor) {
    const char* const stream = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    if (stream == nullptr || fstat(descriptor, &status) != 0) return false;
    return stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

void print(Severity severity, const std::string& line, bool to_journal) {
    if (to_journal) {
        std::fprintf(stderr, "<%d>%s\n", priority(severity), line.c_str());
    } else {
        std::fprintf(stderr, "pwrmgtd: %s\n", line.c_str());
    }
}

}  // namespace

void complain(const std::string& line) {
    print(Severity::error, line, is_journal(STDERR_FILENO));
}

void Log::state(std::string_view subject, const std::string& trouble) {
    const auto known = troubles_.find(subject);
    const bool was_well = known == troubles_.end();
    if (trouble.empty()) {
        if (was_well) return;
        troubles_.erase(known);
        notice(std::string(subject) + ": works again");
        return;
    }
    if (!was_well && known->second == trouble) return;
    troubles_[std::string(subject)] = trouble;
    warning(std::string(subject) + ": " + trouble);
}

SystemLog::SystemLog(Loudness loudness)
    : echoed_(Severity::error), to_journal_(is_journal(STDERR_FILENO)) {
    if (isatty(STDERR_FILENO) == 1 || to_journal_) echoed_ = Severity::notice;
    if (loudness == Loudness::everything) echoed_ = Severity::detail;
    openlog("pwrmgtd", LOG_PID, LOG_DAEMON);
}

SystemLog::~SystemLog() {
    closelog();
}

void SystemLog::write(Severity severity, const std::string& line) {
    const bool to_log = severity != Severity::detail && !to_journal_;
    if (to_log) syslog(priority(severity), "%s", line.c_str());
    if (severity <= echoed_) print(severity, line, to_journal_);
}

}  // namespace pwrmgt::pwrmgtd
