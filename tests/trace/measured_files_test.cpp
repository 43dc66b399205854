// SPDX-License-Identifier: Apache-2.0
// The traces that come with the project, read as they are.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "measured_trace.h"

namespace {

using pwrmgt::trace::load;
using pwrmgt::trace::LoadResult;
using pwrmgt::trace::Reading;
using pwrmgt::trace::Trace;

Trace measured(const std::string& name) {
    LoadResult result = load(std::string(MEASURED_DATA_DIR) + "/" + name);
    EXPECT_EQ(result.error, "");
    if (!result.trace) return Trace({Reading{}}, 0, 0);
    return *result.trace;
}

// Seconds from the first row to the last in which no reading is in force.
std::int64_t seconds_without_reading(const Trace& trace) {
    std::int64_t missing = 0;
    for (std::int64_t t = trace.first_s(); t <= trace.last_s(); ++t) {
        if (trace.reading_at(t) == nullptr) ++missing;
    }
    return missing;
}

TEST(MeasuredFiles, ServerDayHasAReadingInEverySecond) {
    const Trace trace = measured("server_4socket_24h_60s.csv");

    EXPECT_EQ(trace.readings().size(), 1440u);
    EXPECT_EQ(trace.supply_count(), 2u);
    EXPECT_EQ(trace.ignored_values(), 0u);
    EXPECT_EQ(seconds_without_reading(trace), 0);
}

TEST(MeasuredFiles, ServerDayStartsWithTheValuesOfItsFirstRow) {
    const Trace trace = measured("server_4socket_24h_60s.csv");

    const Reading& row = trace.readings().front();

    EXPECT_EQ(row.epoch_s, 1748908811);
    EXPECT_EQ(row.system_ac_w, 270);
    EXPECT_EQ(row.system_dc_w, 225);
    EXPECT_EQ(row.cpu_w, 60);
    EXPECT_EQ(row.mem_w, 30);
    EXPECT_EQ(row.sys_pct, 0);
    EXPECT_EQ(row.ambient_c, 20);
    EXPECT_EQ(row.exhaust_c, 23);
    EXPECT_EQ(row.cpu_c[3], 25);
    EXPECT_EQ(row.cpu_c[4], std::nullopt);
}

TEST(MeasuredFiles, PowerOnDayIsMissingWhileTheControllerWasUnreachable) {
    const Trace trace = measured("server_poweron_24h_60s.csv");

    // From the first row without an answer until the controller answered again.
    EXPECT_EQ(seconds_without_reading(trace), 69600);
    EXPECT_NE(trace.reading_at(1748918280), nullptr);
    EXPECT_EQ(trace.reading_at(1748918281), nullptr);
    EXPECT_EQ(trace.reading_at(1748987880), nullptr);
    EXPECT_NE(trace.reading_at(1748987881), nullptr);
}

TEST(MeasuredFiles, PowerOnDayHasOneSystemPowerAndNoOtherInStandby) {
    const Trace trace = measured("server_poweron_24h_60s.csv");

    const Reading& row = trace.readings().front();

    EXPECT_EQ(row.system_ac_w, 10);
    EXPECT_EQ(row.system_dc_w, 10);
    EXPECT_EQ(row.cpu_w, std::nullopt);
    EXPECT_EQ(row.cpu_pct, std::nullopt);
    EXPECT_EQ(row.ambient_c, 25);
}

TEST(MeasuredFiles, WallMeterDaySumsSixSupplies) {
    const Trace trace = measured("wall_meter_6probe_23h_15s.csv");

    const Reading& row = trace.readings().front();

    EXPECT_EQ(trace.readings().size(), 5517u);
    EXPECT_EQ(trace.supply_count(), 6u);
    EXPECT_EQ(row.epoch_s, 1633604282);
    EXPECT_EQ(row.supplies[5].ac_in_w, 27);
    EXPECT_EQ(row.supplies[5].dc_out_w, std::nullopt);
    EXPECT_EQ(row.system_ac_w, 170);
    EXPECT_EQ(row.cpu_pct, std::nullopt);
    EXPECT_EQ(seconds_without_reading(trace), 0);
}

}  // namespace
