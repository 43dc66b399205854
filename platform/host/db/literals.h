// SPDX-License-Identifier: Apache-2.0
// Takes the integers out of a statement, so that texts that differ only in times and slot numbers
// share one prepared statement.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pwrmgt::vekdb {

struct Template {
    std::string text;                  // the statement with `?` for every integer taken out
    std::vector<std::int64_t> values;  // those integers, in order
};

// The statement as it stands, without values, when taking them out could change its meaning:
// anything but a select or a change of rows, and texts that bring parameters of their own. Ordinals
// behind GROUP BY and ORDER BY stay.
Template take_literals(std::string_view sql);

// The same for a select or a change of rows, from `start` on: what stands before is known to hold
// nothing to take out.
Template take_literals_from(std::string_view sql, std::size_t start);

// The first word of a statement, in lower case, or "" when it starts with none.
std::string first_word(std::string_view sql);

}  // namespace pwrmgt::vekdb
