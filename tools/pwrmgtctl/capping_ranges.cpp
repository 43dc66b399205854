// SPDX-License-Identifier: Apache-2.0
// The command `capping ranges`.
#include <ctime>

#include "answer.h"
#include "cap_range.h"
#include "fields.h"
#include "status_text.h"
#include "timed.h"

namespace pwrmgt::pwrmgtctl {
namespace {

struct Options : CommonOptions {
    bool dc = false;
};

Outcome show(const Options& options) {
    const int64_t asked_at_s = std::time(nullptr);
    CapRange range;
    const Timed done =
        timed([&] { return read_cap_range(options.dc ? Side::dc : Side::ac, range); });
    if (done.status != 0) return explain(Call::capping_ranges, done.status, "");
    const std::vector<Field> fields{{"Lowest cap, W", "", "min_w", range.lowest_w},
                                    {"Highest cap, W", "", "max_w", range.highest_w}};
    Json body{{"side", options.dc ? "dc" : "ac"}};
    add_fields(body, fields);
    return succeed(
        answer_document({"capping.ranges/1", Origin::persistent_tables,
                         std::string("Range of a power cap, ") + (options.dc ? "DC" : "AC"),
                         asked_at_s, done.query_ms},
                        options, fields_table("Power", fields), body));
}

}  // namespace

void add_capping_ranges(cli::Command capping, Action& chosen) {
    const auto options = std::make_shared<Options>();
    add_command(
        capping, chosen,
        {"ranges", "Where a power cap may lie", "Example:\n  pwrmgtctl capping ranges --dc"},
        options, show)
        .add_flag("--dc", options->dc, "DC limits instead of AC limits");
}

}  // namespace pwrmgt::pwrmgtctl
