// SPDX-License-Identifier: Apache-2.0
// Growth of the block of cells, and the rare cells without a value.
#include "rows.h"

#include <algorithm>

namespace pwrmgt::vekdb {

namespace {

constexpr std::size_t kFirstRows = 64;

}  // namespace

void Rows::start(std::size_t columns) noexcept {
    columns_ = columns;
    count_ = capacity_ = next_ = 0;
    current_ = nullptr;
    cells_.reset();
    empty_.clear();
}

std::uint32_t* Rows::add_row() {
    if (count_ == capacity_) {
        // A one-row table is asked for most often: start with one, then as a history does.
        const std::size_t capacity = capacity_ == 0 ? 1 : std::max(kFirstRows, capacity_ * 2);
        auto grown = std::make_unique_for_overwrite<std::uint32_t[]>(capacity * columns_);
        std::copy_n(cells_.get(), count_ * columns_, grown.get());
        cells_ = std::move(grown);
        capacity_ = capacity;
    }
    return cells_.get() + count_++ * columns_;
}

void Rows::mark_empty(std::size_t column) {
    empty_.push_back((count_ - 1) * columns_ + column);
}

const std::uint32_t* Rows::sparse_cell(std::size_t column) const noexcept {
    const auto place = static_cast<std::size_t>(current_ - cells_.get()) + column;
    return std::binary_search(empty_.begin(), empty_.end(), place) ? nullptr : current_ + column;
}

}  // namespace pwrmgt::vekdb
