// SPDX-License-Identifier: Apache-2.0
// The pieces that every document is made of: aligned tables, times, spans, and JSON values.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "missing.h"

namespace pwrmgt::pwrmgtctl {

// Keys stay in the order in which they were added: a document reads from the general to the
// particular.
using Json = nlohmann::ordered_json;

enum class Zone { utc, local };

// Rows of text in columns: the first one aligned left, the others right, two spaces between them.
class Table {
public:
    explicit Table(std::vector<std::string> headers);

    void add(std::vector<std::string> cells);
    [[nodiscard]] std::string text() const;

private:
    std::vector<std::vector<std::string>> lines_;
};

// A number, or "-" for a missing one.
std::string cell(const Value& value);

// A number, or null for a missing one.
Json json_value(const Value& value);

// ISO 8601 to the second: "2026-11-20T20:25:00Z", or with the local zone's offset
// "2026-11-20T21:25:00+01:00".
std::string time_text(int64_t time_s, Zone zone);

// "Time (UTC)" or "Time (local)".
std::string time_header(Zone zone);

// A span in its largest whole unit: "30 s", "12 min", "24 h".
std::string span_text(uint32_t span_s);

// A document as it is written: indented by two, or all of it a line; a newline at its end.
enum class JsonForm { indented, line };
std::string json_text(const Json& document, JsonForm form);

// The line at the end that --timing asks for.
std::string timing_text(double query_ms);

// Milliseconds to the microsecond, so that a JSON document does not end in rounding noise.
double rounded_ms(double query_ms);

}  // namespace pwrmgt::pwrmgtctl
