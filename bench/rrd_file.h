// SPDX-License-Identifier: Apache-2.0
// The same day in an RRDtool file of 24 sources: what the field's usual round-robin store costs.
#pragma once

#include <string>

#include "day.h"
#include "fold.h"

namespace pwrmgt::bench {

class RrdFile {
public:
    // Makes the file: averages, maxima and minima of 30 seconds and of 12 minutes, a day of each.
    // Throws std::runtime_error.
    RrdFile(std::string path, std::int32_t start_s);

    // The text of an update, made beforehand: only the update itself is compared. Updates come in
    // the order of their times.
    static std::string update_text(const Row& row);
    void update(const std::string& text) const;

    // The 30-second averages behind `from_s` up to `to_s`, fetched and folded.
    void query(std::int32_t from_s, std::int32_t to_s, Entries& entries) const;

private:
    std::string path_;
};

}  // namespace pwrmgt::bench
