// SPDX-License-Identifier: Apache-2.0
// Energy, load, temperatures and system power out of the kernel's files.
#include "source_kernel.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "kernel_fixture.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

constexpr std::int64_t kRange_uj = 262143328850;
constexpr std::int64_t kSecond_us = 1'000'000;

TEST(EnergyCounter, TellsTheMeanPowerSinceTheLastReading) {
    EnergyCounter counter;

    EXPECT_EQ(counter.watts(1'000'000, kRange_uj, 0), std::nullopt);
    EXPECT_EQ(counter.watts(101'000'000, kRange_uj, kSecond_us), 100);
    EXPECT_EQ(counter.watts(102'400'000, kRange_uj, 3 * kSecond_us), 1);
    EXPECT_EQ(counter.watts(105'400'000, kRange_uj, 5 * kSecond_us), 2);
}

TEST(EnergyCounter, GoesRoundAtItsRange) {
    EnergyCounter counter;
    counter.watts(kRange_uj - 60'000'000, kRange_uj, 0);

    EXPECT_EQ(counter.watts(90'000'000, kRange_uj, kSecond_us), 150);
}

TEST(EnergyCounter, ThatStandsStillIsNoReading) {
    EnergyCounter counter;
    counter.watts(5'000'000, kRange_uj, 0);

    EXPECT_EQ(counter.watts(5'000'000, kRange_uj, kSecond_us), std::nullopt);
    EXPECT_EQ(counter.watts(55'000'000, kRange_uj, 2 * kSecond_us), 50);
}

TEST(EnergyCounter, ThatWasResetIsNoReadingOnce) {
    EnergyCounter counter;
    counter.watts(200'000'000'000, kRange_uj, 0);

    EXPECT_EQ(counter.watts(1'000'000, kRange_uj, 30 * kSecond_us), std::nullopt);
    EXPECT_EQ(counter.watts(51'000'000, kRange_uj, 31 * kSecond_us), 50);
}

TEST(EnergyCounter, AfterATimeInWhichItMayHaveGoneRoundIsNoReading) {
    for (const auto& [elapsed_s, known] : {std::pair{131, true}, std::pair{132, false}}) {
        EnergyCounter counter;
        counter.watts(0, kRange_uj, 0);

        EXPECT_EQ(counter.watts(13'200'000'000, kRange_uj, elapsed_s * kSecond_us).has_value(),
                  known)
            << elapsed_s;
    }
}

TEST(EnergyCounter, WithoutTimeInBetweenIsNoReading) {
    EnergyCounter counter;
    counter.watts(0, kRange_uj, kSecond_us);

    EXPECT_EQ(counter.watts(50'000'000, kRange_uj, kSecond_us), std::nullopt);
}

TEST_F(KernelTest, PackagesAreProcessorsAndDramIsMemory) {
    zone("intel-rapl:0", "package-0", 0);
    zone("intel-rapl:0:0", "core", 0);
    zone("intel-rapl:0:1", "dram", 0);
    zone("intel-rapl:1", "package-1", 0);
    zone("intel-rapl:1:0", "dram", 0);
    zone("intel-rapl-mmio:0", "package-0", 0);
    KernelSource source = make({});
    EXPECT_EQ(read_after(source, 1).cpu_w, std::nullopt);

    zone("intel-rapl:0", "package-0", 100'000'000);
    zone("intel-rapl:0:0", "core", 70'000'000);
    zone("intel-rapl:0:1", "dram", 10'000'000);
    zone("intel-rapl:1", "package-1", 120'000'000);
    zone("intel-rapl:1:0", "dram", 5'000'000);
    zone("intel-rapl-mmio:0", "package-0", 100'000'000);
    const Reading reading = read_after(source, 1);

    EXPECT_EQ(reading.each_cpu_w[0], 100);
    EXPECT_EQ(reading.each_cpu_w[1], 120);
    EXPECT_EQ(reading.each_cpu_w[2], std::nullopt);
    EXPECT_EQ(reading.cpu_w, 220);
    EXPECT_EQ(reading.mem_w, 15);
}

TEST_F(KernelTest, DiesOfAPackageAreOneProcessor) {
    zone("intel-rapl:0", "package-1-die-0", 0);
    zone("intel-rapl:1", "package-1-die-1", 0);
    KernelSource source = make({});
    source.read(0);

    zone("intel-rapl:0", "package-1-die-0", 40'000'000);
    zone("intel-rapl:1", "package-1-die-1", 50'000'000);

    EXPECT_EQ(read_after(source, 1).each_cpu_w[1], 90);
}

TEST_F(KernelTest, ASumWithoutOneOfItsPartsIsNoReading) {
    zone("intel-rapl:0", "package-0", 0);
    zone("intel-rapl:1", "package-1", 0);
    KernelSource source = make({});
    source.read(0);

    zone("intel-rapl:0", "package-0", 100'000'000);
    write("sys/class/powercap/intel-rapl:1/energy_uj", "soon");
    const Reading reading = read_after(source, 1);

    EXPECT_EQ(reading.each_cpu_w[0], 100);
    EXPECT_EQ(reading.each_cpu_w[1], std::nullopt);
    EXPECT_EQ(reading.cpu_w, std::nullopt);
}

TEST_F(KernelTest, ACounterBeyondItsRangeIsNoReading) {
    zone("intel-rapl:0", "package-0", 262143328851);
    KernelSource source = make({});
    source.read(0);

    zone("intel-rapl:0", "package-0", 262143328850);

    EXPECT_EQ(read_after(source, 1).cpu_w, std::nullopt);
}

TEST_F(KernelTest, ZonesOfARealMachineAreRead) {
    const std::string real = std::string(MEASURED_DATA_DIR) + "/fixtures/sys/class/powercap/";
    std::filesystem::create_directories(root() + "/sys/class");
    std::filesystem::copy(real, root() + "/sys/class/powercap",
                          std::filesystem::copy_options::recursive);
    KernelSource source = make({});
    source.read(0);

    // 240422366267 before; 65.5 W are rounded up.
    write("sys/class/powercap/intel-rapl:0/energy_uj", "240487866267");
    const Reading reading = read_after(source, 1);

    EXPECT_EQ(reading.each_cpu_w[0], 66);
    EXPECT_EQ(reading.cpu_w, 66);
}

TEST_F(KernelTest, TemperaturesOfARealMachineAreRead) {
    std::filesystem::create_directories(root() + "/sys/class/hwmon");
    std::filesystem::create_symlink(
        std::string(MEASURED_DATA_DIR) + "/fixtures/sys/devices/platform/coretemp.0/hwmon/hwmon0",
        root() + "/sys/class/hwmon/hwmon0");
    KernelSource source = make({});

    const Reading reading = source.read(0);

    EXPECT_EQ(reading.each_cpu_c[0], 55);
    EXPECT_EQ(reading.each_cpu_c[1], std::nullopt);
    EXPECT_EQ(reading.ambient_c, std::nullopt);
}

TEST_F(KernelTest, ProcessorsInletAndExhaustAreToldByTheirLabels) {
    chip("hwmon0", "coretemp.0",
         {{"name", "coretemp"}, {"temp1_label", "Package id 0"}, {"temp1_input", "54500"}});
    chip("hwmon1", "coretemp.1",
         {{"name", "coretemp"}, {"temp1_label", "Package id 1"}, {"temp1_input", "-1500"}});
    chip("hwmon2", "0000:00:18.3",
         {{"name", "k10temp"}, {"temp1_label", "Tctl"}, {"temp1_input", "61000"}});
    chip("hwmon3", "9-0048",
         {{"name", "tmp75"}, {"temp1_label", "Inlet Temp"}, {"temp1_input", "22499"}});
    chip("hwmon4", "9-0049",
         {{"name", "tmp75"}, {"temp1_label", "EXHAUST"}, {"temp1_input", "35000"}});
    KernelSource source = make({});

    const Reading reading = source.read(0);

    EXPECT_EQ(reading.each_cpu_c[0], 61);
    EXPECT_EQ(reading.each_cpu_c[1], -2);
    EXPECT_EQ(reading.ambient_c, 22);
    EXPECT_EQ(reading.exhaust_c, 35);
}

TEST_F(KernelTest, ASensorThatIsAbsurdBrokenOrGoneIsNoReading) {
    chip("hwmon0", "coretemp.0",
         {{"name", "coretemp"},
          {"temp1_label", "Package id 0"},
          {"temp1_input", "256000"},
          {"temp2_label", "Package id 1"},
          {"temp2_input", "hot"},
          {"temp3_label", "Package id 2"},
          {"temp3_input", "40000"},
          {"temp3_fault", "1"},
          {"temp4_label", "Package id 3"},
          {"temp4_input", "40000"},
          {"temp5_label", "Package id 4"},
          {"temp5_input", "-129000"}});
    KernelSource source = make({});
    EXPECT_EQ(source.read(0).each_cpu_c[3], 40);

    remove("sys/class/hwmon/hwmon0/temp4_input");
    const Reading reading = source.read(0);

    EXPECT_THAT(reading.each_cpu_c, testing::Each(Celsius{}));
}

TEST_F(KernelTest, LoadIsTheShareOfTheTimeSinceTheLastReading) {
    write("proc/stat", "cpu  1000 0 1000 8000 100 0 0 0 50 0\ncpu0 1 2 3");
    write("proc/meminfo",
          "MemTotal:        1000 kB\nMemFree:          100 kB\nMemAvailable:    345 kB");
    KernelSource source = make({});
    const Reading first = source.read(0);

    write("proc/stat", "cpu  1060 10 1010 8050 160 5 5 0 90 0\ncpu0 1 2 3");
    const Reading second = source.read(0);

    EXPECT_EQ(first.cpu_pct, std::nullopt);
    EXPECT_EQ(first.mem_pct, 66);
    EXPECT_EQ(second.cpu_pct, 45);
    EXPECT_EQ(second.io_pct, 30);
    EXPECT_EQ(second.sys_pct, 75);
    EXPECT_EQ(second.mem_pct, 66);
}

TEST_F(KernelTest, LoadThatMakesNoSenseIsNoReading) {
    KernelSource source = make({});
    source.read(0);
    for (const char* text :
         {"", "cpu  1 2 3", "intr 1 2 3 4 5 6 7 8", "cpu  1060 10 1010 8050 160 5 5 0",
          "cpu  1060 10 1010 8050 160 5 5 0", "cpu  1000 0 1000 8000 100 0 0 0"}) {
        write("proc/stat", text);
        write("proc/meminfo", "MemTotal: 1000 kB\nMemAvailable: 1001 kB");

        const Reading reading = source.read(0);

        EXPECT_EQ(reading.cpu_pct, std::nullopt) << text;
        EXPECT_EQ(reading.io_pct, std::nullopt) << text;
        EXPECT_EQ(reading.sys_pct, std::nullopt) << text;
        EXPECT_EQ(reading.mem_pct, std::nullopt) << text;
    }
}

TEST_F(KernelTest, AMachineWithoutAnyFileHasNoReading) {
    KernelSource source = make({});

    const Reading reading = read_after(source, 60);

    EXPECT_EQ(reading.sys_ac_w, std::nullopt);
    EXPECT_EQ(reading.sys_dc_w, std::nullopt);
    EXPECT_EQ(reading.mem_pct, std::nullopt);
    EXPECT_EQ(reading.supply_states[0].present, std::nullopt);
    EXPECT_EQ(source.supplies(), 0U);
    EXPECT_EQ(source.name(), "the kernel's files in " + root());
}

TEST_F(KernelTest, SystemPowerIsTheSumOverTheSupplies) {
    supply("hwmon0", "7-0058", 220);
    supply("hwmon1", "7-0059", 180);
    chip("hwmon2", "ACPI000D:00", {{"name", "power_meter"}, {"power1_average", "390000000"}});
    KernelSource source = make({});

    const Reading reading = source.read(0);

    EXPECT_EQ(reading.sys_ac_w, 400);
    EXPECT_EQ(reading.sys_dc_w, 360);
}

TEST_F(KernelTest, APowerMeterStandsInForASupplyThatDoesNotTell) {
    supply("hwmon0", "7-0058", 220);
    supply("hwmon1", "7-0059", 180);
    chip("hwmon2", "ACPI000D:00", {{"name", "power_meter"}, {"power1_average", "390000000"}});
    KernelSource source = make({});

    write("sys/class/hwmon/hwmon1/power1_input", "-5000000");
    const Reading without_input = source.read(0);
    write("sys/class/hwmon/hwmon1/power2_input", "-5000000");
    const Reading without_output = source.read(0);

    EXPECT_EQ(without_input.sys_ac_w, 390);
    EXPECT_EQ(without_input.sys_dc_w, 360);
    EXPECT_EQ(without_output.sys_dc_w, 390);
}

TEST_F(KernelTest, ThePlatformCounterIsTheLastResort) {
    zone("intel-rapl:1", "psys", 0);
    KernelSource source = make({});
    source.read(0);

    zone("intel-rapl:1", "psys", 45'000'000);
    const Reading reading = read_after(source, 1);

    EXPECT_EQ(reading.sys_ac_w, 45);
    EXPECT_EQ(reading.sys_dc_w, 45);
    EXPECT_EQ(reading.cpu_w, std::nullopt);
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test
