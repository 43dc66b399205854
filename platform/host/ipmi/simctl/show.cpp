// SPDX-License-Identifier: Apache-2.0
// The state in words, and as one JSON document.
#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "ipmi/sim_state_file.h"
#include "simctl.h"

namespace pwrmgt::ipmi::sim::ctl {
namespace {

using Json = nlohmann::ordered_json;

std::string byte_text(std::uint8_t byte) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "0x%02X", unsigned{byte});
    return text.data();
}

std::string watts_text(std::uint16_t watts) {
    return watts == kNoWatts ? "-" : std::to_string(watts) + " W";
}

Json watts_json(std::uint16_t watts) {
    return watts == kNoWatts ? Json(nullptr) : Json(watts);
}

// In quotation marks and ASCII: a name comes from whoever asked, and must not steer a terminal.
std::string quoted(const std::string& name) {
    return Json(name).dump(-1, ' ', true, Json::error_handler_t::replace);
}

std::string document(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string time_text(std::int64_t time_s) {
    const auto time = static_cast<std::time_t>(time_s);
    std::tm parts{};
    std::array<char, 32> text{};
    if (gmtime_r(&time, &parts) == nullptr) return std::to_string(time_s);
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

std::string cap_text(const Cap& cap) {
    return std::string{cap.enable != 0 ? "on" : "off"} + ", mode " + std::to_string(cap.mode) +
           ", " + watts_text(cap.value_w);
}

Json cap_json(const Cap& cap) {
    return {{"on", cap.enable != 0}, {"mode", cap.mode}, {"value_w", watts_json(cap.value_w)}};
}

template <class Values>
std::string list_text(const Values& values, std::size_t count) {
    std::string text;
    for (std::size_t at = 0; at < count; ++at)
        text += (at == 0 ? "" : ", ") + watts_text(values[at]);
    return text;
}

template <class Values>
Json list_json(const Values& values, std::size_t count) {
    Json list = Json::array();
    for (std::size_t at = 0; at < count; ++at)
        list.push_back(watts_json(values[at]));
    return list;
}

std::uint16_t cap_of(const Gpu& gpu) {
    return gpu.cap_w == 0 ? kNoWatts : gpu.cap_w;
}

std::string fault_text(const Fault& fault) {
    return "  command " + byte_text(fault.command) + ", " +
           (fault.operation ? "operation " + byte_text(*fault.operation) : "every operation") +
           ": " + kind_text(fault) + ", " +
           (fault.times == 0 ? "always" : std::to_string(fault.times) + " times") + '\n';
}

Json fault_json(const Fault& fault) {
    Json json = {{"command", fault.command}};
    json["operation"] = fault.operation ? Json(*fault.operation) : Json(nullptr);
    json["kind"] = kind_text(fault);
    json["times"] = fault.times == 0 ? Json(nullptr) : Json(fault.times);
    return json;
}

std::string status_text(const State& state) {
    std::string text = "State         " + state_path() + '\n';
    text += "Cap           " + cap_text(state.cap) + '\n';
    text += "Cap range     " + std::to_string(state.cap_range.min_w) + " to " +
            std::to_string(state.cap_range.max_w) + " W\n";
    text += "Zero output   mode " + std::to_string(state.zero_output) + '\n';
    text += "Processors    " + std::to_string(state.cpus) + ", caps " +
            list_text(state.cpu_cap_w, state.cpus) + '\n';
    text += "Slot devices  " + list_text(state.slot_w, state.slot_w.size()) + '\n';
    text += "GPUs          " + std::to_string(state.gpus.size()) + '\n';
    for (std::size_t at = 0; at < state.gpus.size(); ++at) {
        const Gpu& gpu = state.gpus[at];
        text += "  " + std::to_string(at) + ": cap " + watts_text(cap_of(gpu)) + ", byte cap " +
                std::to_string(gpu.byte_cap) + ", draws " + watts_text(gpu.draw_w) + '\n';
    }
    text += "Open files    " + std::to_string(state.open_files.size()) + '\n';
    text += "Audit log     " + std::to_string(state.audit.size()) + " requests\n";
    text += "Faults        " + std::to_string(state.faults.size()) + '\n';
    for (const Fault& fault : state.faults)
        text += fault_text(fault);
    return text;
}

Json gpu_json(const Gpu& gpu) {
    return {{"cap_w", watts_json(cap_of(gpu))},
            {"byte_cap", gpu.byte_cap},
            {"draw_w", watts_json(gpu.draw_w)}};
}

Json status_json(const State& state) {
    Json json = {{"schema", "vekdb-simctl.status/1"}, {"state", state_path()}};
    json["cap"] = cap_json(state.cap);
    json["cap_range"] = {{"min_w", state.cap_range.min_w}, {"max_w", state.cap_range.max_w}};
    json["zero_output_mode"] = state.zero_output;
    json["processors"] = {{"count", state.cpus}, {"cap_w", list_json(state.cpu_cap_w, state.cpus)}};
    json["slot_w"] = list_json(state.slot_w, state.slot_w.size());
    json["gpus"] = Json::array();
    for (const Gpu& gpu : state.gpus)
        json["gpus"].push_back(gpu_json(gpu));
    json["open_files"] = Json::array();
    for (const OpenFile& file : state.open_files)
        json["open_files"].push_back({{"handle", file.handle}, {"name", file.name}});
    json["audit_requests"] = state.audit.size();
    json["faults"] = Json::array();
    for (const Fault& fault : state.faults)
        json["faults"].push_back(fault_json(fault));
    return json;
}

std::string requester_text(const AuditEntry& entry) {
    if (entry.requester == Requester::named) return quoted(entry.name);
    return entry.requester == Requester::name_left_out ? "name too long" : "not told";
}

std::string audit_text(const State& state) {
    std::string text;
    for (const AuditEntry& entry : state.audit) {
        text +=
            time_text(entry.time_s) + "  " + cap_text(entry.asked) + ", by " +
            requester_text(entry) + ": " +
            (entry.status == 0 ? "accepted" : "refused, status " + std::to_string(entry.status)) +
            '\n';
    }
    return text.empty() ? "Nobody has asked for a cap.\n" : text;
}

Json audit_json(const State& state) {
    Json json = {{"schema", "vekdb-simctl.audit/1"}, {"requests", Json::array()}};
    for (const AuditEntry& entry : state.audit) {
        Json request = {{"time", time_text(entry.time_s)}, {"asked", cap_json(entry.asked)}};
        request["name"] = entry.requester == Requester::named ? Json(entry.name) : Json(nullptr);
        request["name_left_out"] = entry.requester == Requester::name_left_out;
        request["status"] = entry.status;
        json["requests"].push_back(std::move(request));
    }
    return json;
}

Outcome shown(Form form, std::string (*in_words)(const State&), Json (*in_json)(const State&)) {
    State state;
    const Access access = read_state(state);
    if (access.usable != Usable::yes) return {Exit::failure, access.reason};
    return {Exit::ok, form == Form::json ? document(in_json(state)) : in_words(state)};
}

}  // namespace

Outcome show_status(Form form) {
    return shown(form, status_text, status_json);
}

Outcome show_audit(Form form) {
    return shown(form, audit_text, audit_json);
}

}  // namespace pwrmgt::ipmi::sim::ctl
