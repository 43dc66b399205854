// SPDX-License-Identifier: Apache-2.0
// Where readings come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "log.h"
#include "measured_trace.h"
#include "reading.h"

namespace pwrmgt::pwrmgtd {

class Source {
public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    // The readings of second `now_s`; all missing when the source has none.
    virtual Reading read(std::int64_t now_s) = 0;

    // What it is, in words.
    virtual std::string name() const = 0;

    // The highest supply it can tell of; 0 when it tells of none.
    virtual std::size_t supplies() const { return 0; }
};

// A row of a measured trace; none is a moment without readings.
Reading reading_of(const trace::Reading* row);

// The trace in a file; none, and the reason in the log, when it cannot be read.
std::optional<trace::Trace> load_trace(const std::string& file, Log& log);

// A trace file that plays over and over in wall-clock time.
class TraceSource final : public Source {
public:
    TraceSource(trace::Trace trace, std::string path)
        : trace_(std::move(trace)), path_(std::move(path)) {}

    Reading read(std::int64_t now_s) override;
    std::string name() const override;
    std::size_t supplies() const override { return trace_.supply_count(); }

private:
    trace::Trace trace_;
    std::string path_;
};

// The platform firmware, asked over IPMI. It tells of the system, processors and memory, not of
// single supplies.
class FirmwareSource final : public Source {
public:
    explicit FirmwareSource(Log& log) : log_(log) {}

    Reading read(std::int64_t now_s) override;
    std::string name() const override { return "the firmware"; }

private:
    Log& log_;
};

}  // namespace pwrmgt::pwrmgtd
