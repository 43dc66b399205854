// SPDX-License-Identifier: Apache-2.0
// Reading out: rows of an open result become entries. The exported sample readers live here.
#include "query/folds.h"

#include <algorithm>

#include "db/status.h"
#include "query/grid_walk.h"

namespace pwrmgt::query {

namespace {

constexpr uint16_t low16(uint32_t value) {
    return static_cast<uint16_t>(value);
}
constexpr uint8_t low8(uint32_t value) {
    return static_cast<uint8_t>(value);
}

// Places of the performance columns that are not averaged.
constexpr size_t kSysMax = 1;
constexpr size_t kSysMin = 2;

}  // namespace

void PowerGroup::open() {
    sum_ = 0;
    max_ = 0;
    min_ = 65535;
}

void PowerGroup::read(uint32_t result, int first_column) {
    vek_db_result_column_short_uint(result, first_column, &current_[0]);
    vek_db_result_column_short_uint(result, first_column + 1, &current_[1]);
    vek_db_result_column_short_uint(result, first_column + 2, &current_[2]);
}

void PowerGroup::miss() {
    current_.fill(db::kNoPower);
}

bool PowerGroup::valid() const {
    return std::all_of(current_.begin(), current_.end(),
                       [](uint16_t value) { return value < db::kNoPower; });
}

void PowerGroup::add() {
    sum_ += current_[0];
    max_ = std::max(max_, current_[1]);
    min_ = std::min(min_, current_[2]);
}

uint16_t PowerGroup::average(uint32_t slots) const {
    return slots > 0 ? low16(sum_ / slots) : current_[0];
}

void PowerFold::open(int32_t entry) {
    entry_ = entries_ + entry;
    entry_->timestamp = 0;
    entry_->avg = entry_->max = entry_->min = 0;
    first_.open();
    slots_ = 0;
    // Kept: for processors and memory the second group is not even cleared.
    // [SecondGroupStaysUntouchedForProcessorsAndMemory]
    if (!has_second_) return;
    entry_->avg2 = entry_->max2 = entry_->min2 = 0;
    second_.open();
}

void PowerFold::read(uint32_t result) {
    first_.read(result, 1);
    if (has_second_) second_.read(result, 4);
}

void PowerFold::miss() {
    first_.miss();
    second_.miss();
}

void PowerFold::add() {
    first_.add();
    second_.add();
    ++slots_;
}

int32_t PowerFold::close(int32_t entry) {
    entry_->index = low16(static_cast<uint32_t>(entry));
    entry_->avg = first_.average(slots_);
    entry_->max = first_.maximum(slots_);
    entry_->min = first_.minimum(slots_);
    if (has_second_) {
        entry_->avg2 = second_.average(slots_);
        entry_->max2 = second_.maximum(slots_);
        entry_->min2 = second_.minimum(slots_);
    }
    return slots_ > 0 ? 1 : 0;
}

// Kept: only a row or the end of the rows lets the stamp be read; the other two readers look at it
// after most failures too. [FirstStampIsReadOnlyAfterNineOrTen]
bool PsuFold::first_row_readable(int step) const {
    return step == db::kRowReady || step == db::kRowsEnded;
}

void PsuFold::open(int32_t entry) {
    entry_ = entries_ + entry;
    entry_->timestamp = 0;
    entry_->avg_ac = entry_->avg_dc = 0;
    slots_ = 0;
}

void PsuFold::read(uint32_t result) {
    vek_db_result_column_short_uint(result, 1, &ac_);
    vek_db_result_column_short_uint(result, 2, &dc_);
}

void PsuFold::miss() {
    ac_ = dc_ = db::kNoPower;
}

bool PsuFold::valid() const {
    return ac_ < db::kNoPower && dc_ < db::kNoPower;
}

void PsuFold::add() {
    // Kept: sums live in the record's 16 bits and wrap. [SumsWrapIn16BitsBeforeTheDivision]
    entry_->avg_ac = low16(uint32_t{entry_->avg_ac} + ac_);
    entry_->avg_dc = low16(uint32_t{entry_->avg_dc} + dc_);
    ++slots_;
}

int32_t PsuFold::close(int32_t entry) {
    entry_->index = low16(static_cast<uint32_t>(entry));
    if (slots_ == 0) {
        entry_->avg_ac = entry_->avg_dc = db::kNoPower;
        return 0;
    }
    entry_->avg_ac = low16(entry_->avg_ac / slots_);
    entry_->avg_dc = low16(entry_->avg_dc / slots_);
    return 1;
}

void PerfFold::open(int32_t entry) {
    entry_ = entries_ + entry;
    entry_->timestamp = 0;
    entry_->sys_avg = entry_->sys_max = entry_->sys_min = 0;
    entry_->cpu_avg = entry_->mem_avg = entry_->io_avg = 0;
    folded_.fill(0);
    folded_[kSysMin] = db::kNoPercent;
    slots_ = 0;
}

void PerfFold::read(uint32_t result) {
    int column = 1;
    for (uint8_t& value : current_) {
        vek_db_result_column_uchar(result, column++, &value);
    }
}

bool PerfFold::valid() const {
    return std::all_of(current_.begin(), current_.end(),
                       [](uint8_t value) { return value < db::kNoPercent; });
}

void PerfFold::add() {
    for (size_t at = 0; at < current_.size(); ++at) {
        const uint16_t value = current_[at];
        if (at == kSysMax) {
            folded_[at] = std::max(folded_[at], value);
        } else if (at == kSysMin) {
            folded_[at] = std::min(folded_[at], value);
        } else {
            folded_[at] = low16(uint32_t{folded_[at]} + value);
        }
    }
    ++slots_;
}

int32_t PerfFold::close(int32_t entry) {
    std::array<uint8_t, 6> values = current_;
    if (slots_ > 0) {
        for (size_t at = 0; at < values.size(); ++at) {
            const bool averaged = at != kSysMax && at != kSysMin;
            values[at] = low8(averaged ? folded_[at] / slots_ : folded_[at]);
        }
    }
    entry_->index = low16(static_cast<uint32_t>(entry));
    entry_->sys_avg = values[0];
    entry_->sys_max = values[kSysMax];
    entry_->sys_min = values[kSysMin];
    entry_->cpu_avg = values[3];
    entry_->mem_avg = values[4];
    entry_->io_avg = values[5];
    return slots_ > 0 ? 1 : 0;
}

}  // namespace pwrmgt::query

using namespace pwrmgt::query;

extern "C" int32_t pwrmgt_get_powerSamples(uint32_t result, int32_t count,
                                           uint32_t samples_per_entry,
                                           pwrmgt_hist_pwr_sample_t* entries,
                                           pwrmgt_pwr_domain domain) {
    const int32_t wanted = entries != nullptr ? count : 0;
    return walk_grid(result, wanted, samples_per_entry, PowerFold{entries, domain});
}

extern "C" int32_t pwrmgt_get_psuPowerSamples(uint32_t result, int32_t count,
                                              uint32_t samples_per_entry,
                                              pwrmgt_hist_psu_sample_t* entries) {
    const int32_t wanted = entries != nullptr ? count : 0;
    return walk_grid(result, wanted, samples_per_entry, PsuFold{entries});
}

extern "C" int32_t pwrmgt_get_perfSample_perIndex(uint32_t result, int32_t count,
                                                  uint32_t samples_per_entry,
                                                  pwrmgt_hist_perf_sample_t* entries) {
    const int32_t wanted = entries != nullptr ? count : 0;
    return walk_grid(result, wanted, samples_per_entry, PerfFold{entries});
}
