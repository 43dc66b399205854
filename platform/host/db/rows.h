// SPDX-License-Identifier: Apache-2.0
// The rows of one result, read once into a single block of 32-bit cells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace pwrmgt::vekdb {

class Rows {
public:
    // Forgets what was read, and sets the width of a row.
    void start(std::size_t columns) noexcept;

    // Room for one more row: `columns` cells to fill. Throws std::bad_alloc.
    std::uint32_t* add_row();

    // Marks a cell of the row added last as holding no value.
    void mark_empty(std::size_t column);

    std::size_t count() const noexcept { return count_; }
    std::size_t columns() const noexcept { return columns_; }

    // Goes to the next row; false past the last one, where no row is current any more.
    bool next() noexcept {
        if (next_ < count_) {
            current_ = cells_.get() + next_++ * columns_;
            return true;
        }
        current_ = nullptr;
        return false;
    }

    // A cell of the current row; null without such a cell, or when it holds no value.
    const std::uint32_t* cell(int column) const noexcept {
        // A negative column is a huge one here.
        const auto at = static_cast<std::size_t>(column);
        if (current_ == nullptr || at >= columns_) return nullptr;
        if (!empty_.empty()) [[unlikely]]
            return sparse_cell(at);
        return current_ + at;
    }

private:
    const std::uint32_t* sparse_cell(std::size_t column) const noexcept;

    std::size_t columns_ = 0;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
    std::size_t next_ = 0;
    const std::uint32_t* current_ = nullptr;
    std::unique_ptr<std::uint32_t[]> cells_;
    std::vector<std::size_t> empty_;  // places of cells without a value, ascending; mostly none
};

}  // namespace pwrmgt::vekdb
