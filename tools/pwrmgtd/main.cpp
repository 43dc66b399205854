// SPDX-License-Identifier: Apache-2.0
// pwrmgtd: the power-management daemon. Standard output carries its own document only; whatever the
// library traces there goes nowhere.
#include <exception>

#include "clock.h"
#include "common/stdout_guard.h"
#include "daemon.h"
#include "log.h"
#include "options.h"

using namespace pwrmgt::pwrmgtd;

namespace {

int report(Exit exit, const char* words) {
    complain(words);
    return static_cast<int>(exit);
}

}  // namespace

int main(int argc, char** argv) {
    pwrmgt::common::StdoutGuard standard_output;
    try {
        const Parsed parsed = parse_options(argc, argv);
        if (parsed.exit != Exit::ok) return report(parsed.exit, parsed.text.c_str());
        if (!parsed.options) return standard_output.write(parsed.text) == 0 ? 0 : 1;
        SystemClock clock;
        SystemLog log(parsed.options->verbose ? Loudness::everything : Loudness::usual);
        const Print print = [&](const std::string& document) {
            const bool written = standard_output.write(document) == 0;
            if (!written) log.error("standard output could not be written");
            return written;
        };
        const Reread reread = [&] { return parse_options(argc, argv); };
        return static_cast<int>(run_daemon(*parsed.options, {clock, log, print, reread}));
    } catch (const std::exception& failure) {
        return report(Exit::failure, failure.what());
    }
}
