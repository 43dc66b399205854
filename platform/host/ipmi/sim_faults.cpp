// SPDX-License-Identifier: Apache-2.0
#include "sim_faults.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ctime>

#include "completion.h"

namespace pwrmgt::ipmi::sim {
namespace {

// The group-extension network function, whose data begin with an enterprise number.
constexpr std::uint8_t kGroupNetfn = 0x2E;
constexpr std::size_t kEnterpriseBytes = 3;

constexpr std::uint8_t kGetCap = 0x03;
constexpr std::size_t kGetCapBytes = 6;
constexpr std::uint16_t kLate_ms = 50;
constexpr std::uint8_t kFilling = 0xA5;

enum class Argument { none, optional, required };

struct Word {
    std::string_view text;
    Argument argument;
    std::uint16_t min;
    std::uint16_t max;
};

// One row per FaultKind, in its order.
// clang-format off
constexpr std::array<Word, 8> kWords{{
    {"busy",       Argument::none,     0, 0},
    {"no-answer",  Argument::none,     0, 0},
    {"late",       Argument::optional, 1, 5000},
    {"short",      Argument::optional, 1, kMaxResponseBytes},
    {"long",       Argument::optional, 1, kMaxResponseBytes},
    {"garbage",    Argument::none,     0, 0},
    {"completion", Argument::required, 1, 0xFF},
    {"status",     Argument::required, 0, 0xFF},
}};
// clang-format on

const Word& word_of(FaultKind kind) {
    return kWords[static_cast<std::size_t>(kind)];
}

bool hexadecimal(FaultKind kind) {
    return kind == FaultKind::completion || kind == FaultKind::status;
}

std::optional<std::uint16_t> number(std::string_view text, const Word& word) {
    const bool hex = text.starts_with("0x");
    if (hex) text.remove_prefix(2);
    std::uint16_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, hex ? 16 : 10);
    if (error != std::errc{} || stop != end || value < word.min || value > word.max) return {};
    return value;
}

bool befalls(const Fault& fault, const Request& request) {
    if (fault.command != request.command()) return false;
    return !fault.operation || operation_of(request) == fault.operation;
}

void wait_ms(std::uint16_t delay_ms) {
    timespec left{delay_ms / 1000, (delay_ms % 1000) * 1'000'000L};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

void stretch(Response& response, std::size_t length) {
    while (response.length() < std::min(length, kMaxResponseBytes))
        response.u8(kFilling);
}

// The pattern depends on the place alone, so that a test knows what it meets.
void spoil(Response& response) {
    response.overwrite(0, kSuccess);
    for (std::size_t at = 1; at < response.length(); ++at)
        response.overwrite(at, static_cast<std::uint8_t>(kFilling ^ at));
}

void answer_status(std::uint8_t status, const Request& request, Response& response) {
    response.u8(kSuccess);
    response.u8(status);
    while (operation_of(request) == kGetCap && response.length() < kGetCapBytes)
        response.u8(0);
}

}  // namespace

bool set_kind(Fault& fault, std::string_view text) {
    const std::size_t colon = text.find(':');
    const auto word = std::find_if(kWords.begin(), kWords.end(), [&](const Word& row) {
        return row.text == text.substr(0, colon);
    });
    if (word == kWords.end()) return false;
    std::optional<std::uint16_t> argument;
    if (colon != std::string_view::npos) {
        if (word->argument == Argument::none) return false;
        argument = number(text.substr(colon + 1), *word);
        if (!argument) return false;
    } else if (word->argument == Argument::required) {
        return false;
    }
    fault.kind = static_cast<FaultKind>(word - kWords.begin());
    fault.argument = argument;
    return true;
}

std::string kind_text(const Fault& fault) {
    std::string text{word_of(fault.kind).text};
    if (!fault.argument) return text;
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), hexadecimal(fault.kind) ? ":0x%02X" : ":%u",
                  unsigned{*fault.argument});
    return text + digits.data();
}

std::string kind_words() {
    std::string words;
    for (const Word& word : kWords) {
        words += (words.empty() ? "" : " ") + std::string{word.text};
        if (word.argument == Argument::required) words += ":N";
        if (word.argument == Argument::optional) words += "[:N]";
    }
    return words;
}

std::optional<std::uint8_t> operation_of(const Request& request) {
    const std::size_t at = request.netfn() == kGroupNetfn ? kEnterpriseBytes : 0;
    const auto payload = request.payload();
    if (payload.size() <= at) return {};
    return payload[at];
}

bool waits_for(const std::vector<Fault>& faults, const Request& request) {
    return std::any_of(faults.begin(), faults.end(),
                       [&](const Fault& fault) { return befalls(fault, request); });
}

std::optional<Fault> take(std::vector<Fault>& faults, const Request& request) {
    const auto found = std::find_if(faults.begin(), faults.end(),
                                    [&](const Fault& fault) { return befalls(fault, request); });
    if (found == faults.end()) return {};
    const Fault taken = *found;
    if (taken.times == 1) {
        faults.erase(found);
    } else if (taken.times > 1) {
        --found->times;
    }
    return taken;
}

bool carries_out(const Fault& fault) {
    switch (fault.kind) {
        case FaultKind::busy:
        case FaultKind::no_answer:
        case FaultKind::completion:
        case FaultKind::status:
            return false;
        default:
            return true;
    }
}

Send befall(const Fault& fault, const Request& request, Response& response) {
    switch (fault.kind) {
        case FaultKind::busy:
            response.u8(kBusy);
            return Send::done;
        case FaultKind::no_answer:
            return Send::no_answer;
        case FaultKind::late:
            wait_ms(fault.argument.value_or(kLate_ms));
            return Send::timed_out;
        case FaultKind::short_reply:
            // A completion code remains: less would be no answer.
            response.cut_to(
                fault.argument.value_or(response.length() > 1 ? response.length() - 1 : 1));
            return Send::done;
        case FaultKind::long_reply:
            stretch(response, fault.argument.value_or(response.length() + 1));
            return Send::done;
        case FaultKind::garbage:
            spoil(response);
            return Send::done;
        case FaultKind::completion:
            response.u8(static_cast<std::uint8_t>(fault.argument.value_or(kUnspecified)));
            return Send::done;
        case FaultKind::status:
            answer_status(static_cast<std::uint8_t>(fault.argument.value_or(1)), request, response);
            return Send::done;
    }
    return Send::no_answer;
}

}  // namespace pwrmgt::ipmi::sim
