// SPDX-License-Identifier: Apache-2.0
// Sample rows of the history tables, open results over them, calls in a row, and records as plain
// numbers.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "recorder.h"
#include "vekdb_client.h"
#include "vekdb_pwrmgt.h"

namespace pwrmgt::test {

// Rows of the given values, one per 30 seconds back from `newest`, which comes first.
inline std::vector<Row> rows_back_from(int64_t newest, const std::vector<Row>& values) {
    std::vector<Row> rows;
    for (const Row& value : values) {
        rows.push_back({newest - 30 * static_cast<int64_t>(rows.size())});
        rows.back().insert(rows.back().end(), value.begin(), value.end());
    }
    return rows;
}

// The same values in `count` rows.
inline std::vector<Row> steady_rows(int64_t newest, size_t count, const Row& value) {
    return rows_back_from(newest, std::vector<Row>(count, value));
}

// The reads of a policy row's columns from 0 to `last`: five bytes, then words.
inline std::vector<std::string> policy_cells(int last) {
    std::vector<std::string> reads;
    for (int column = 0; column <= last; ++column) {
        reads.push_back((column < 5 ? "uchar " : "short_uint ") + std::to_string(column));
    }
    return reads;
}

// One list of calls after another.
inline std::vector<std::string> chain(std::initializer_list<std::vector<std::string>> parts) {
    std::vector<std::string> all;
    for (const std::vector<std::string>& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// An open result for a sample reader, handed back at the end of the test. The log starts empty.
class OpenResult {
public:
    explicit OpenResult(Rows rows) {
        platform().answer_rows(std::move(rows));
        vek_db_raw_query(kDb, "", 0, &handle_);
        platform().calls.clear();
    }
    explicit OpenResult(std::vector<Row> rows) : OpenResult(Rows{std::move(rows), 10, {}}) {}
    OpenResult(const OpenResult&) = delete;
    OpenResult& operator=(const OpenResult&) = delete;
    ~OpenResult() {
        if (handle_ != 0) vek_db_free_result(handle_);
    }

    operator uint32_t() const { return handle_; }

private:
    uint32_t handle_ = 0;
};

// Records whose every field holds a value that no test expects, to show what stays untouched.
inline pwrmgt_hist_pwr_sample_t untouched_power() {
    return {7, 7, 7, 7, 7, 7, 7, 7};
}
inline pwrmgt_hist_psu_sample_t untouched_psu() {
    return {7, 7, 7, 7};
}
inline pwrmgt_hist_perf_sample_t untouched_perf() {
    return {7, 7, 7, 7, 7, 7, 7, 7};
}

// A record's fields in their order.
inline Row fields(const pwrmgt_hist_pwr_sample_t& e) {
    return {e.index, e.timestamp, e.avg, e.max, e.min, e.avg2, e.max2, e.min2};
}
inline Row fields(const pwrmgt_hist_psu_sample_t& e) {
    return {e.index, e.timestamp, e.avg_ac, e.avg_dc};
}
inline Row fields(const pwrmgt_hist_perf_sample_t& e) {
    return {e.index, e.timestamp, e.sys_avg, e.sys_max, e.sys_min, e.cpu_avg, e.mem_avg, e.io_avg};
}
inline Row fields(const pwrmgt_realtime_pwr_t& r) {
    return {r.lead0,    r.lead1,   r.sys_ac_w, r.sys_dc_w, r.cpu_dc_w,
            r.mem_dc_w, r.sys_pct, r.cpu_pct,  r.mem_pct,  r.io_pct};
}
inline Row fields(const pwrmgt_power_policy_t& p) {
    return {p.is_blade,    p.redun_mode, p.maxim_status, p.cap_enable,  p.cap_mode,   p.cap_value,
            p.cap_soft_ac, p.cap_min_ac, p.cap_max_ac,   p.cap_soft_dc, p.cap_min_dc, p.cap_max_dc};
}

}  // namespace pwrmgt::test
