// SPDX-License-Identifier: Apache-2.0
#include "kernel_load.h"

#include <array>
#include <fstream>
#include <sstream>

#include "kernel_files.h"

namespace pwrmgt::pwrmgtd {
namespace {

// The columns of the line "cpu"; those behind them are contained in the first two.
enum Column : std::size_t { user, nice, system, idle, iowait, irq, softirq, steal, kColumns };

Percent share(std::int64_t part, std::int64_t whole) {
    if (whole <= 0 || part < 0 || part > whole) return std::nullopt;
    return static_cast<std::uint8_t>((part * 100 + whole / 2) / whole);
}

}  // namespace

std::optional<KernelLoad::Times> KernelLoad::times() const {
    std::istringstream line(read_word(root_ + "/proc/stat").value_or(""));
    std::string name;
    std::array<std::int64_t, kColumns> column{};
    line >> name;
    for (std::int64_t& value : column) {
        line >> value;
    }
    if (!line || name != "cpu") return std::nullopt;
    Times now;
    for (const std::int64_t value : column) {
        now.all += value;
    }
    now.waiting = column[iowait];
    now.busy = now.all - column[idle] - column[iowait];
    return now;
}

Percent KernelLoad::memory() const {
    std::ifstream file(root_ + "/proc/meminfo");
    std::int64_t total_kb = 0;
    std::int64_t available_kb = -1;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string name;
        std::int64_t value = 0;
        if (!(words >> name >> value)) continue;
        if (name == "MemTotal:") total_kb = value;
        if (name == "MemAvailable:") available_kb = value;
    }
    if (available_kb < 0) return std::nullopt;
    return share(total_kb - available_kb, total_kb);
}

void KernelLoad::read(Reading& reading) {
    const std::optional<Times> now = times();
    if (now && last_) {
        const std::int64_t all = now->all - last_->all;
        const std::int64_t busy = now->busy - last_->busy;
        const std::int64_t waiting = now->waiting - last_->waiting;
        reading.cpu_pct = share(busy, all);
        reading.io_pct = share(waiting, all);
        reading.sys_pct = share(busy + waiting, all);
    }
    last_ = now;
    reading.mem_pct = memory();
}

}  // namespace pwrmgt::pwrmgtd
