// SPDX-License-Identifier: Apache-2.0
#include "source.h"
#include "supply_bays.h"

namespace pwrmgt::pwrmgtd {
namespace {

SupplyState state_of(const trace::SupplyState& row) {
    SupplyState state{row.present,     row.ac_lost,    row.fault,
                      row.input_class, row.label_in_w, row.label_out_w};
    if (!row.input_class && row.input_v) state.voltage_class = voltage_class_of(*row.input_v);
    return state;
}

}  // namespace

Reading reading_of(const trace::Reading* row) {
    if (row == nullptr) return {};
    Reading reading;
    reading.sys_ac_w = row->system_ac_w;
    reading.sys_dc_w = row->system_dc_w;
    reading.cpu_w = row->cpu_w;
    reading.mem_w = row->mem_w;
    for (std::size_t i = 0; i < kSupplies; ++i) {
        reading.supplies[i] = {row->supplies[i].ac_in_w, row->supplies[i].dc_out_w};
        reading.supply_states[i] = state_of(row->supply_states[i]);
    }
    reading.sys_pct = row->sys_pct;
    reading.cpu_pct = row->cpu_pct;
    reading.mem_pct = row->mem_pct;
    reading.io_pct = row->io_pct;
    reading.ambient_c = row->ambient_c;
    reading.exhaust_c = row->exhaust_c;
    reading.each_cpu_c = row->cpu_c;
    return reading;
}

std::optional<trace::Trace> load_trace(const std::string& file, Log& log) {
    trace::LoadResult loaded = trace::load(file);
    if (!loaded.trace) {
        log.error(loaded.error);
        return std::nullopt;
    }
    if (loaded.trace->ignored_values() > 0) {
        log.warning(file + ": " + std::to_string(loaded.trace->ignored_values()) +
                    " values out of range count as missing");
    }
    return std::move(loaded.trace);
}

Reading TraceSource::read(std::int64_t now_s) {
    return reading_of(trace_.reading_at(trace_.live_second(now_s)));
}

std::string TraceSource::name() const {
    return "trace " + path_;
}

}  // namespace pwrmgt::pwrmgtd
