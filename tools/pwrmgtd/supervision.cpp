// SPDX-License-Identifier: Apache-2.0
#include "supervision.h"

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "measured_trace.h"
#include "source_kernel.h"

namespace pwrmgt::pwrmgtd {
namespace {

std::vector<std::string> split(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream text(list);
    for (std::string name; std::getline(text, name, ',');) {
        if (!name.empty()) names.push_back(name);
    }
    return names;
}

bool same(const BaySetup& a, const BaySetup& b) {
    return a.count == b.count && a.input_label_w == b.input_label_w &&
           a.output_label_w == b.output_label_w;
}

}  // namespace

std::unique_ptr<Source> make_source(const Options& options, Log& log) {
    if (options.source == SourceKind::firmware) return std::make_unique<FirmwareSource>(log);
    if (options.source == SourceKind::kernel) {
        return std::make_unique<KernelSource>(
            KernelSource::Place{options.kernel_root, split(options.supply_devices)}, monotonic_us,
            log);
    }
    std::optional<trace::Trace> trace = load_trace(options.trace_file, log);
    if (!trace) return nullptr;
    return std::make_unique<TraceSource>(std::move(*trace), options.trace_file);
}

BaySetup bay_setup(const Options& options, std::size_t supplies) {
    return {bay_count(options.bays, supplies), options.psu_input_label_w, options.psu_label_w};
}

Supervision::Supervision(const Options& options, std::unique_ptr<Source> source,
                         DatabaseTables& tables, Log& log, Reread reread)
    : options_(options),
      source_(std::move(source)),
      tables_(tables),
      log_(log),
      reread_(std::move(reread)) {}

void Supervision::started() {
    manager_.ready("recording from " + source_->name());
}

void Supervision::recorded(const std::string& how_far) {
    manager_.status("recording from " + source_->name() + ", " + how_far);
}

void Supervision::reload(Schedule& schedule) {
    manager_.reloading();
    const Parsed parsed = reread_();
    if (!parsed.options) log_.error(parsed.text);
    if (parsed.options && apply(*parsed.options, schedule)) {
        log_.notice("configuration read again: recording from " + source_->name());
    } else {
        log_.error("the configuration stays as it was");
    }
    manager_.ready("recording from " + source_->name());
}

bool Supervision::apply(const Options& options, Schedule& schedule) {
    std::unique_ptr<Source> source = make_source(options, log_);
    if (!source) return false;
    const BaySetup before = bay_setup(options_, source_->supplies());
    const BaySetup bays = bay_setup(options, source->supplies());
    if (!same(before, bays)) tables_.start_bays(bays);
    source_ = std::move(source);
    options_ = options;
    schedule.use(*source_, options_.rhythm);
    return true;
}

}  // namespace pwrmgt::pwrmgtd
