// SPDX-License-Identifier: Apache-2.0
// Temperatures on their way into the thermal tables: one record per minute for the history, and the
// latest value of each sensor.
#pragma once

#include <cstdint>
#include <vector>

#include "log.h"
#include "reading.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::pwrmgtd {

// The time between two records. Queries divide their spans into indexes of whole minutes.
inline constexpr std::int64_t kMinute_s = 60;

class Temperatures {
public:
    explicit Temperatures(Log& log) : log_(log) {}

    // Goes on after the newest record that is stored.
    void resume(std::uint32_t connection, std::int64_t newest_s);

    // Keeps the latest values current, and records them when a minute has begun that is not
    // recorded yet.
    void take(const Reading& reading, std::int64_t now_s);

    // Records a minute of the past.
    bool record(const Reading& reading, std::int64_t minute_s);

    std::int64_t newest_s() const { return newest_s_; }

private:
    using Entries = std::vector<thermal_hist_entry_t>;

    static Entries entries_of(const Reading& reading);
    bool write_record(const Entries& entries, std::int64_t minute_s);
    bool show(const Entries& entries, std::int64_t now_s);
    bool insert_latest(const Entries& entries, std::int64_t now_s);

    Log& log_;
    std::uint32_t connection_ = 0;
    std::int64_t newest_s_ = 0;
    Entries shown_;
};

}  // namespace pwrmgt::pwrmgtd
