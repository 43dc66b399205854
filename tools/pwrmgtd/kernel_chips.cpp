// SPDX-License-Identifier: Apache-2.0
#include "kernel_chips.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string_view>

#include "kernel_files.h"

namespace pwrmgt::pwrmgtd {
namespace {

// Thousandths or millionths as the nearest whole number; nothing outside the range.
template <class Whole>
std::optional<Whole> scaled(const std::optional<std::int64_t>& value, std::int64_t divisor,
                            std::int64_t min, std::int64_t max) {
    if (!value) return std::nullopt;
    const std::int64_t half = *value < 0 ? -divisor / 2 : divisor / 2;
    if (*value > max * divisor + half || *value < min * divisor - divisor / 2) return std::nullopt;
    const std::int64_t whole = (*value + half) / divisor;
    if (whole < min || whole > max) return std::nullopt;
    return static_cast<Whole>(whole);
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "power1" of "power1_input" when that is a value of this kind of channel; otherwise "".
std::string channel_of(std::string_view file, std::string_view kind) {
    if (!file.starts_with(kind)) return {};
    const std::size_t end = file.find_first_not_of("0123456789", kind.size());
    if (end == kind.size() || end == std::string_view::npos) return {};
    const std::string_view attribute = file.substr(end);
    if (attribute != "_input" && attribute != "_average") return {};
    return std::string(file.substr(0, end));
}

std::vector<Channel> channels_of(const std::string& chip, const std::vector<std::string>& files,
                                 std::string_view kind) {
    std::set<std::string> found;
    std::vector<Channel> channels;
    for (const std::string& file : files) {
        const std::string channel = channel_of(file, kind);
        if (channel.empty() || !found.insert(channel).second) continue;
        const std::string base = chip + "/" + channel;
        channels.push_back({base, lower(read_word(base + "_label").value_or(""))});
    }
    return channels;
}

// What happens on the input is no fault of the supply's.
std::vector<std::string> alarms_of(const std::string& chip, const std::vector<std::string>& files) {
    std::vector<std::string> alarms;
    for (const std::string& file : files) {
        if (!file.ends_with("_fault") && !file.ends_with("crit_alarm")) continue;
        const std::string channel = file.substr(0, file.find('_'));
        const std::string label = lower(read_word(chip + "/" + channel + "_label").value_or(""));
        const bool is_input = label == "vin" || label == "iin" || label == "pin";
        if (!is_input) alarms.push_back(chip + "/" + file);
    }
    return alarms;
}

}  // namespace

std::optional<std::int64_t> Channel::attribute(const char* name) const {
    return read_number(base + "_" + name);
}

Watts Channel::watts() const {
    const auto now_uw = attribute("input");
    return scaled<std::uint16_t>(now_uw ? now_uw : attribute("average"), 1'000'000, 0,
                                 PWRMGT_NO_POWER - 1);
}

std::optional<std::uint16_t> Channel::volts() const {
    return scaled<std::uint16_t>(attribute("input"), 1000, 0, 1000);
}

Celsius Channel::degrees() const {
    if (attribute("fault") == 1) return std::nullopt;
    return scaled<std::int16_t>(attribute("input"), 1000, -128, 255);
}

const Channel* Chip::labelled(const std::vector<Channel>& channels, const char* label) {
    const auto found = std::find_if(channels.begin(), channels.end(),
                                    [&](const Channel& c) { return c.label == label; });
    return found == channels.end() ? nullptr : &*found;
}

std::vector<Chip> find_chips(const std::string& root) {
    const std::string directory = root + "/sys/class/hwmon";
    std::vector<Chip> chips;
    for (const std::string& entry : names_in(directory)) {
        const std::string path = directory + "/" + entry;
        const std::vector<std::string> files = names_in(path);
        Chip chip;
        chip.name = read_word(path + "/name").value_or("");
        chip.device = link_name(path + "/device").value_or(entry);
        chip.powers = channels_of(path, files, "power");
        chip.voltages = channels_of(path, files, "in");
        chip.temperatures = channels_of(path, files, "temp");
        chip.alarms = alarms_of(path, files);
        chips.push_back(std::move(chip));
    }
    std::stable_sort(chips.begin(), chips.end(), [](const Chip& a, const Chip& b) {
        if (a.device.size() != b.device.size()) return a.device.size() < b.device.size();
        return a.device < b.device;
    });
    return chips;
}

}  // namespace pwrmgt::pwrmgtd
