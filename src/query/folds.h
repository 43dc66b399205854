// SPDX-License-Identifier: Apache-2.0
// The three folds of the 30-second walk: power, one supply, performance percentages.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "vekdb_pwrmgt.h"

namespace pwrmgt::query {

// The stamp of an entry is that of its newest slot.
inline void stamp_once(uint32_t& timestamp, uint32_t slot_time) {
    if (timestamp == 0) timestamp = slot_time;
}

// Average, maximum and minimum of one column group.
class PowerGroup {
public:
    void open();
    void read(uint32_t result, int first_column);
    void miss();
    bool valid() const;
    void add();

    uint16_t average(uint32_t slots) const;
    uint16_t maximum(uint32_t slots) const { return slots > 0 ? max_ : current_[1]; }
    uint16_t minimum(uint32_t slots) const { return slots > 0 ? min_ : current_[2]; }

private:
    std::array<uint16_t, 3> current_{65535, 65535, 65535};  // avg, max, min of the slot
    uint32_t sum_ = 0;
    uint16_t max_ = 0;
    uint16_t min_ = 65535;
};

class PowerFold {
public:
    PowerFold(pwrmgt_hist_pwr_sample_t* entries, pwrmgt_pwr_domain domain)
        : entries_{entries}, has_second_{domain == PWRMGT_DOMAIN_SYSTEM} {}

    bool first_row_readable(int step) const { return step != 1 && step != 3; }
    bool starts_at(uint32_t newest) const { return newest != 0; }
    void open(int32_t entry);
    void read(uint32_t result);
    void miss();
    void stamp(uint32_t slot_time) { stamp_once(entry_->timestamp, slot_time); }
    bool valid() const { return first_.valid(); }
    void add();
    int32_t close(int32_t entry);

private:
    pwrmgt_hist_pwr_sample_t* entries_;
    pwrmgt_hist_pwr_sample_t* entry_ = nullptr;
    bool has_second_;
    PowerGroup first_;
    PowerGroup second_;
    uint32_t slots_ = 0;
};

class PsuFold {
public:
    explicit PsuFold(pwrmgt_hist_psu_sample_t* entries) : entries_{entries} {}

    bool first_row_readable(int step) const;
    bool starts_at(uint32_t) const { return true; }
    void open(int32_t entry);
    void read(uint32_t result);
    void miss();
    void stamp(uint32_t slot_time) { stamp_once(entry_->timestamp, slot_time); }
    bool valid() const;
    void add();
    int32_t close(int32_t entry);

private:
    pwrmgt_hist_psu_sample_t* entries_;
    pwrmgt_hist_psu_sample_t* entry_ = nullptr;
    uint16_t ac_ = 65535;
    uint16_t dc_ = 65535;
    uint32_t slots_ = 0;
};

class PerfFold {
public:
    explicit PerfFold(pwrmgt_hist_perf_sample_t* entries) : entries_{entries} {
        current_.fill(255);
    }

    bool first_row_readable(int step) const { return step != 1 && step != 3; }
    bool starts_at(uint32_t) const { return true; }
    void open(int32_t entry);
    void read(uint32_t result);
    void miss() { current_.fill(255); }
    void stamp(uint32_t slot_time) { stamp_once(entry_->timestamp, slot_time); }
    bool valid() const;
    void add();
    int32_t close(int32_t entry);

private:
    pwrmgt_hist_perf_sample_t* entries_;
    pwrmgt_hist_perf_sample_t* entry_ = nullptr;
    std::array<uint8_t, 6> current_;
    std::array<uint16_t, 6> folded_{};  // sums; at the places of maximum and minimum those
    uint32_t slots_ = 0;
};

}  // namespace pwrmgt::query
