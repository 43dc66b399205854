// SPDX-License-Identifier: Apache-2.0
// A made tree of the kernel's files, a timer that a test moves, and the source on both.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "source_kernel.h"
#include "stand_ins.h"
#include "temp_file.h"

namespace pwrmgt::pwrmgtd::test {

using Files = std::map<std::string, std::string>;

class KernelTest : public testing::Test {
protected:
    std::string root() const { return place_.directory(); }

    void write(const std::string& file, const std::string& text) const {
        const std::filesystem::path path = root() + "/" + file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << text << '\n';
    }
    void remove(const std::string& file) const { std::filesystem::remove_all(root() + "/" + file); }

    // A zone of sys/class/powercap with the range of a real one.
    void zone(const std::string& directory, const std::string& name, std::int64_t energy_uj) const {
        const std::string at = "sys/class/powercap/" + directory + "/";
        write(at + "name", name);
        write(at + "energy_uj", std::to_string(energy_uj));
        write(at + "max_energy_range_uj", "262143328850");
    }

    // A chip of sys/class/hwmon on a device of its own.
    void chip(const std::string& hwmon, const std::string& device, const Files& files) const {
        const std::string at = "sys/class/hwmon/" + hwmon + "/";
        for (const auto& [name, text] : files) {
            write(at + name, text);
        }
        std::filesystem::create_symlink("../../../devices/" + device, root() + "/" + at + "device");
    }

    // A supply that takes 230 V and `watts` and gives 20 W less, as a PMBus driver shows it.
    void supply(const std::string& hwmon, const std::string& device, int watts) const {
        chip(hwmon, device,
             {{"name", "pmbus"},
              {"in1_label", "vin"},
              {"in1_input", "230000"},
              {"in1_lcrit_alarm", "0"},
              {"in2_label", "vout1"},
              {"in2_input", "12100"},
              {"in2_lcrit_alarm", "0"},
              {"power1_label", "pin"},
              {"power1_input", std::to_string(watts) + "000000"},
              {"power1_rated_max", "2000000000"},
              {"power2_label", "pout1"},
              {"power2_input", std::to_string(watts - 20) + "000000"},
              {"power2_rated_max", "1800000000"},
              {"fan1_fault", "0"}});
    }

    // The source; it looks around when it is made.
    KernelSource make(std::vector<std::string> devices) {
        return {{root(), std::move(devices)}, [this] { return now_us_; }, log};
    }
    Reading read_after(KernelSource& source, std::int64_t seconds) {
        now_us_ += seconds * 1'000'000;
        return source.read(0);
    }

    TempFile place_;
    CollectingLog log;
    std::int64_t now_us_ = 1'000'000'000;
};

}  // namespace pwrmgt::pwrmgtd::test
