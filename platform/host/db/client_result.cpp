// SPDX-License-Identifier: Apache-2.0
// Stepping through results and reading their cells. These functions meet neither a lock nor the
// system, so they need no guard against forks and cancellation; only freeing does.
#include <limits>
#include <memory>

#include "fork_gate.h"
#include "guarded.h"
#include "handles.h"
#include "rows.h"
#include "vekdb_client.h"

namespace pwrmgt::vekdb {

namespace {

constexpr int kRow = 9;
constexpr int kNoMoreRows = 10;
constexpr int kBadHandle = 1;

// Asked once per cell: kept in line.
[[gnu::always_inline]] inline Rows* rows_of(std::uint32_t result) noexcept {
    return static_cast<Rows*>(result_handles.find(result));
}

template <class Int>
int read_cell(std::uint32_t result, int column, Int* out) noexcept {
    const Rows* rows = rows_of(result);
    if (rows == nullptr || out == nullptr) return code(Outcome::bad_argument);
    const std::uint32_t* cell = rows->cell(column);
    if (cell == nullptr) return code(Outcome::failed);
    *out = static_cast<Int>(*cell);
    return 0;
}

}  // namespace

// The list of exports can only pick from what is not hidden.
#pragma GCC visibility push(default)
extern "C" {

int vek_db_result_step(uint32_t result) {
    Rows* rows = rows_of(result);
    if (rows == nullptr) return kBadHandle;
    return rows->next() ? kRow : kNoMoreRows;
}

int vek_db_result_row_count(uint32_t result) {
    const Rows* rows = rows_of(result);
    if (rows == nullptr) return -1;
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    return rows->count() > kMost ? std::numeric_limits<int>::max()
                                 : static_cast<int>(rows->count());
}

int vek_db_result_column_int(uint32_t result, int column, int32_t* out) {
    return read_cell(result, column, out);
}

int vek_db_result_column_uint(uint32_t result, int column, uint32_t* out) {
    return read_cell(result, column, out);
}

int vek_db_result_column_short_int(uint32_t result, int column, int16_t* out) {
    return read_cell(result, column, out);
}

int vek_db_result_column_short_uint(uint32_t result, int column, uint16_t* out) {
    return read_cell(result, column, out);
}

int vek_db_result_column_uchar(uint32_t result, int column, uint8_t* out) {
    return read_cell(result, column, out);
}

void vek_db_free_result(uint32_t result) {
    const Operation operation;
    const std::unique_ptr<Rows> rows{static_cast<Rows*>(result_handles.take(result))};
}

}  // extern "C"
#pragma GCC visibility pop

}  // namespace pwrmgt::vekdb
