// SPDX-License-Identifier: Apache-2.0
// The power cap, and the audit log of who asked for it.
#include "sim_operations.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr std::uint8_t kModes = 2;
constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kOutsideTheRange = 1;

// Places in the data of a set request.
constexpr std::size_t kEnableAt = 1;
constexpr std::size_t kValueAt = 2;
constexpr std::size_t kModeAt = 4;
constexpr std::size_t kNameFlagAt = 5;
constexpr std::size_t kNameAt = 6;

// False when the flag and the bytes that follow contradict each other.
bool read_requester(std::span<const std::uint8_t> payload, AuditEntry& entry) {
    if (payload.size() == kNameFlagAt) return true;
    const auto name = payload.subspan(kNameAt);
    if (payload[kNameFlagAt] == 0) {
        entry.requester = Requester::name_left_out;
        return name.empty();
    }
    entry.requester = Requester::named;
    entry.name.assign(name.begin(), name.end());
    return payload[kNameFlagAt] == 1;
}

void keep(State& state, AuditEntry entry) {
    if (state.audit.size() >= kMaxAuditEntries) state.audit.erase(state.audit.begin());
    state.audit.push_back(std::move(entry));
}

}  // namespace

// What no firmware could mean is a completion code and leaves no trace; a value that only this
// machine cannot keep to is a status, and the attempt is on record.
void set_cap(const Call& call, State& state, Response& response) {
    const auto payload = call.request.payload();
    AuditEntry entry;
    entry.time_s = call.now;
    entry.asked = {payload[kEnableAt], payload[kModeAt], le16_at(payload, kValueAt)};
    if (entry.asked.enable > 1 || !read_requester(payload, entry)) {
        return response.u8(kInvalidField);
    }
    if (entry.asked.mode >= kModes) return response.u8(kOutOfRange);

    const bool within = entry.asked.value_w >= state.cap_range.min_w &&
                        entry.asked.value_w <= state.cap_range.max_w;
    entry.status = entry.asked.enable == 0 || within ? kAccepted : kOutsideTheRange;
    if (entry.status == kAccepted) state.cap = entry.asked;
    response.u8(kSuccess);
    response.u8(entry.status);
    keep(state, std::move(entry));
}

void get_cap(const Call& call, const State& state, Response& response) {
    if (!all_zero(call.request.payload().subspan(1))) return response.u8(kInvalidField);
    response.u8(kSuccess);
    response.u8(kAccepted);
    response.u8(state.cap.enable);
    response.le16(state.cap.value_w);
    response.u8(state.cap.mode);
}

}  // namespace pwrmgt::ipmi::sim
