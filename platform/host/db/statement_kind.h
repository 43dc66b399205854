// SPDX-License-Identifier: Apache-2.0
// What the first words of a statement tell an engine.
#pragma once

#include <string>
#include <string_view>

namespace pwrmgt::vekdb {

// "TRUNCATE TABLE x" as a deletion; the empty text when it is no truncation of a known table.
std::string as_delete(std::string_view sql);

// Whether a statement that starts with `word` leaves nothing on its connection, as settings and
// attached files do, that would reach the next user.
bool leaves_no_trace(std::string_view word);

}  // namespace pwrmgt::vekdb
