// SPDX-License-Identifier: Apache-2.0
// The daemon's side of a running schedule: the service manager hears how it goes, and a reload puts
// a new source and rhythm in place.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "log.h"
#include "options.h"
#include "schedule.h"
#include "service_manager.h"
#include "source.h"
#include "tables.h"

namespace pwrmgt::pwrmgtd {

// Reads command line, environment and configuration file once more.
using Reread = std::function<Parsed()>;

// The source that the options ask for; none, and the reason in the log, when it cannot be had.
std::unique_ptr<Source> make_source(const Options& options, Log& log);

BaySetup bay_setup(const Options& options, std::size_t supplies);

class Supervision final : public Supervisor {
public:
    Supervision(const Options& options, std::unique_ptr<Source> source, DatabaseTables& tables,
                Log& log, Reread reread);

    Source& source() { return *source_; }

    void started() override;
    void goes_on() override { manager_.alive(); }
    void recorded(const std::string& how_far) override;
    // What cannot be read leaves everything as it was.
    void reload(Schedule& schedule) override;
    void stopping() override { manager_.stopping(); }

private:
    bool apply(const Options& options, Schedule& schedule);

    Options options_;
    std::unique_ptr<Source> source_;
    DatabaseTables& tables_;
    Log& log_;
    Reread reread_;
    ServiceManager manager_;
};

}  // namespace pwrmgt::pwrmgtd
