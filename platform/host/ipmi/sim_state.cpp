// SPDX-License-Identifier: Apache-2.0
// The state as JSON. Every number is checked against its field when it is read back: the file may
// have been edited or be somebody else's.
#include "sim_state.h"

#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace pwrmgt::ipmi::sim {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFormat = "vekdb-ipmi-sim";
constexpr int kVersion = 1;

template <class Number>
Number number(const Json& value) {
    if (!value.is_number_integer()) throw std::invalid_argument("not a whole number");
    const bool too_large =
        value.is_number_unsigned() &&
        value.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
    if (too_large || (!value.is_number_unsigned() &&
                      value.get<std::int64_t>() <
                          static_cast<std::int64_t>(std::numeric_limits<Number>::min()))) {
        throw std::out_of_range("too wide for its field");
    }
    return value.get<Number>();
}

template <class Number>
Number number(const Json& object, const char* key) {
    return number<Number>(object.at(key));
}

const Json& list(const Json& object, const char* key, std::size_t max) {
    const Json& found = object.at(key);
    if (!found.is_array() || found.size() > max) throw std::invalid_argument("not such a list");
    return found;
}

template <std::size_t Size>
std::array<std::uint16_t, Size> watts(const Json& object, const char* key) {
    const Json& found = list(object, key, Size);
    std::array<std::uint16_t, Size> values{};
    for (std::size_t at = 0; at < Size; ++at)
        values[at] = number<std::uint16_t>(found.at(at));
    return values;
}

Json to_json(const Cap& cap) {
    return {{"enable", cap.enable}, {"mode", cap.mode}, {"value_w", cap.value_w}};
}

Cap cap_from(const Json& json) {
    return {number<std::uint8_t>(json, "enable"), number<std::uint8_t>(json, "mode"),
            number<std::uint16_t>(json, "value_w")};
}

Json to_json(const AuditEntry& entry) {
    Json json = {{"time_s", entry.time_s}};
    json["name"] = entry.requester == Requester::named ? Json(entry.name) : Json(nullptr);
    json["name_left_out"] = entry.requester == Requester::name_left_out;
    json["asked"] = to_json(entry.asked);
    json["status"] = entry.status;
    return json;
}

AuditEntry audit_from(const Json& json) {
    AuditEntry entry;
    entry.time_s = number<std::int64_t>(json, "time_s");
    if (json.at("name_left_out").get<bool>()) entry.requester = Requester::name_left_out;
    if (!json.at("name").is_null()) {
        entry.requester = Requester::named;
        entry.name = json.at("name").get<std::string>();
    }
    entry.asked = cap_from(json.at("asked"));
    entry.status = number<std::uint8_t>(json, "status");
    return entry;
}

Json to_json(const Gpu& gpu) {
    return {{"cap_w", gpu.cap_w}, {"byte_cap", gpu.byte_cap}, {"draw_w", gpu.draw_w}};
}

Gpu gpu_from(const Json& json) {
    return {number<std::uint16_t>(json, "cap_w"), number<std::uint8_t>(json, "byte_cap"),
            number<std::uint16_t>(json, "draw_w")};
}

Json to_json(const OpenFile& file) {
    return {{"handle", file.handle}, {"name", file.name}};
}

OpenFile file_from(const Json& json) {
    return {number<std::uint32_t>(json, "handle"), json.at("name").get<std::string>()};
}

Json to_json(const Fault& fault) {
    Json json = {{"command", fault.command}};
    json["operation"] = fault.operation ? Json(*fault.operation) : Json(nullptr);
    json["kind"] = kind_text(fault);
    json["times"] = fault.times;
    return json;
}

Fault fault_from(const Json& json) {
    Fault fault;
    fault.command = number<std::uint8_t>(json, "command");
    const Json& operation = json.at("operation");
    if (!operation.is_null()) fault.operation = number<std::uint8_t>(operation);
    if (!set_kind(fault, json.at("kind").get<std::string>())) {
        throw std::invalid_argument("no such kind of fault");
    }
    fault.times = number<std::uint32_t>(json, "times");
    return fault;
}

template <class Record>
Json list_of(const std::vector<Record>& records) {
    Json json = Json::array();
    for (const Record& record : records)
        json.push_back(to_json(record));
    return json;
}

template <class Record>
std::vector<Record> records_of(const Json& found, Record (*record_from)(const Json&)) {
    std::vector<Record> records;
    for (const Json& json : found)
        records.push_back(record_from(json));
    return records;
}

State state_from(const Json& json) {
    State state;
    state.cap = cap_from(json.at("cap"));
    state.cap_range = {number<std::uint16_t>(json.at("cap_range"), "min_w"),
                       number<std::uint16_t>(json.at("cap_range"), "max_w")};
    state.audit = records_of(list(json, "audit", kMaxAuditEntries), audit_from);
    state.gpus = records_of(list(json, "gpus", kMaxGpus), gpu_from);
    state.slot_w = watts<kSlotDevices>(json, "slot_w");
    state.zero_output = number<std::uint8_t>(json, "zero_output");
    state.cpus = number<std::uint8_t>(json.at("cpus"), "count");
    if (state.cpus > kMaxCpus) throw std::out_of_range("more processors than places");
    state.cpu_cap_w = watts<kMaxCpus>(json.at("cpus"), "cap_w");
    const Json& store = json.at("store");
    state.next_handle = number<std::uint32_t>(store, "next_handle");
    state.open_files = records_of(list(store, "open", kMaxOpenFiles), file_from);
    state.faults = records_of(list(json, "faults", kMaxFaults), fault_from);
    return state;
}

}  // namespace

std::string encoded(const State& state) {
    Json json = {{"format", kFormat}, {"version", kVersion}};
    json["cap"] = to_json(state.cap);
    json["cap_range"] = {{"min_w", state.cap_range.min_w}, {"max_w", state.cap_range.max_w}};
    json["audit"] = list_of(state.audit);
    json["gpus"] = list_of(state.gpus);
    json["slot_w"] = state.slot_w;
    json["zero_output"] = state.zero_output;
    json["cpus"] = {{"count", state.cpus}, {"cap_w", state.cpu_cap_w}};
    json["store"] = {{"next_handle", state.next_handle}, {"open", list_of(state.open_files)}};
    json["faults"] = list_of(state.faults);
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}

Text decode(std::string_view text, State& state) {
    try {
        const Json json = Json::parse(text);
        if (json.at("format") != kFormat) return Text::damaged;
        if (number<int>(json, "version") > kVersion) return Text::newer;
        state = state_from(json);
        return Text::whole;
    } catch (const std::exception&) {  // whatever is wrong with it, it is not what we wrote
        return Text::damaged;
    }
}

}  // namespace pwrmgt::ipmi::sim
