// SPDX-License-Identifier: Apache-2.0
#include "stand_ins.h"

#include <array>
#include <cstdarg>
#include <cstdio>

std::int64_t clock_s = 0;
std::vector<std::string> log_lines;

namespace {

void add_line(const char* format, va_list arguments) {
    std::array<char, 512> line{};
    std::vsnprintf(line.data(), line.size(), format, arguments);
    log_lines.emplace_back(line.data());
}

}  // namespace

// The checked and the 64-bit names are what some build settings turn the plain ones into. No
// header declares them all, and <ctime> and <syslog.h> would attach attributes to the plain ones.
extern "C" {

// The C library's declarations differ from target to target, its symbols do not.
#ifdef __USE_TIME_BITS64
std::int64_t __time64(std::int64_t* out) {
    if (out != nullptr) *out = clock_s;
    return clock_s;
}
#else
long time(long* out) {
    if (out != nullptr) *out = static_cast<long>(clock_s);
    return static_cast<long>(clock_s);
}
#endif

void syslog(int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(format, arguments);
    va_end(arguments);
}

void __syslog_chk(int, int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(format, arguments);
    va_end(arguments);
}

}  // extern "C"
