// SPDX-License-Identifier: Apache-2.0
// pwrmgtctl: the command line of the power data layer. Documents go to standard output, errors in
// words to standard error.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "command.h"
#include "stdout_guard.h"

namespace {

using pwrmgt::pwrmgtctl::Exit;

int report(Exit exit, const char* words) {
    std::fprintf(stderr, "pwrmgtctl: %s\n", words);
    return static_cast<int>(exit);
}

}  // namespace

int main(int argc, char** argv) {
    pwrmgt::pwrmgtctl::StdoutGuard standard_output;
    try {
        const auto outcome = pwrmgt::pwrmgtctl::run(argc, argv);
        if (outcome.exit != Exit::ok) return report(outcome.exit, outcome.error.c_str());
        const int error = standard_output.write(outcome.document);
        if (error == 0) return static_cast<int>(Exit::ok);
        // A reader that left early, such as head, knows; nobody else has to be told.
        if (error == EPIPE) return static_cast<int>(Exit::failure);
        return report(Exit::failure,
                      (std::string("standard output: ") + std::strerror(error)).c_str());
    } catch (const std::exception& failure) {
        return report(Exit::failure, failure.what());
    }
}
