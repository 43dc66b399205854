// SPDX-License-Identifier: Apache-2.0
// Reading out: rows become maximum, average and minimum per index. Traces every step.
#include "thermal/buckets.h"

#include <algorithm>
#include <cstdio>

#include "db/status.h"
#include "vekdb_client.h"

namespace pwrmgt::thermal {

namespace {

constexpr uint32_t kTimeUnset = UINT32_MAX;

}  // namespace

void Bucket::add(const Reading& reading) {
    if (readings_ == 0) {
        sum_ = 0;
        max_ = min_ = reading.value;
    }
    sum_ = static_cast<uint16_t>(sum_ + static_cast<uint16_t>(reading.value));
    max_ = std::max(max_, reading.value);
    min_ = std::min(min_, reading.value);
    last_ = reading;
    ++readings_;
}

pwrmgt_therm_triple_t Bucket::triple() const {
    const auto sum = static_cast<int16_t>(sum_);
    const auto readings = static_cast<int16_t>(readings_);
    // 65536 readings count as none in 16 bits: the sum stands for itself.
    const auto average = static_cast<int16_t>(readings != 0 ? sum / readings : sum);
    return {max_, average, min_};
}

IndexWalk::IndexWalk(const Grid& grid) : grid_{grid} {
    if (grid_.count > 0) expected_ = static_cast<int32_t>(grid_.samples[0].tm);
}

bool IndexWalk::has_slot(const Reading& reading) {
    return slot_of(grid_.samples[index_], reading.type, reading.instance, grid_.per_socket) !=
           nullptr;
}

void IndexWalk::take(const Reading& reading) {
    std::printf("record %d, %d, %d, %d, expected tm %d\n", reading.time, reading.type,
                reading.instance, reading.value, expected_);
    if (!has_slot(reading)) return;
    if (reading.time > expected_) {
        if (bucket_.open()) close();
        pass_empty(reading.time);
        if (done()) return;
    }
    bucket_.add(reading);
    if (reading.time == expected_) {
        close();
    } else {
        std::printf("accumulate for index %d, number %d\n", static_cast<int>(index_),
                    static_cast<int>(bucket_.readings()));
    }
}

void IndexWalk::pass_empty(int32_t until) {
    while (!done() && expected_ < until) {
        pwrmgt_therm_sample_t& sample = grid_.samples[index_];
        sample.tm = static_cast<uint32_t>(expected_);
        sample.index = static_cast<uint16_t>(index_ + 1);
        std::printf("index[%02d] tm[%d] NULL\n", static_cast<int>(index_), expected_);
        advance();
    }
}

// A bucket goes to the slot of the last row added to it.
void IndexWalk::close() {
    const Reading& last = bucket_.last();
    const pwrmgt_therm_triple_t triple = bucket_.triple();
    pwrmgt_therm_sample_t& sample = grid_.samples[index_];
    *slot_of(sample, last.type, last.instance, grid_.per_socket) = triple;
    if (sample.tm == kTimeUnset) sample.tm = static_cast<uint32_t>(expected_);
    sample.index = static_cast<uint16_t>(index_ + 1);
    std::printf("index[%02d] tm[%d] type[%d] inst[%02d] Max/Avg/Min[%03d %03d %03d]\n",
                static_cast<int>(index_), expected_, last.type, last.instance, triple.max,
                triple.avg, triple.min);
    bucket_.empty();
    advance();
}

void IndexWalk::advance() {
    ++index_;
    expected_ =
        static_cast<int32_t>(static_cast<uint32_t>(expected_) + static_cast<uint32_t>(grid_.step));
}

void IndexWalk::finish() {
    while (!done()) {
        if (bucket_.open()) {
            close();
            continue;
        }
        std::printf("index[%02d] tm[%d] fill NULL\n", static_cast<int>(index_), expected_);
        advance();
    }
}

}  // namespace pwrmgt::thermal

using namespace pwrmgt::thermal;

extern "C" uint32_t thermal_get_samples(uint32_t result, int32_t step, int32_t, uint32_t* count,
                                        pwrmgt_therm_sample_t* samples) {
    if (result == 0 || step == 0) return 0;
    const uint32_t wanted = count != nullptr && samples != nullptr ? *count : 0;
    std::printf("required sample count %d, secs per index %d\n", static_cast<int>(wanted), step);
    if (wanted > 0) samples[0].index = 1;
    IndexWalk walk({samples, wanted, step, modules_per_socket()});
    while (!walk.done() && vek_db_result_step(result) == pwrmgt::db::kRowReady) {
        walk.take(read_row(result));
    }
    walk.finish();
    if (count != nullptr) *count = walk.reached();
    return 1;
}
