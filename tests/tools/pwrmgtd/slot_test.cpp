// SPDX-License-Identifier: Apache-2.0
#include "slot.h"

#include <gtest/gtest.h>

namespace pwrmgt::pwrmgtd {
namespace {

Reading system(Watts dc_w, Watts ac_w) {
    Reading reading;
    reading.sys_dc_w = dc_w;
    reading.sys_ac_w = ac_w;
    return reading;
}

TEST(Slot, StartsAtTheMultipleOf30AtOrBeforeASecond) {
    EXPECT_EQ(slot_start(1700000009), 1699999980);
    EXPECT_EQ(slot_start(1700000010), 1700000010);
    EXPECT_EQ(slot_start(1700000039), 1700000010);
    EXPECT_EQ(slot_start(1700000040), 1700000040);
}

TEST(Slot, SecondsBeforeTheEpochBelongToTheSlotThatHoldsThem) {
    EXPECT_EQ(slot_start(-1), -30);
    EXPECT_EQ(slot_start(-30), -30);
    EXPECT_EQ(slot_start(-31), -60);
}

TEST(Slot, NumbersRunFromMidnightThroughTheDay) {
    EXPECT_EQ(slot_number(1748908800), 0);
    EXPECT_EQ(slot_number(1748908830), 1);
    EXPECT_EQ(slot_number(1748995170), 2879);
    EXPECT_EQ(slot_number(1748995200), 0);
}

TEST(Slot, AnEarlierDaySlotIsKeptOnlyWhileATrimKeepsIt) {
    EXPECT_EQ(oldest_kept(1700086410), 1700000010);
    EXPECT_EQ(oldest_kept(1700086411), 1700000040);
    EXPECT_EQ(oldest_kept(1700086440), 1700000040);
}

TEST(SlotReadings, NoReadingAtAllIsAnEmptySample) {
    const pwrmgt_hist_sample_t sample = SlotReadings{}.sample();

    for (const auto* group : {&sample.system, &sample.cpu, &sample.memory}) {
        EXPECT_EQ(group->avg, 65535);
        EXPECT_EQ(group->max, 65535);
        EXPECT_EQ(group->min, 65535);
    }
    EXPECT_EQ(sample.system.avg2, 65535);
    EXPECT_EQ(sample.system.max2, 65535);
    EXPECT_EQ(sample.system.min2, 65535);
    for (const auto& psu : sample.psu) {
        EXPECT_EQ(psu.avg_ac, 65535);
        EXPECT_EQ(psu.avg_dc, 65535);
    }
    EXPECT_EQ(sample.perf.sys_avg, 255);
    EXPECT_EQ(sample.perf.sys_max, 255);
    EXPECT_EQ(sample.perf.sys_min, 255);
    EXPECT_EQ(sample.perf.cpu_avg, 255);
    EXPECT_EQ(sample.perf.mem_avg, 255);
    EXPECT_EQ(sample.perf.io_avg, 255);
}

TEST(SlotReadings, AverageIsCutToAWholeNumber) {
    SlotReadings readings;
    readings.add(system(100, 200));
    readings.add(system(100, 200));
    readings.add(system(102, 202));

    const pwrmgt_hist_sample_t sample = readings.sample();

    EXPECT_EQ(sample.system.avg, 100);
    EXPECT_EQ(sample.system.max, 102);
    EXPECT_EQ(sample.system.min, 100);
    EXPECT_EQ(sample.system.avg2, 200);
    EXPECT_EQ(sample.system.max2, 202);
    EXPECT_EQ(sample.system.min2, 200);
}

TEST(SlotReadings, TheLargestReadingsDoNotOverflow) {
    SlotReadings readings;
    for (int second = 0; second < 30; ++second) {
        readings.add(system(65534, 65534));
    }

    EXPECT_EQ(readings.sample().system.avg, 65534);
}

TEST(SlotReadings, ZeroWattsAreAReading) {
    SlotReadings readings;
    readings.add(system(0, 0));

    EXPECT_EQ(readings.sample().system.avg, 0);
    EXPECT_EQ(readings.sample().system.min, 0);
}

TEST(SlotReadings, SystemPowerCountsWithDcAndAcOrNotAtAll) {
    SlotReadings readings;
    readings.add(system(500, std::nullopt));
    readings.add(system(std::nullopt, 600));
    readings.add(system(100, 110));

    const pwrmgt_hist_sample_t sample = readings.sample();

    EXPECT_EQ(sample.system.max, 100);
    EXPECT_EQ(sample.system.max2, 110);
}

TEST(SlotReadings, SystemPowerIsMissingWhenNoMomentHasBoth) {
    SlotReadings readings;
    readings.add(system(500, std::nullopt));
    readings.add(system(std::nullopt, 600));

    const pwrmgt_hist_sample_t sample = readings.sample();

    EXPECT_EQ(sample.system.avg, 65535);
    EXPECT_EQ(sample.system.avg2, 65535);
}

TEST(SlotReadings, EveryOtherQuantityIsOnItsOwn) {
    Reading first;
    first.cpu_w = 60;
    first.supplies[0] = {100, std::nullopt};
    first.sys_pct = 10;
    Reading second;
    second.cpu_w = 70;
    second.mem_w = 30;
    second.supplies[0] = {std::nullopt, 90};
    second.supplies[3] = {41, 40};
    second.sys_pct = 21;
    second.io_pct = 7;
    SlotReadings readings;
    readings.add(first);
    readings.add(second);

    const pwrmgt_hist_sample_t sample = readings.sample();

    EXPECT_EQ(sample.cpu.avg, 65);
    EXPECT_EQ(sample.memory.avg, 30);
    EXPECT_EQ(sample.psu[0].avg_ac, 100);
    EXPECT_EQ(sample.psu[0].avg_dc, 90);
    EXPECT_EQ(sample.psu[1].avg_ac, 65535);
    EXPECT_EQ(sample.psu[3].avg_ac, 41);
    EXPECT_EQ(sample.psu[3].avg_dc, 40);
    EXPECT_EQ(sample.perf.sys_avg, 15);
    EXPECT_EQ(sample.perf.sys_max, 21);
    EXPECT_EQ(sample.perf.sys_min, 10);
    EXPECT_EQ(sample.perf.io_avg, 7);
    EXPECT_EQ(sample.perf.cpu_avg, 255);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd
