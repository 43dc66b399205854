// SPDX-License-Identifier: Apache-2.0
#include "log.h"

#include <syslog.h>
#include <unistd.h>

#include <cstdio>

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

}  // namespace

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

SystemLog::SystemLog(Loudness loudness) : echoed_(Severity::error) {
    if (isatty(STDERR_FILENO) == 1) echoed_ = Severity::notice;
    if (loudness == Loudness::everything) echoed_ = Severity::detail;
    openlog("pwrmgtd", LOG_PID, LOG_DAEMON);
}

SystemLog::~SystemLog() {
    closelog();
}

void SystemLog::write(Severity severity, const std::string& line) {
    if (severity != Severity::detail) syslog(priority(severity), "%s", line.c_str());
    if (severity <= echoed_) std::fprintf(stderr, "pwrmgtd: %s\n", line.c_str());
}

}  // namespace pwrmgt::pwrmgtd
