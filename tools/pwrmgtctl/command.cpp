// SPDX-License-Identifier: Apache-2.0
#include "command.h"

namespace pwrmgt::pwrmgtctl {

void add_watch_options(cli::Command command, WatchOptions& options) {
    command
        .add_option("--watch", options.seconds,
                    "Show again every SECONDS until interrupted; 2 when left out")
        .may_lack_value()
        .check(cli::number(0.01, 86400.0))
        .type_name("[SECONDS]");
    command.add_option("--watch-count", options.times, "Show N times and end")
        .check(cli::whole_number(1, 1'000'000))
        .type_name("N");
}

}  // namespace pwrmgt::pwrmgtctl
