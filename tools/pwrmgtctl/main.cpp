// SPDX-License-Identifier: Apache-2.0
// pwrmgtctl: the command line of the power data layer. Documents go to standard output, errors in
// words to standard error.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "command.h"
#include "common/stdout_guard.h"

namespace {

using pwrmgt::pwrmgtctl::Exit;

int report(Exit exit, const std::string& words) {
    std::fprintf(stderr, "pwrmgtctl: %s\n", words.c_str());
    return static_cast<int>(exit);
}

}  // namespace

int main(int argc, char** argv) {
    pwrmgt::common::StdoutGuard standard_output;
    try {
        const auto outcome = pwrmgt::pwrmgtctl::run(argc, argv);
        if (!outcome.document.empty()) {
            const int error = standard_output.write(outcome.document);
            // A reader that left early, such as head, knows; nobody else has to be told.
            if (error == EPIPE) return static_cast<int>(outcome.unwritten);
            if (error != 0) {
                return report(outcome.unwritten,
                              std::string("standard output: ") + std::strerror(error));
            }
        }
        if (!outcome.error.empty()) return report(outcome.exit, outcome.error);
        return static_cast<int>(outcome.exit);
    } catch (const std::exception& failure) {
        return report(Exit::failure, failure.what());
    }
}
