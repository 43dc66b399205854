// SPDX-License-Identifier: Apache-2.0
// The command `power available`: what the supplies let the system draw.
#include <ctime>

#include "answer.h"
#include "fields.h"
#include "missing.h"
#include "status_text.h"
#include "timed.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtctl {
namespace {

Outcome show(const CommonOptions& options) {
    const int64_t asked_at_s = std::time(nullptr);
    uint32_t available = 0;
    const Timed done = timed([&] { return pwrmgt_get_sys_avail_power(&available); });
    if (done.status != 0) return explain(Call::available, done.status, "");
    const std::vector<Field> fields{
        {"Available, W", "", "available_w", available_watts(available)}};
    Json body;
    add_age(body, std::nullopt);  // neither the supplies nor the policy keep a time
    add_fields(body, fields);
    return succeed(answer_document(
        {"power.available/1", Origin::persistent_tables,
         "Power that the system may draw; age not known", asked_at_s, done.query_ms},
        options, fields_table("Power", fields), body));
}

}  // namespace

void add_power_available(cli::Command power, Action& chosen) {
    const auto options = std::make_shared<CommonOptions>();
    cli::Command command = add_command(power, chosen,
                                       {"available", "Power that the supplies let the system draw",
                                        "Examples:\n"
                                        "  pwrmgtctl power available --watch 10\n"
                                        "  pwrmgtctl power available --json | jq .available_w"},
                                       options, show);
    let_watch(command, chosen, options, show);
}

}  // namespace pwrmgt::pwrmgtctl
