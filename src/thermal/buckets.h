// SPDX-License-Identifier: Apache-2.0
// The walk of temperature rows over a grid of indexes: one open bucket, the time its index ends,
// the index.
#pragma once

#include <cstdint>

#include "thermal/sensors.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::thermal {

// Readings of one index that is not closed yet.
class Bucket {
public:
    bool open() const { return readings_ > 0; }
    uint32_t readings() const { return readings_; }
    const Reading& last() const { return last_; }
    void add(const Reading& reading);
    void empty() { readings_ = 0; }

    // Kept: the sum is kept in 16 bits and divided as signed 16-bit values. [SumWrapsIn16Bits]
    pwrmgt_therm_triple_t triple() const;

private:
    Reading last_;
    uint32_t readings_ = 0;
    uint16_t sum_ = 0;
    int16_t max_ = 0;
    int16_t min_ = 0;
};

class IndexWalk {
public:
    struct Grid {
        pwrmgt_therm_sample_t* samples;
        uint32_t count;
        int32_t step;
        int32_t per_socket;
    };

    explicit IndexWalk(const Grid& grid);

    bool done() const { return index_ >= grid_.count; }
    uint32_t reached() const { return index_; }

    // One row, in ascending time.
    void take(const Reading& reading);

    // After the last row: what is open is closed, and the walk goes on to the last index.
    void finish();

private:
    bool has_slot(const Reading& reading);
    void pass_empty(int32_t until);
    void close();
    void advance();

    Grid grid_;
    uint32_t index_ = 0;
    int32_t expected_ = 0;
    Bucket bucket_;
};

}  // namespace pwrmgt::thermal
