// SPDX-License-Identifier: Apache-2.0
// The column/value pairs of a row to be written.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pwrmgt::vekdb {

class Content {
public:
    void clear() noexcept;

    // False for a name that no table has. Of two puts of one column the last one holds.
    bool put(std::string_view column, std::int64_t value);

    bool empty() const noexcept { return columns_.empty(); }
    std::span<const std::int64_t> values() const noexcept { return values_; }

    std::string insert_text(const char* table) const;
    std::string update_text(const char* table) const;

private:
    std::vector<std::uint16_t> columns_;
    std::vector<std::int64_t> values_;
};

}  // namespace pwrmgt::vekdb
