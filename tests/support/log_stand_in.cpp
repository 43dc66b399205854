// SPDX-License-Identifier: Apache-2.0
// The system log of a test program, taken over by the recorder: one call per line, with its
// numeric priority and its text as formatted. Nothing reaches the real log.
#include <cstdarg>
#include <cstdio>
#include <string>

#include "recorder.h"

// Declared here: the system's own header would bring the fortified inline forms of these names.
extern "C" {
void vsyslog(int priority, const char* format, va_list values);
void syslog(int priority, const char* format, ...);
void __syslog_chk(int priority, int flag, const char* format, ...);
void __vsyslog_chk(int priority, int flag, const char* format, va_list values);
}

void vsyslog(int priority, const char* format, va_list values) {
    char text[1024];
    std::vsnprintf(text, sizeof text, format, values);
    pwrmgt::test::platform().log("syslog " + std::to_string(priority) + " " + text);
}

void syslog(int priority, const char* format, ...) {
    va_list values;
    va_start(values, format);
    vsyslog(priority, format, values);
    va_end(values);
}

// What fortified code calls instead.
void __syslog_chk(int priority, int, const char* format, ...) {
    va_list values;
    va_start(values, format);
    vsyslog(priority, format, values);
    va_end(values);
}

void __vsyslog_chk(int priority, int, const char* format, va_list values) {
    vsyslog(priority, format, values);
}
