// SPDX-License-Identifier: Apache-2.0
#include "log_capture.h"

#include <array>
#include <cstdarg>
#include <cstdio>

std::vector<std::string>& log_lines() {
    static std::vector<std::string> lines;
    return lines;
}

namespace {

void keep(const char* format, va_list arguments) {
    std::array<char, 1024> line{};
    std::vsnprintf(line.data(), line.size(), format, arguments);
    log_lines().emplace_back(line.data());
}

}  // namespace

// A fortified build calls the second of the two.
extern "C" {

void syslog(int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    keep(format, arguments);
    va_end(arguments);
}

void __syslog_chk(int, int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    keep(format, arguments);
    va_end(arguments);
}

}  // extern "C"
