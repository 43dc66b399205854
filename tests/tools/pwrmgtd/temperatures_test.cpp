// SPDX-License-Identifier: Apache-2.0
#include "temperatures.h"

#include <gmock/gmock.h>

#include <array>
#include <ctime>
#include <string>

#include "database_fixture.h"
#include "startup.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

class TemperaturesTest : public DatabaseTest {
protected:
    static Reading warm(std::int16_t ambient_c, std::int16_t cpu8_c) {
        Reading reading;
        reading.ambient_c = ambient_c;
        reading.each_cpu_c[7] = cpu8_c;
        return reading;
    }

    std::int64_t recorded(std::int64_t stamp_s, const std::string& sensor) {
        return number("HistThermal24HrMem", "Value",
                      "Timestamp=" + std::to_string(stamp_s) + " and " + sensor);
    }
    int records() { return tables.count("HistThermal24HrMem", "Timestamp>0"); }
};

TEST_F(TemperaturesTest, AMinuteIsRecordedOnceOnItsWholeMinute) {
    tables.show(warm(21, 45), kMidnightBefore + 61);
    tables.show(warm(22, 46), kMidnightBefore + 119);

    EXPECT_EQ(records(), 2);
    EXPECT_EQ(recorded(kMidnightBefore + 60, "Type=1 and InstNum=1"), 21);
    EXPECT_EQ(recorded(kMidnightBefore + 60, "Type=2 and InstNum=8"), 45);
}

TEST_F(TemperaturesTest, TheNextMinuteIsRecordedToo) {
    tables.show(warm(21, 45), kMidnightBefore + 119);
    tables.show(warm(22, 46), kMidnightBefore + 120);

    EXPECT_EQ(records(), 4);
    EXPECT_EQ(recorded(kMidnightBefore + 120, "Type=1 and InstNum=1"), 22);
}

TEST_F(TemperaturesTest, LatestTemperaturesFollowEveryChange) {
    tables.show(warm(21, 45), kMidnightBefore + 61);
    tables.show(warm(21, -7), kMidnightBefore + 62);

    EXPECT_EQ(tables.count("RealTimeThermalMem", "Timestamp=1748908862"), 2);
    EXPECT_EQ(static_cast<std::int32_t>(number("RealTimeThermalMem", "Value", "Type=2")), -7);
}

TEST_F(TemperaturesTest, ASensorThatFallsSilentHasNoLatestTemperature) {
    tables.show(warm(21, 45), kMidnightBefore + 61);
    Reading silent;
    silent.ambient_c = 21;

    tables.show(silent, kMidnightBefore + 62);

    EXPECT_EQ(tables.count("RealTimeThermalMem", "Type=2"), 0);
    EXPECT_EQ(tables.count("RealTimeThermalMem", "Type=1"), 1);
}

TEST_F(TemperaturesTest, AMomentWithoutSensorsIsNotRecorded) {
    tables.show(Reading{}, kMidnightBefore);

    EXPECT_EQ(records(), 0);
}

TEST_F(TemperaturesTest, ASaveCopiesTheRecordsThatAreNew) {
    tables.show(warm(21, 45), kMidnightBefore);
    const std::array rows{row(kMidnightBefore, 6)};
    tables.append(rows);

    EXPECT_TRUE(tables.save(kMidnightBefore, kMidnightBefore));
    EXPECT_TRUE(tables.save(kMidnightBefore, kMidnightBefore));

    EXPECT_EQ(tables.count("HistThermal24Hr", "Timestamp=1748908800"), 2);
}

TEST_F(TemperaturesTest, ARestartDoesNotRecordAMinuteTwice) {
    const auto now_s = static_cast<std::int64_t>(std::time(nullptr));
    tables.show(warm(21, 45), now_s);
    ASSERT_TRUE(start_tables({tables, log, now_s, 0}));

    tables.show(warm(22, 46), now_s);

    EXPECT_EQ(records(), 2);
    EXPECT_EQ(tables.count("HistThermal24Hr", "Timestamp>0"), 2);
}

TEST_F(TemperaturesTest, AClockThatWasAheadDoesNotStopTheRecords) {
    tables.show(warm(21, 45), 2000000000);
    const auto now_s = static_cast<std::int64_t>(std::time(nullptr));
    tables.trim_working(now_s);

    tables.show(warm(22, 46), now_s);

    EXPECT_EQ(records(), 2);
    EXPECT_EQ(recorded(now_s / 60 * 60, "Type=1"), 22);
}

TEST_F(TemperaturesTest, AClockBeforeTheFirstDayRecordsNothing) {
    tables.show(warm(21, 45), 86400);

    EXPECT_EQ(records(), 0);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
